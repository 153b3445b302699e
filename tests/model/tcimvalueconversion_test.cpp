// Conversion of values to numbers, datetimes and values of other types, and every conversion that is refused.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>

#include "nkrovel20/tcimvalue.h"
#include "tests/support/expectfailure.h"
#include "tests/support/namespaces.h"

namespace tests {
namespace {

using TType = TCIMValue::TCIMType;
using TValues = std::vector<TCIMValue>;

const TCIMDateTime kTime(2026, 1, 31, 12, 34, 56, 0, 60);
constexpr std::uint64_t kAllBits = 0xFFFFFFFFFFFFFFFF;

TCIMValue Integer(TType::ECIMType type, std::uint64_t bits) { return TCIMValue::FromInteger(type, bits); }
TCIMValue Real(double number) { return TCIMValue::FromReal(TType::kReal64, number); }
TCIMValue OneByte() { return TCIMValue(TType::kUint8, 1, {TCIMValue(1)}); }

TEST(CimValueConversion, NumbersKeepTheirLowBits) {
  EXPECT_EQ(static_cast<unsigned int>(Integer(TType::kUint64, 0x1234567890ABCDEF)), 0x90ABCDEFU);
  EXPECT_EQ(static_cast<unsigned short>(Integer(TType::kUint64, 0x1234567890ABCDEF)), 0xCDEFU);
  EXPECT_EQ(static_cast<unsigned short>(TCIMValue(65536 + 3)), 3U);
  EXPECT_EQ(static_cast<unsigned int>(TCIMValue(-1)), 0xFFFFFFFFU);
  EXPECT_EQ(static_cast<unsigned short>(TCIMValue(-2)), 0xFFFEU);
  EXPECT_EQ(static_cast<unsigned int>(TCIMValue(static_cast<unsigned char>(255))), 255U);
}

TEST(CimValueConversion, ToIntegerExtendsTheSign) {
  EXPECT_EQ(TCIMValue(-1).ToInteger(), kAllBits);
  EXPECT_EQ(Integer(TType::kSint8, 0x80).ToInteger(), 0xFFFFFFFFFFFFFF80U);
  EXPECT_EQ(Integer(TType::kUint8, 0x80).ToInteger(), 0x80U);
  EXPECT_EQ(Integer(TType::kSint64, 0x8000000000000000).ToInteger(), 0x8000000000000000U);
}

struct TNarrowing {
  TType::ECIMType type;
  std::uint64_t bits;
  std::uint64_t expected;
};

TEST(CimValueConversion, EachIntegerTypeKeepsTheBitsItHolds) {
  constexpr std::uint64_t bits = 0xFEDCBA9876543281;
  const TNarrowing cases[] = {
      {TType::kBoolean, bits, 1},
      {TType::kBoolean, 0, 0},
      {TType::kUint8, bits, 0x81},
      {TType::kSint8, bits, 0xFFFFFFFFFFFFFF81},
      {TType::kUint16, bits, 0x3281},
      {TType::kSint16, bits, 0x3281},
      {TType::kSint16, 0x8000, 0xFFFFFFFFFFFF8000},
      {TType::kChar16, bits, 0x3281},
      {TType::kUint32, bits, 0x76543281},
      {TType::kSint32, bits, 0x76543281},
      {TType::kSint32, 0x80000000, 0xFFFFFFFF80000000},
      {TType::kUint64, bits, bits},
      {TType::kSint64, bits, bits},
  };
  for (const TNarrowing& entry : cases) {
    const TCIMValue value = Integer(entry.type, entry.bits);
    EXPECT_EQ(value.ToInteger(), entry.expected) << TType(entry.type).ToString();
    EXPECT_EQ(value.GetType(), entry.type);
    EXPECT_FALSE(value.IsNull());
  }
}

TEST(CimValueConversion, ScalarsOfAnotherKindAreRefused) {
  ExpectMismatch("an integer is not a string", [] { Integer(TType::kString, 1); });
  ExpectMismatch("an integer is not a real32", [] { Integer(TType::kReal32, 1); });
  ExpectMismatch("an integer is not a datetime", [] { Integer(TType::kDateTime, 1); });
  ExpectMismatch("an integer is not a ref", [] { Integer(TType::kReference, 1); });
  ExpectMismatch("an integer is not a ", [] { Integer(TType::kNone, 1); });
  ExpectMismatch("a real number is not a uint8", [] { TCIMValue::FromReal(TType::kUint8, 1); });
  ExpectMismatch("a string is not a uint8", [] { TCIMValue::FromText(TType::kUint8, "1"); });
}

TEST(CimValueConversion, TextsAreReadAsDecimalOrHexadecimalNumbers) {
  EXPECT_EQ(TCIMValue("0").ToInteger(), 0U);
  EXPECT_EQ(TCIMValue("4096").ToInteger(), 4096U);
  EXPECT_EQ(TCIMValue("+12").ToInteger(), 12U);
  EXPECT_EQ(TCIMValue("-1").ToInteger(), kAllBits);
  EXPECT_EQ(TCIMValue("007").ToInteger(), 7U);
  EXPECT_EQ(TCIMValue("0x00ABCDEF").ToInteger(), 0xABCDEFU);
  EXPECT_EQ(TCIMValue("0XabCD").ToInteger(), 0xABCDU);
  EXPECT_EQ(TCIMValue("-0x10").ToInteger(), 0xFFFFFFFFFFFFFFF0U);
  EXPECT_EQ(TCIMValue("18446744073709551615").ToInteger(), kAllBits);
  EXPECT_EQ(TCIMValue("0xFFFFFFFFFFFFFFFF").ToInteger(), kAllBits);
  EXPECT_EQ(static_cast<unsigned int>(TCIMValue("12884901889")), 1U);
  EXPECT_EQ(TCIMValue::FromText(TType::kReference, "17").ToInteger(), 17U);
}

TEST(CimValueConversion, TextsThatAreNotNumbersAreRefused) {
  for (const char* text : {"", " ", "-", "+", "+-5", "--5", "0x", "0xg", "x10", "12 ", " 12", "1.5", "1e3", "12a",
                           "18446744073709551616", "0x10000000000000000", "true", "abc"}) {
    const std::string detail = "\"" + std::string(text) + "\" is not a number";
    ExpectMismatch(detail, [text] { TCIMValue(text).ToInteger(); });
    ExpectMismatch(detail, [text] { static_cast<void>(static_cast<unsigned int>(TCIMValue(text))); });
    ExpectMismatch(detail, [text] { static_cast<void>(static_cast<unsigned short>(TCIMValue(text))); });
  }
}

TEST(CimValueConversion, ANullIsZeroAndTheEmptyText) {
  TCIMValue typed;
  typed.SetNullValue(TType::kUint32, 0);
  TCIMValue array;
  array.SetNullValue(TType::kUint32, 4);
  TCIMValue time;
  time.SetNullValue(TType::kDateTime, 0);
  for (const TCIMValue& null : {TCIMValue(), typed, array, time, TCIMValue(static_cast<const char*>(nullptr))}) {
    EXPECT_EQ(static_cast<unsigned int>(null), 0U);
    EXPECT_EQ(static_cast<unsigned short>(null), 0U);
    EXPECT_EQ(null.ToInteger(), 0U);
    EXPECT_EQ(null.ToReal(), 0.0);
    EXPECT_EQ(static_cast<std::string>(null), "");
  }
}

TEST(CimValueConversion, RealsAreTruncatedTowardsZero) {
  EXPECT_EQ(Real(3.99).ToInteger(), 3U);
  EXPECT_EQ(Real(-3.99).ToInteger(), 0xFFFFFFFFFFFFFFFDU);
  EXPECT_EQ(Real(-0.5).ToInteger(), 0U);
  EXPECT_EQ(Real(18446744073709549568.0).ToInteger(), 0xFFFFFFFFFFFFF800U);
  EXPECT_EQ(Real(-9223372036854775808.0).ToInteger(), 0x8000000000000000U);
}

TEST(CimValueConversion, RealsOutsideTheIntegersAreRefused) {
  ExpectMismatch("1.8446744073709552e+19 is outside the range of an integer",
                 [] { Real(18446744073709551616.0).ToInteger(); });
  ExpectMismatch("-9.223372036854778e+18 is outside the range of an integer",
                 [] { Real(-9223372036854777856.0).ToInteger(); });
  ExpectMismatch("nan is outside the range of an integer",
                 [] { Real(std::numeric_limits<double>::quiet_NaN()).ToInteger(); });
  ExpectMismatch("-inf is outside the range of an integer",
                 [] { Real(-std::numeric_limits<double>::infinity()).ToInteger(); });
}

TEST(CimValueConversion, ToRealReadsNumbersAndDecimalTexts) {
  EXPECT_EQ(TCIMValue(-7).ToReal(), -7.0);
  EXPECT_EQ(Integer(TType::kUint64, kAllBits).ToReal(), 18446744073709551616.0);
  EXPECT_EQ(Integer(TType::kSint64, kAllBits).ToReal(), -1.0);
  EXPECT_EQ(Integer(TType::kBoolean, 1).ToReal(), 1.0);
  EXPECT_EQ(TCIMValue("-1.5e3").ToReal(), -1500.0);
  EXPECT_EQ(Real(0.1).ToReal(), 0.1);
  EXPECT_EQ(TCIMValue::FromReal(TType::kReal32, 0.1).ToReal(), static_cast<double>(0.1F));
}

TEST(CimValueConversion, ValuesThatAreNotRealNumbersAreRefused) {
  for (const char* text : {"", "one", "1.5x", "1,5", "0x10", "1e999"}) {
    ExpectMismatch("\"" + std::string(text) + "\" is not a number", [text] { TCIMValue(text).ToReal(); });
  }
  ExpectMismatch("an array is not a number", [] { OneByte().ToReal(); });
  ExpectMismatch("a datetime is not a real number", [] { TCIMValue(kTime).ToReal(); });
}

TEST(CimValueConversion, ArraysAndDatetimesAreNotNumbers) {
  ExpectMismatch("an array is not a number", [] { OneByte().ToInteger(); });
  ExpectMismatch("an array is not a number", [] { static_cast<void>(static_cast<unsigned int>(OneByte())); });
  ExpectMismatch("a datetime is not a number",
                 [] { static_cast<void>(static_cast<unsigned short>(TCIMValue(kTime))); });
}

TEST(CimValueConversion, AScalarIsNotAnArray) {
  for (TCIMValue scalar : {TCIMValue(), TCIMValue(1), TCIMValue("text"), TCIMValue(kTime)}) {
    ExpectMismatch("a scalar is not an array", [&scalar] { static_cast<void>(static_cast<TValues&>(scalar)); });
    const TCIMValue& constant = scalar;
    ExpectMismatch("a scalar is not an array",
                   [&constant] { static_cast<void>(static_cast<const TValues&>(constant)); });
  }
}

TEST(CimValueConversion, OnlyADatetimeIsADatetime) {
  EXPECT_EQ(TCIMValue(kTime).ToDateTime(), kTime);
  TCIMValue null;
  null.SetNullValue(TType::kDateTime, 0);
  for (const TCIMValue& value : {TCIMValue(), null, TCIMValue("20260131123456.000000+060"), TCIMValue(1),
                                 TCIMValue(TType::kDateTime, 1, {TCIMValue(kTime)})}) {
    ExpectMismatch("the value is not a datetime", [&value] { static_cast<void>(value.ToDateTime()); });
  }
}

TEST(CimValueConversion, ScalarsBecomeValuesOfAnotherType) {
  EXPECT_EQ(TCIMValue(300).ConvertedTo(TType::kUint8), TCIMValue(static_cast<unsigned char>(44)));
  EXPECT_EQ(TCIMValue("0x10").ConvertedTo(TType::kSint32), TCIMValue(16));
  EXPECT_EQ(TCIMValue(-5).ConvertedTo(TType::kString), TCIMValue("-5"));
  EXPECT_EQ(TCIMValue(2).ConvertedTo(TType::kBoolean), Integer(TType::kBoolean, 1));
  EXPECT_EQ(TCIMValue(2).ConvertedTo(TType::kReal64), Real(2.0));
  EXPECT_EQ(Real(2.75).ConvertedTo(TType::kUint8), TCIMValue(static_cast<unsigned char>(2)));
  EXPECT_EQ(TCIMValue(kTime).ConvertedTo(TType::kString), TCIMValue("20260131123456.000000+060"));
  EXPECT_EQ(TCIMValue("20260131123456.000000+060").ConvertedTo(TType::kDateTime), TCIMValue(kTime));
  EXPECT_EQ(TCIMValue("a:b.c=1").ConvertedTo(TType::kReference).ToString(10), "a:b.c=1");
  EXPECT_EQ(TCIMValue("same").ConvertedTo(TType::kString), TCIMValue("same"));
}

TEST(CimValueConversion, ArraysAreConvertedElementByElement) {
  const TCIMValue texts(TType::kString, 5, {TCIMValue("1"), TCIMValue(), TCIMValue("0xFF")});
  const TCIMValue bytes = texts.ConvertedTo(TType::kUint8);
  EXPECT_EQ(bytes, TCIMValue(TType::kUint8, 3, {TCIMValue(1), TCIMValue(), TCIMValue(255)}));
  EXPECT_EQ(bytes.GetDeclaredSize(), 5U);
  ExpectMismatch("\"x\" is not a number",
                 [] { TCIMValue(TType::kString, 1, {TCIMValue("x")}).ConvertedTo(TType::kUint8); });
}

TEST(CimValueConversion, NullsStayNullsOfTheNewType) {
  TCIMValue array;
  array.SetNullValue(TType::kString, 3);
  const TCIMValue converted = array.ConvertedTo(TType::kUint8);
  EXPECT_TRUE(converted.IsNull());
  EXPECT_TRUE(converted.IsArray());
  EXPECT_EQ(converted.GetType(), TType::kUint8);
  EXPECT_EQ(converted.GetDeclaredSize(), 3U);
  const TCIMValue scalar = TCIMValue().ConvertedTo(TType::kDateTime);
  EXPECT_TRUE(scalar.IsNull());
  EXPECT_FALSE(scalar.IsArray());
  EXPECT_EQ(scalar.GetType(), TType::kDateTime);
}

TEST(CimValueConversion, AnEmptyArrayStaysAnArray) {
  const TCIMValue converted = TCIMValue(TType::kString, 0, {}).ConvertedTo(TType::kUint8);
  EXPECT_TRUE(converted.IsArray());
  EXPECT_FALSE(converted.IsNull());
}

TEST(CimValueConversion, MeaninglessConversionsAreRefused) {
  ExpectMismatch("a datetime is not a number", [] { TCIMValue(kTime).ConvertedTo(TType::kUint8); });
  ExpectMismatch("a datetime is not a real number", [] { TCIMValue(kTime).ConvertedTo(TType::kReal32); });
  ExpectMismatch("a sint32 is not a datetime", [] { TCIMValue(1).ConvertedTo(TType::kDateTime); });
  ExpectMismatch("a real64 is not a datetime", [] { Real(1).ConvertedTo(TType::kDateTime); });
  ExpectMismatch("\"today\" is not a CIM datetime", [] { TCIMValue("today").ConvertedTo(TType::kDateTime); });
  ExpectMismatch("a sint32 is not a typed value", [] { TCIMValue(1).ConvertedTo(TType::kNone); });
}

}  // namespace
}  // namespace tests
