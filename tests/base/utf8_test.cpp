#include "host/base/utf8.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

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

}  // namespace
}  // namespace velhost
