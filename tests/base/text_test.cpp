#include <gtest/gtest.h>

#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "host/base/digits.h"
#include "host/base/text.h"

namespace velhost {
namespace {

using TWords = std::vector<std::string>;

TEST(DigitGroups, AreExactlyAsLongAsAsked) {
  const auto groupsIn = [](std::string_view text) {
    const auto groups = DigitGroups(text, 4);
    return TWords(groups.begin(), groups.end());
  };
  EXPECT_EQ(groupsIn("Server 62035 6203AC-4411"), (TWords{"6203", "4411"}));
  EXPECT_EQ(groupsIn("6203"), TWords{"6203"});
  EXPECT_EQ(groupsIn("62 03 620 62030"), TWords{});
  EXPECT_EQ(groupsIn(""), TWords{});
}

TEST(Quoted, ShowsControlCharactersAsQuestionMarks) {
  EXPECT_EQ(Quoted(""), "\"\"");
  EXPECT_EQ(Quoted("a b"), "\"a b\"");
  EXPECT_EQ(Quoted("a\tb\x7f\u00e4"), "\"a?b?\u00e4\"");
}

TEST(Quoted, CutsALongTextBetweenTwoCharacters) {
  const std::string sixty(60, 'x');
  EXPECT_EQ(Quoted(sixty), "\"" + sixty + "\"");
  EXPECT_EQ(Quoted(sixty + "y"), "\"" + sixty + "...\"");
  const std::string fiftyNine(59, 'x');
  EXPECT_EQ(Quoted(fiftyNine + "\u00e4"), "\"" + fiftyNine + "...\"");
}

TEST(SingleQuoted, ShowsTheFirstLineUpToTheLimit) {
  EXPECT_EQ(SingleQuoted(""), "''");
  EXPECT_EQ(SingleQuoted("name"), "'name'");
  EXPECT_EQ(SingleQuoted("one\ntwo"), "'one...'");
  EXPECT_EQ(SingleQuoted("one\r\ntwo", 2), "'on...'");
  EXPECT_EQ(SingleQuoted("abc", 3), "'abc'");
  EXPECT_EQ(SingleQuoted("ab\u00e4", 3), "'ab...'");
}

TEST(Counted, TakesThePluralForAllButOne) {
  EXPECT_EQ(Counted(0, "byte"), "0 bytes");
  EXPECT_EQ(Counted(1, "byte"), "1 byte");
  EXPECT_EQ(Counted(2, "more error"), "2 more errors");
}

TEST(Listed, PutsTheConjunctionBeforeTheLastWord) {
  EXPECT_EQ(Listed(TWords{}, " and "), "");
  EXPECT_EQ(Listed(TWords{"a"}, " and "), "a");
  EXPECT_EQ(Listed(TWords{"a", "b"}, " or "), "a or b");
  EXPECT_EQ(Listed(TWords{"a", "b", "c"}, " and "), "a, b and c");
  EXPECT_EQ(Listed(TWords{"a", "b", "c"}, ", "), "a, b, c");
}

const std::vector<char32_t> kBeyondAscii = {0x80,   0x85,   0x9B,   0x9F,   0x061C, 0x200E, 0x200F, 0x2028, 0x2029,
                                            0x202A, 0x202B, 0x202C, 0x202D, 0x202E, 0x2066, 0x2067, 0x2068, 0x2069};

TEST(IsUnsafe, CoversControlsSeparatorsAndDirectionMarks) {
  for (char32_t character = 0; character < 0x20; ++character)
    EXPECT_TRUE(IsUnsafe(character)) << std::uint32_t{character};
  EXPECT_TRUE(IsUnsafe(0x7F));
  for (const char32_t character : kBeyondAscii) EXPECT_TRUE(IsUnsafe(character)) << std::uint32_t{character};
  for (const int character : {0x20, 0x7E, 0xA0, 0x061B, 0x061D, 0x200D, 0x2010, 0x2027, 0x202F, 0x2065, 0x206A}) {
    EXPECT_FALSE(IsUnsafe(static_cast<char32_t>(character))) << character;
  }
}

TEST(SafeJson, EscapesAJsonDocumentWithoutChangingItsMeaning) {
  const std::string document = "{\"\u202e\":\"a\u009b\x7f\u00e9\u20ac\"}\n";
  EXPECT_EQ(SafeJson(document), "{\"\\u202e\":\"a\\u009b\\u007f\u00e9\u20ac\"}\n");
  EXPECT_EQ(nlohmann::json::parse(SafeJson(document)), nlohmann::json::parse(document));
  EXPECT_EQ(SafeJson("{\n\t\"a\": 1\n}"), "{\n\t\"a\": 1\n}");
}

TEST(SafeText, EscapesUnsafeCharactersAndReplacesInvalidBytes) {
  EXPECT_EQ(SafeText("plain \\ text"), "plain \\ text");
  EXPECT_EQ(SafeText("a\n\r\t\x1b\x7f"), "a\\n\\r\\t\\x1b\\x7f");
  EXPECT_EQ(SafeText("\u00e4\u202e\U0001f680"), "\u00e4\\u202e\U0001f680");
  EXPECT_EQ(SafeText("a\xff\xe2\x82"), "a\ufffd\ufffd");
}

TEST(SafeLines, KeepsNewlinesAndTabs) {
  EXPECT_EQ(SafeLines("a\x1b[2J\n\tb\x7f\xc2\x9b"
                      "c\r\n"),
            "a\\x1b[2J\n\tb\\x7f\\x9bc\\r\n");
  EXPECT_EQ(SafeLines(""), "");
}

}  // namespace
}  // namespace velhost
