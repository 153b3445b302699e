#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "host/base/utf8.h"

namespace velhost {
namespace {

TEST(Utf8, ReadsTheFirstAndLastCharacterOfEachLength) {
  const std::vector<std::pair<std::string, char32_t>> characters = {
      {std::string(1, '\0'), 0},     {"\x7f", 0x7F},           {"\xc2\x80", 0x80},
      {"\xdf\xbf", 0x7FF},           {"\xe0\xa0\x80", 0x800},  {"\xed\x9f\xbf", 0xD7FF},
      {"\xee\x80\x80", 0xE000},      {"\xef\xbf\xbf", 0xFFFF}, {"\xf0\x90\x80\x80", 65536},
      {"\xf4\x8f\xbf\xbf", 0x10FFFF}};
  for (const auto& [bytes, number] : characters) {
    const TCodePoint read = NextCodePoint(bytes, 0);
    EXPECT_TRUE(read.valid && read.size == bytes.size() && read.value == number) << bytes;
    std::string written;
    AppendUtf8(written, number);
    EXPECT_EQ(written, bytes);
  }
}

TEST(Utf8, RefusesEveryTruncationAsOneCharacter) {
  for (const std::string bytes : {"\xc2\x80", "\xe0\xa0\x80", "\xed\x9f\xbf", "\xf0\x90\x80\x80", "\xf4\x8f\xbf\xbf"}) {
    for (std::size_t size = 1; size < bytes.size(); ++size) {
      const TCodePoint atEnd = NextCodePoint(bytes.substr(0, size), 0);
      EXPECT_TRUE(!atEnd.valid && atEnd.size == size);
      const TCodePoint beforeLetter = NextCodePoint(bytes.substr(0, size) + "A", 0);
      EXPECT_TRUE(!beforeLetter.valid && beforeLetter.size == size);
    }
  }
}

TEST(Utf8, RefusesInvalidBytes) {
  for (const char* bytes : {"\x80", "\xbf", "\xc0\x80", "\xc1\xbf", "\xe0\x9f\xbf", "\xed\xa0\x80", "\xf0\x8f\xbf\xbf",
                            "\xf4\x90\x80\x80", "\xf5\x80\x80\x80", "\xff"}) {
    const TCodePoint read = NextCodePoint(bytes, 0);
    EXPECT_FALSE(read.valid);
    EXPECT_EQ(read.size, 1U);
    EXPECT_EQ(read.value, kReplacementCharacter);
  }
}

TEST(Utf8, WritesTheReplacementForInvalidNumbers) {
  for (const char32_t number : {char32_t{0xD800}, char32_t{0xDFFF}, char32_t{0x110000}}) {
    std::string written;
    AppendUtf8(written, number);
    EXPECT_EQ(written, "\xef\xbf\xbd");
  }
}

TEST(Utf8, SplitsNoCharacter) {
  const std::string text = "a\xc3\xa4\xe6\xbc\xa2";  // one, two and three bytes
  EXPECT_EQ(WholeCharacters(text, 0), "");
  EXPECT_EQ(WholeCharacters(text, 1), "a");
  EXPECT_EQ(WholeCharacters(text, 2), "a");
  EXPECT_EQ(WholeCharacters(text, 3), "a\xc3\xa4");
  EXPECT_EQ(WholeCharacters(text, 4), "a\xc3\xa4");
  EXPECT_EQ(WholeCharacters(text, 5), "a\xc3\xa4");
  EXPECT_EQ(WholeCharacters(text, 6), text);
  EXPECT_EQ(WholeCharacters(text, 7), text);
  EXPECT_EQ(WholeCharacters("\x80\x80\x80", 2), "");
}

TEST(Utf8, TellsContinuationsFromOtherBytes) {
  EXPECT_TRUE(IsUtf8Continuation('\x80') && IsUtf8Continuation('\xbf'));
  for (const char c : {'\x00', '\x7f', '\xc0', '\xff'}) EXPECT_FALSE(IsUtf8Continuation(c));
}

TEST(Utf8, TakesRunsOfPrintableAscii) {
  EXPECT_EQ(PrintableAsciiSize(" ~x\x7f"), 3U);
  EXPECT_EQ(PrintableAsciiSize("ab\x1f"), 2U);
  EXPECT_EQ(PrintableAsciiSize("a\xc3\xa4"), 1U);
  EXPECT_EQ(PrintableAsciiSize(""), 0U);
}

TEST(ColumnsOf, OneForLettersAndForTheMarksOfControlCharacters) {
  for (const char32_t character : {U'\0', U'\x1b', U'a', U'\x7f', U'\u009b', U'\u00e4', U'\ufffd', U'\ue000'}) {
    EXPECT_EQ(ColumnsOf(character), 1) << static_cast<unsigned int>(character);
  }
}

TEST(ColumnsOf, ZeroForWhatCombinesWithThePreviousCharacter) {
  EXPECT_EQ(ColumnsOf(U'\u0301'), 0) << "combining acute accent";
  EXPECT_EQ(ColumnsOf(U'\u200b'), 0) << "zero width space";
  EXPECT_EQ(ColumnsOf(U'\u200d'), 0) << "zero width joiner";
  EXPECT_EQ(ColumnsOf(U'\ufe0f'), 0) << "variation selector";
}

TEST(ColumnsOf, TwoForWideCharacters) {
  EXPECT_EQ(ColumnsOf(U'\u6f22'), 2) << "a CJK character";
  EXPECT_EQ(ColumnsOf(U'\uac00'), 2) << "a Hangul syllable";
  EXPECT_EQ(ColumnsOf(U'\uff21'), 2) << "a full-width letter";
  EXPECT_EQ(ColumnsOf(U'\U0001f680'), 2) << "a rocket";
}

TEST(ColumnsOf, AddsUpTheCharactersOfAText) {
  EXPECT_EQ(ColumnsOf(""), 0U);
  EXPECT_EQ(ColumnsOf("plain text"), 10U);
  EXPECT_EQ(ColumnsOf("e\u0301\u6f22x"), 4U);
  EXPECT_EQ(ColumnsOf("a\u200bb\U0001f680"), 4U);
}

TEST(StartThatFits, EndsBeforeTheCharacterThatIsTooWide) {
  EXPECT_EQ(StartThatFits("abc", 3), "abc");
  EXPECT_EQ(StartThatFits("abc", 2), "ab");
  EXPECT_EQ(StartThatFits("a\u6f22b", 2), "a");
  EXPECT_EQ(StartThatFits("a\u6f22b", 3), "a\u6f22");
  EXPECT_EQ(StartThatFits("ae\u0301b", 2), "ae\u0301");
}

TEST(StartThatFits, HasAtLeastOneCharacter) {
  EXPECT_EQ(StartThatFits("\u6f22b", 1), "\u6f22");
  EXPECT_EQ(StartThatFits("", 1), "");
}

}  // namespace
}  // namespace velhost
