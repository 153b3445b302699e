#include "host/base/text.h"

#include "host/base/decimal.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

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

}  // namespace
}  // namespace velhost
