#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "host/base/digits.h"

namespace velhost {
namespace {

using TBytes = std::vector<std::uint8_t>;

TEST(Hex, WritesTheDigitsOfAByte) {
  EXPECT_EQ(HexPair(0x00), "00");
  EXPECT_EQ(HexPair(0x9A), "9a");
  EXPECT_EQ(HexPair(0xFF), "ff");
  EXPECT_EQ(UpperHexPair(0x0B), "0B");
  EXPECT_EQ(UpperHexPair(0xFE), "FE");
}

TEST(Hex, AcceptsDigitsOfEitherCaseAndNothingElse) {
  const std::string digits = "0123456789abcdefABCDEF";
  const std::vector<int> values = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 10, 11, 12, 13, 14, 15};
  for (std::size_t i = 0; i < digits.size(); ++i) EXPECT_EQ(HexDigitValue(digits[i]), values[i]);
  for (const char c : {'/', ':', '@', 'G', '`', 'g', '\0', ' ', '\xff'}) EXPECT_EQ(HexDigitValue(c), -1);
}

TEST(Hex, ReadsPairsSeparatedByWhiteSpace) {
  EXPECT_EQ(ParseHexPairs("").bytes, TBytes{});
  EXPECT_EQ(ParseHexPairs(" 0a\tFF\r\n00 7b7C").bytes, (TBytes{0x0A, 0xFF, 0x00, 0x7B, 0x7C}));
  EXPECT_EQ(ParseHexPairs("00").errorAt, std::string_view::npos);
}

TEST(Hex, SaysWhereATextStopsBeingPairs) {
  EXPECT_EQ(ParseHexPairs("0a g0").errorAt, 3U);
  EXPECT_EQ(ParseHexPairs("0a 0g").errorAt, 4U);
  EXPECT_EQ(ParseHexPairs("0a 0").errorAt, 4U);
  EXPECT_EQ(ParseHexPairs("0 a").errorAt, 1U);
}

TEST(Hex, MarksNumbers) {
  EXPECT_EQ(HexByte(0x0C), "0x0C");
  EXPECT_EQ(HexNumber(0xABCDEF, 3), "0xABCDEF");
  EXPECT_EQ(HexNumber(0x12345678, 2), "0x5678");
  EXPECT_EQ(HexNumber(0x1, 8), "0x0000000000000001");
  EXPECT_EQ(HexNumber(TBytes{0x0A, 0x00, 0xF1}), "0x0A00F1");
}

TEST(Hex, SeparatesPairsByBlanks) {
  EXPECT_EQ(FormatHexPairs(TBytes{}), "");
  EXPECT_EQ(FormatHexPairs(TBytes{0x01, 0x20, 0x3A}), "01 20 3a");
}

TEST(Decimal, WritesAByteWithoutLeadingZeros) {
  EXPECT_EQ(ByteText(0), "0");
  EXPECT_EQ(ByteText(9), "9");
  EXPECT_EQ(ByteText(10), "10");
  EXPECT_EQ(ByteText(99), "99");
  EXPECT_EQ(ByteText(100), "100");
  EXPECT_EQ(ByteText(205), "205");
  EXPECT_EQ(ByteText(255), "255");
}

TEST(Decimal, HasTenDigits) {
  for (const char c : {'0', '5', '9'}) EXPECT_TRUE(IsDigit(c));
  for (const char c : {'/', ':', 'a', '\xb2'}) EXPECT_FALSE(IsDigit(c));
}

}  // namespace
}  // namespace velhost
