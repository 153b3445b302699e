// Literals: the value of each form, and the limits of every type's range.
#include <gtest/gtest.h>

#include "tests/schema/schemafixture.h"
#include "tests/support/namespaces.h"

namespace tests {
namespace {

struct TRangeCase {
  const char* type;
  const char* below;  // the nearest value below that does not fit
  const char* low;
  const char* high;
  const char* above;
  const char* range;
};
void PrintTo(const TRangeCase& range, std::ostream* out) { *out << range.type; }

class IntegerRange : public testing::TestWithParam<TRangeCase> {};

TEST_P(IntegerRange, EdgesFitAndTheirNeighboursDoNot) {
  const TRangeCase& c = GetParam();
  const auto outside = [&](const std::string& literal) {
    return "found '" + literal + "', expected a " + c.type + " from " + c.range;
  };
  EXPECT_EQ(DefaultOf(c.type, c.below), outside(c.below));
  EXPECT_EQ(DefaultOf(c.type, c.low), c.low);
  EXPECT_EQ(DefaultOf(c.type, c.high), c.high);
  EXPECT_EQ(DefaultOf(c.type, c.above), outside(c.above));
}

INSTANTIATE_TEST_SUITE_P(Types, IntegerRange,
                         testing::Values(TRangeCase{"uint8", "-1", "0", "255", "256", "0 to 255"},
                                         TRangeCase{"sint8", "-129", "-128", "127", "128", "-128 to 127"},
                                         TRangeCase{"uint16", "-1", "0", "65535", "65536", "0 to 65535"},
                                         TRangeCase{"sint16", "-32769", "-32768", "32767", "32768", "-32768 to 32767"},
                                         TRangeCase{"uint32", "-1", "0", "4294967295", "4294967296", "0 to 4294967295"},
                                         TRangeCase{"sint32", "-2147483649", "-2147483648", "2147483647", "2147483648",
                                                    "-2147483648 to 2147483647"},
                                         TRangeCase{"uint64", "-1", "0", "18446744073709551615", "18446744073709551616",
                                                    "0 to 18446744073709551615"},
                                         TRangeCase{"sint64", "-9223372036854775809", "-9223372036854775808",
                                                    "9223372036854775807", "9223372036854775808",
                                                    "-9223372036854775808 to 9223372036854775807"}));

TEST(IntegerLiteral, EveryNotation) {
  EXPECT_EQ(DefaultOf("uint8", "101b"), "5");
  EXPECT_EQ(DefaultOf("uint8", "11111111B"), "255");
  EXPECT_EQ(DefaultOf("uint8", "017"), "15");
  EXPECT_EQ(DefaultOf("uint8", "00"), "0");
  EXPECT_EQ(DefaultOf("uint8", "0x1F"), "31");
  EXPECT_EQ(DefaultOf("uint8", "0XfF"), "255");
  EXPECT_EQ(DefaultOf("uint8", "0x1b"), "27") << "a hexadecimal digit, not the mark of a binary number";
  EXPECT_EQ(DefaultOf("uint8", "+7"), "7");
  EXPECT_EQ(DefaultOf("sint8", "-101b"), "-5");
  EXPECT_EQ(DefaultOf("sint8", "-017"), "-15");
  EXPECT_EQ(DefaultOf("sint8", "-0x80"), "-128");
  EXPECT_EQ(DefaultOf("uint8", "-0"), "0");
}

TEST(IntegerLiteral, EdgesInEveryNotation) {
  EXPECT_EQ(DefaultOf("uint8", "100000000b"), "found '100000000b', expected a uint8 from 0 to 255");
  EXPECT_EQ(DefaultOf("uint8", "0377"), "255");
  EXPECT_EQ(DefaultOf("uint8", "0400"), "found '0400', expected a uint8 from 0 to 255");
  EXPECT_EQ(DefaultOf("uint8", "0x100"), "found '0x100', expected a uint8 from 0 to 255");
  EXPECT_EQ(DefaultOf("uint64", "0xFFFFFFFFFFFFFFFF"), "18446744073709551615");
  EXPECT_EQ(DefaultOf("uint64", "0x10000000000000000"),
            "found '0x10000000000000000', expected a uint64 from 0 to 18446744073709551615");
  EXPECT_EQ(DefaultOf("sint64", "-0x8000000000000000"), "-9223372036854775808");
  EXPECT_EQ(DefaultOf("sint64", "-01000000000000000000001"),
            "found '-01000000000000000000001', expected a sint64 from -9223372036854775808 to 9223372036854775807");
}

TEST(IntegerLiteral, DigitsOfNoNotation) {
  const std::string expected =
      ", expected a binary (101b), octal (017), decimal, hexadecimal (0x1F) or real (1.5) number";
  for (const char* bad : {"102b", "08", "12a", "0x", "0xG1", "1e5", "1.", "1.5.2", "1_000"}) {
    EXPECT_EQ(DefaultOf("uint8", bad), "found '" + std::string(bad) + "'" + expected);
  }
}

TEST(IntegerLiteral, OtherLiteralsAreNotIntegers) {
  EXPECT_EQ(DefaultOf("uint8", "1.5"), "found '1.5', expected a uint8");
  EXPECT_EQ(DefaultOf("uint8", "\"1\""), "found '\"1\"', expected a uint8");
  EXPECT_EQ(DefaultOf("uint16", "'a'"), "found ''a'', expected a uint16");
  EXPECT_EQ(DefaultOf("sint32", "true"), "found 'true', expected a sint32");
  EXPECT_EQ(DefaultOf("uint8", "$a"), "found '$a', expected a uint8");
}

TEST(RealLiteral, EveryForm) {
  EXPECT_EQ(DefaultOf("real64", "1.5"), "1.5");
  EXPECT_EQ(DefaultOf("real64", "+.25"), "0.25");
  EXPECT_EQ(DefaultOf("real64", "-2.5E3"), "-2500.0");
  EXPECT_EQ(DefaultOf("real64", "2.5e-3"), "0.0025");
  EXPECT_EQ(DefaultOf("real32", "2.0e+2"), "200.0");
  EXPECT_EQ(DefaultOf("real32", "3"), "3.0") << "an integer is taken for a real number";
  EXPECT_EQ(DefaultOf("real64", "-0x10"), "-16.0");
}

TEST(RealLiteral, EdgesOfTheRange) {
  EXPECT_EQ(DefaultOf("real32", "3.4028235e38"), "3.4028235e+38");
  EXPECT_EQ(DefaultOf("real32", "3.5e38"), "found '3.5e38', expected a number in the range of real32");
  EXPECT_EQ(DefaultOf("real32", "-3.5e38"), "found '-3.5e38', expected a number in the range of real32");
  EXPECT_EQ(DefaultOf("real64", "1.7976931348623157e308"), "1.7976931348623157e+308");
  EXPECT_EQ(DefaultOf("real64", "1.8e308"), "found '1.8e308', expected a number in the range of real64");
  EXPECT_EQ(DefaultOf("real64", "18446744073709551616"),
            "found '18446744073709551616', expected a number in the range of real64");
  EXPECT_EQ(DefaultOf("real64", "\"1.0\""), "found '\"1.0\"', expected a real64");
}

TEST(BooleanLiteral, InAnyCase) {
  EXPECT_EQ(DefaultOf("boolean", "TRUE"), "true");
  EXPECT_EQ(DefaultOf("boolean", "False"), "false");
  EXPECT_EQ(DefaultOf("boolean", "1"), "found '1', expected true or false");
  EXPECT_EQ(DefaultOf("boolean", "\"true\""), "found '\"true\"', expected true or false");
}

TEST(CharacterLiteral, GivenByItsNumber) {
  EXPECT_EQ(DefaultOf("char16", "65"), "65");
  EXPECT_EQ(DefaultOf("char16", "0xFFFF"), "65535");
  EXPECT_EQ(DefaultOf("char16", "65536"), "found '65536', expected a char16 from 0 to 65535");
  EXPECT_EQ(DefaultOf("char16", "-1"), "found '-1', expected a char16 from 0 to 65535");
}

TEST(CharacterLiteral, CodesUpTo16Bits) {
  EXPECT_EQ(DefaultOf("char16", "'A'"), "65");
  EXPECT_EQ(DefaultOf("char16", "'\\''"), "39");
  EXPECT_EQ(DefaultOf("char16", "'\"'"), "34");
  EXPECT_EQ(DefaultOf("char16", "'\\x41'"), "65");
  EXPECT_EQ(DefaultOf("char16", "'\\XFFFF'"), "65535");
  EXPECT_EQ(DefaultOf("char16", "'\xC3\xA4'"), "228");
  EXPECT_EQ(DefaultOf("char16", "'\xE2\x82\xAC'"), "8364");
  EXPECT_EQ(DefaultOf("char16", "'\xF0\x9F\x98\x80'"),
            "found '\xF0\x9F\x98\x80', expected a character up to U+FFFF, the largest that a char16 can hold");
  EXPECT_EQ(DefaultOf("char16", "''"), "found '' without a character, expected one character between the quotes");
  EXPECT_EQ(DefaultOf("char16", "'ab'"), "found 'ab', expected one character between the quotes");
  EXPECT_EQ(DefaultOf("char16", "\"a\""), "found '\"a\"', expected a character in single quotes");
  EXPECT_EQ(
      DefaultOf("char16", "'\\q'"),
      R"(found '\q', expected one of the escapes \b \t \n \f \r \" \' \\ \x with one to four hexadecimal digits)");
}

TEST(StringLiteral, Escapes) {
  EXPECT_EQ(DefaultOf("string", R"("\b\t\n\f\r\"\'\\")"), "\b\t\n\f\r\"'\\");
  EXPECT_EQ(DefaultOf("string", R"("\x41\X42\x043\x0044")"), "ABCD");
  EXPECT_EQ(DefaultOf("string", R"("\x00415")"), "A5") << "four digits at most";
  EXPECT_EQ(DefaultOf("string", R"("\x41g")"), "Ag");
  EXPECT_EQ(DefaultOf("string", R"("\xE4\x20AC")"), "\xC3\xA4\xE2\x82\xAC");
  EXPECT_EQ(DefaultOf("string", R"("\xD83D\xDE00")"), "\xF0\x9F\x98\x80") << "two escaped surrogates are one character";
  EXPECT_EQ(DefaultOf("string", R"("\xD83D!")"), "\xEF\xBF\xBD!") << "half a character";
  EXPECT_EQ(DefaultOf("string", R"("// no /* comment */")"), "// no /* comment */");
}

TEST(StringLiteral, NulCharacterIsKept) { EXPECT_EQ(DefaultOf("string", R"("a\x0 b")"), std::string("a\0 b", 4)); }

TEST(StringLiteral, AdjacentLiteralsAreJoined) {
  EXPECT_EQ(DefaultOf("string", "\"a\" \"b\"\n // between\n \"\\x63\" /* and */ \"\""), "abc");
}

TEST(StringLiteral, BadEscapes) {
  const std::string expected =
      R"(', expected one of the escapes \b \t \n \f \r \" \' \\ \x with one to four hexadecimal digits)";
  EXPECT_EQ(DefaultOf("string", R"("\q")"), R"(found '\q)" + expected);
  EXPECT_EQ(DefaultOf("string", "\"\\\xC3\xA4\""), "found '\\\xC3\xA4" + expected);
  EXPECT_EQ(DefaultOf("string", R"("\xg")"), R"(found '\x' without a digit, expected one to four hexadecimal digits)");
}

TEST(StringLiteral, OtherLiteralsAreNotStrings) {
  EXPECT_EQ(DefaultOf("string", "5"), "found '5', expected a string");
  EXPECT_EQ(DefaultOf("string", "true"), "found 'true', expected a string");
  EXPECT_EQ(DefaultOf("string", "{\"a\"}"), "found an array, expected a string");
}

TEST(DateTimeLiteral, PointsAndIntervals) {
  EXPECT_EQ(DefaultOf("datetime", "\"20260131123456.000000+060\""), "20260131123456.000000+060");
  EXPECT_EQ(DefaultOf("datetime", "\"00000012010203.000000:000\""), "00000012010203.000000:000");
  EXPECT_EQ(DefaultOf("datetime", "\"2026\" \"0131123456.******-300\""), "20260131123456.******-300");
}

TEST(DateTimeLiteral, OfAnotherSizeOrType) {
  const std::string forms = ", \"yyyymmddhhmmss.mmmmmmsutc\" or \"ddddddddhhmmss.mmmmmm:000\"";
  EXPECT_EQ(DefaultOf("datetime", "\"20260131123456.000000+06\""),
            "found 24 characters, expected a datetime of 25 characters" + forms);
  EXPECT_EQ(DefaultOf("datetime", "\"\""), "found 0 characters, expected a datetime of 25 characters" + forms);
  EXPECT_EQ(DefaultOf("datetime", "5"), "found '5', expected a datetime in double quotes");
}

TEST(DateTimeLiteral, FieldsOutOfRange) {
  EXPECT_EQ(DefaultOf("datetime", "\"20261331123456.000000+060\""),
            "found the month '13' in the datetime, expected 01 to 12");
  EXPECT_EQ(DefaultOf("datetime", "\"20260100123456.000000+060\""),
            "found the day '00' in the datetime, expected 01 to 31");
  EXPECT_EQ(DefaultOf("datetime", "\"00009999243456.000000:000\""),
            "found the hour '24' in the datetime, expected 00 to 23");
  EXPECT_EQ(DefaultOf("datetime", "\"20260131126056.000000+060\""),
            "found the minute '60' in the datetime, expected 00 to 59");
  EXPECT_EQ(DefaultOf("datetime", "\"20260131125960.******+060\""),
            "found the second '60' in the datetime, expected 00 to 59");
  EXPECT_EQ(DefaultOf("datetime", "\"00000012010203.000000:060\""), "found '060' after ':', expected '000'");
}

TEST(DateTimeLiteral, CharactersOutOfPlace) {
  EXPECT_EQ(DefaultOf("datetime", "\"20260131123456,000000+060\""),
            "found ',' at position 15 of the datetime, expected '.'");
  EXPECT_EQ(DefaultOf("datetime", "\"20260131123456.000000*060\""),
            "found '*' at position 22 of the datetime, expected '+', '-' or ':'");
  EXPECT_EQ(DefaultOf("datetime", "\"2026013112345O.000000+060\""),
            "found 'O' at position 14 of the datetime, expected a digit");
  EXPECT_EQ(DefaultOf("datetime", "\"20260131123456.000000+***\""),
            "found '*' at position 23 of the datetime, expected a digit");
  EXPECT_EQ(DefaultOf("datetime", "\"202601311234\xC3\xA4.000000+060\""),
            "found another character at position 13 of the datetime, expected a digit");
  EXPECT_EQ(DefaultOf("datetime", "\"2026**31123456.000000+060\""),
            "found '2026**31123456.000000+060', expected asterisks from the start of a field up to position 21 of the "
            "datetime");
}

TEST(ArrayLiteral, BoundsAndNulls) {
  EXPECT_EQ(DefaultOf("uint8", "{1, 0x2, NULL, 11b}"), "found an array, expected a uint8");
  const TSchemaResult result =
      ReadText("class A { uint8 p[] = {1, 0x2, NULL, 11b}; string q[2] = {\"a\", \"b\"}; uint8 r[] = {}; };");
  ASSERT_EQ(Shown(result), "");
  EXPECT_EQ(PropertyOf(result, "A", "p").defaultValue.ToString(10), "{1, 2, , 3}");
  EXPECT_EQ(PropertyOf(result, "A", "p").arraySize, 0U);
  EXPECT_EQ(PropertyOf(result, "A", "q").defaultValue.ToString(10), "{a, b}");
  EXPECT_EQ(PropertyOf(result, "A", "q").arraySize, 2U);
  EXPECT_EQ(PropertyOf(result, "A", "r").defaultValue.ToString(10), "{}");
}

TEST(ArrayLiteral, Errors) {
  EXPECT_EQ(Messages(ReadText("class A { uint8 p[2] = {1, 2, 3}; };")), "1:24 found 3 elements, expected at most 2\n");
  EXPECT_EQ(Messages(ReadText("class A { uint8 p[] = 1; };")),
            "1:23 found '1', expected an array of uint8 in braces\n");
  EXPECT_EQ(Messages(ReadText("class A { uint8 p[] = {1, 256, \"x\"}; };")),
            "1:27 found '256', expected a uint8 from 0 to 255\n1:32 found '\"x\"', expected a uint8\n");
  EXPECT_EQ(Messages(ReadText("class A { uint8 p[0]; };")),
            "1:19 found '0', expected an array size from 1 to 2147483647\n");
  EXPECT_EQ(Messages(ReadText("class A { uint8 p[0x10]; };")),
            "1:19 found '0x10', expected an array size from 1 to 2147483647\n");
  EXPECT_EQ(Messages(ReadText("class A { uint8 p[2147483648]; };")),
            "1:19 found '2147483648', expected an array size from 1 to 2147483647\n");
}

TEST(NullLiteral, FitsEveryType) {
  for (const char* type : {"boolean", "uint8", "sint64", "real32", "char16", "string", "datetime"}) {
    EXPECT_EQ(DefaultOf(type, "NULL"), "");
    EXPECT_EQ(DefaultOf(type, "null"), "");
  }
  const TSchemaResult result = ReadText("class A { uint8 p[] = null; uint8 q = null; };");
  ASSERT_EQ(Shown(result), "");
  EXPECT_TRUE(PropertyOf(result, "A", "p").defaultValue.IsNull());
  EXPECT_TRUE(PropertyOf(result, "A", "p").defaultValue.IsArray());
  EXPECT_FALSE(PropertyOf(result, "A", "q").defaultValue.IsArray());
}

}  // namespace
}  // namespace tests
