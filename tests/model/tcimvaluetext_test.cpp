// Conversion of values to text.
#include <gtest/gtest.h>

#include <limits>

#include "nkrovel20/tcimvalue.h"
#include "tests/support/namespaces.h"

namespace tests {
namespace {

using TType = TCIMValue::TCIMType;

std::string RealText(double number) { return TCIMValue::FromReal(TType::kReal64, number).ToString(10); }
std::string SingleText(double number) { return TCIMValue::FromReal(TType::kReal32, number).ToString(10); }

TEST(CimValueText, ThirtyFiveInEveryRadix) {
  const char* const texts[] = {"100011", "1022", "203", "120", "55", "50", "43", "38", "35", "32", "2b", "29",
                               "27",     "25",   "23",  "21",  "1h", "1g", "1f", "1e", "1d", "1c", "1b", "1a",
                               "19",     "18",   "17",  "16",  "15", "14", "13", "12", "11", "10", "z"};
  for (unsigned char radix = 2; radix <= 36; ++radix) {
    EXPECT_EQ(TCIMValue(35).ToString(radix), texts[radix - 2]) << "radix " << int{radix};
  }
}

TEST(CimValueText, AnInvalidRadixCountsAsTen) {
  constexpr unsigned char others[] = {0, 1, 37, 255};
  for (const unsigned char radix : others) EXPECT_EQ(TCIMValue(255).ToString(radix), "255");
}

TEST(CimValueText, NegativeNumbersCarryTheirSignInEveryRadix) {
  EXPECT_EQ(TCIMValue(-255).ToString(10), "-255");
  EXPECT_EQ(TCIMValue(-255).ToString(16), "-ff");
  EXPECT_EQ(TCIMValue(-5).ToString(2), "-101");
}

TEST(CimValueText, TheLimitsOfSixtyFourBits) {
  const auto text = [](TType::ECIMType type, std::uint64_t bits, unsigned char radix) {
    return TCIMValue::FromInteger(type, bits).ToString(radix);
  };
  EXPECT_EQ(text(TType::kUint64, 0xFFFFFFFFFFFFFFFF, 10), "18446744073709551615");
  EXPECT_EQ(text(TType::kUint64, 0xFFFFFFFFFFFFFFFF, 16), "ffffffffffffffff");
  EXPECT_EQ(text(TType::kUint64, 0xFFFFFFFFFFFFFFFF, 2), std::string(64, '1'));
  EXPECT_EQ(text(TType::kSint64, 0x8000000000000000, 10), "-9223372036854775808");
  EXPECT_EQ(text(TType::kSint64, 0x8000000000000000, 2), "-1" + std::string(63, '0'));
  EXPECT_EQ(text(TType::kSint64, 0x7FFFFFFFFFFFFFFF, 10), "9223372036854775807");
}

TEST(CimValueText, BooleansAreWordsInEveryRadix) {
  EXPECT_EQ(TCIMValue::FromInteger(TType::kBoolean, 1).ToString(16), "true");
  EXPECT_EQ(TCIMValue::FromInteger(TType::kBoolean, 0).ToString(10), "false");
}

TEST(CimValueText, ACharacterIsItsNumber) {
  EXPECT_EQ(TCIMValue::FromInteger(TType::kChar16, 0x41).ToString(10), "65");
}

TEST(CimValueText, RealsReadBackAsTheSameNumber) {
  EXPECT_EQ(RealText(0.1), "0.1");
  EXPECT_EQ(RealText(2), "2.0");
  EXPECT_EQ(RealText(-0.0), "-0.0");
  EXPECT_EQ(RealText(1e22), "1e+22");
  EXPECT_EQ(RealText(0.30000000000000004), "0.30000000000000004");
  EXPECT_EQ(RealText(5e-324), "5e-324");
  EXPECT_EQ(RealText(std::numeric_limits<double>::max()), "1.7976931348623157e+308");
  EXPECT_EQ(RealText(std::numeric_limits<double>::infinity()), "inf");
  EXPECT_EQ(SingleText(0.1), "0.1");
  EXPECT_EQ(SingleText(16777217), "16777216.0");
}

TEST(CimValueText, TextsAndDatetimesAreUnchanged) {
  EXPECT_EQ(TCIMValue("a \"b\"\n").ToString(10), "a \"b\"\n");
  EXPECT_EQ(TCIMValue(TCIMDateTime(2026, 1, 31, 12, 34, 56, 7, -60)).ToString(10), "20260131123456.000007-060");
  EXPECT_EQ(TCIMValue::FromText(TType::kReference, "A.B=\"c\"").ToString(10), "A.B=\"c\"");
}

TEST(CimValueText, ArraysAreInBraces) {
  EXPECT_EQ(TCIMValue(TType::kUint8, 3, {TCIMValue(1), TCIMValue(), TCIMValue(255)}).ToString(10), "{1, , 255}");
  EXPECT_EQ(TCIMValue(TType::kUint8, 2, {TCIMValue(16), TCIMValue(255)}).ToString(16), "{10, ff}");
  EXPECT_EQ(TCIMValue(TType::kString, 0, {}).ToString(10), "{}");
  EXPECT_EQ(TCIMValue(TType::kString, 1, {TCIMValue("a")}).ToString(10), "{a}");
}

TEST(CimValueText, LongArraysAreComplete) {
  const TCIMValue longest = TCIMValue::FromInteger(TType::kUint64, 0xFFFFFFFFFFFFFFFF);
  const std::string ones(64, '1');
  std::string expected = "{" + ones;
  for (int i = 1; i < 9; ++i) expected += ", " + ones;
  EXPECT_EQ(TCIMValue(TType::kUint64, 9, std::vector<TCIMValue>(9, longest)).ToString(2), expected + "}");
  expected = "{7";
  for (int i = 1; i < 300; ++i) expected += ", 7";
  EXPECT_EQ(TCIMValue(TType::kUint8, 300, std::vector<TCIMValue>(300, TCIMValue(7))).ToString(10), expected + "}");
}

TEST(CimValueText, ANullIsTheEmptyText) {
  TCIMValue array;
  array.SetNullValue(TType::kUint8, 14);
  EXPECT_EQ(array.ToString(10), "");
  EXPECT_EQ(TCIMValue().ToString(16), "");
}

TEST(CimValueText, AppendToContinuesALine) {
  std::string line = "value: ";
  TCIMValue(TType::kUint8, 2, {TCIMValue(1), TCIMValue(2)}).AppendTo(line, 10);
  EXPECT_EQ(line, "value: {1, 2}");
}

TEST(CimValueText, TheConversionToTextIsInRadixTen) {
  EXPECT_EQ(static_cast<std::string>(TCIMValue(255)), "255");
  EXPECT_EQ(static_cast<std::string>(TCIMValue("255")), "255");
}

}  // namespace
}  // namespace tests
