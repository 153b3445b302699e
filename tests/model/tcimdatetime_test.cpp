#include "nkrovel20/tcimdatetime.h"

#include <gtest/gtest.h>

#include "tests/support/expectfailure.h"
#include "tests/support/namespaces.h"

namespace tests {
namespace {

TEST(CimDateTime, PrintsAsACimDatetime) {
  EXPECT_EQ(TCIMDateTime(2024, 12, 31, 23, 59, 58, 0, 0).ToString(), "20241231235958.000000+000");
  EXPECT_EQ(TCIMDateTime(2026, 1, 2, 3, 4, 5, 6, 60).ToString(), "20260102030405.000006+060");
  EXPECT_EQ(TCIMDateTime(1970, 1, 1, 6, 8, 56, 999999, 840).ToString(), "19700101060856.999999+840");
}

TEST(CimDateTime, NegativeOffsetsCarryTheirSign) {
  EXPECT_EQ(TCIMDateTime(2026, 1, 31, 0, 0, 0, 0, -1).ToString(), "20260131000000.000000-001");
  EXPECT_EQ(TCIMDateTime(2026, 1, 31, 0, 0, 0, 0, -300).ToString(), "20260131000000.000000-300");
}

TEST(CimDateTime, ImpossibleFieldsAreShownUnchanged) {
  EXPECT_EQ(TCIMDateTime(2048, 48, 48, 48, 48, 48, 0, 0).ToString(), "20484848484848.000000+000");
  EXPECT_EQ(TCIMDateTime(0, 0, 0, 0, 0, 0, 0, 0).ToString(), "00000000000000.000000+000");
  EXPECT_EQ(TCIMDateTime(2255, 255, 255, 255, 255, 255, 0, 0).ToString(), "2255255255255255255.000000+000");
}

TEST(CimDateTime, TheWidestFieldsArePrintedInFull) {
  EXPECT_EQ(TCIMDateTime(65535, 65535, 4294967295, 65535, 65535, 65535, 4294967295, -32768).ToString(),
            "65535655354294967295655356553565535.4294967295-32768");
}

TEST(CimDateTime, Iso8601ForPeople) {
  EXPECT_EQ(TCIMDateTime(2026, 1, 31, 12, 34, 56, 0, 60).ToIso8601(), "2026-01-31T12:34:56+01:00");
  EXPECT_EQ(TCIMDateTime(2026, 1, 31, 12, 34, 56, 0, 0).ToIso8601(), "2026-01-31T12:34:56+00:00");
  EXPECT_EQ(TCIMDateTime(2026, 1, 31, 12, 34, 56, 120, 0).ToIso8601(), "2026-01-31T12:34:56.000120+00:00");
  EXPECT_EQ(TCIMDateTime(2026, 1, 31, 12, 34, 56, 0, -90).ToIso8601(), "2026-01-31T12:34:56-01:30");
  EXPECT_EQ(TCIMDateTime(2026, 1, 31, 12, 34, 56, 0, -5).ToIso8601(), "2026-01-31T12:34:56-00:05");
  EXPECT_EQ(TCIMDateTime(2048, 48, 48, 48, 48, 48, 0, 0).ToIso8601(), "2048-48-48T48:48:48+00:00");
}

TEST(CimDateTime, TextsRoundTrip) {
  for (const char* text : {"20241231235958.000000+000", "00000101000000.000000+000", "99991231235959.999999+720",
                           "20260131123456.000007-300"}) {
    EXPECT_EQ(TCIMDateTime::FromString(text).ToString(), text);
  }
  EXPECT_EQ(TCIMDateTime::FromString("20260131123456.000000-000").ToString(), "20260131123456.000000+000");
}

TEST(CimDateTime, ParsedFieldsEqualGivenOnes) {
  EXPECT_EQ(TCIMDateTime::FromString("20260102030405.000006-060"), TCIMDateTime(2026, 1, 2, 3, 4, 5, 6, -60));
  EXPECT_NE(TCIMDateTime::FromString("20260102030405.000006-060"), TCIMDateTime(2026, 1, 2, 3, 4, 5, 6, 60));
}

TEST(CimDateTime, IntervalsAndAsterisksKeepTheirText) {
  for (const char* text : {"00000001132312.125000:000", "99999999235959.999999:000", "00000005******.******:000",
                           "20260131******.******+060", "2026**********.******+000", "202601********.******+000",
                           "**************.******+000", "20260131123456.123***+000", "202601311234**.******-720",
                           "**************.******:000"}) {
    const TCIMDateTime value = TCIMDateTime::FromString(text);
    EXPECT_EQ(value.ToString(), text);
    EXPECT_EQ(value.ToIso8601(), text);
  }
}

TEST(CimDateTime, MalformedTextsAreRefused) {
  for (const char* text : {"", "20241231235958.000000+00", "20241231235958.000000+0000", "20241231235958,000000+000",
                           "20241231235958.000000 000", "2024123123595a.000000+000", "20241231235958.00000 +000",
                           "2024-12-31T23:59:58+00:00", "20241231235958.000000+-00", "20241231235958000000+0000"}) {
    ExpectMismatch("\"" + std::string(text) + "\" is not a CIM datetime", [text] { TCIMDateTime::FromString(text); });
  }
}

TEST(CimDateTime, FieldsOutsideTheirRangesAreRefused) {
  for (const char* text : {"20240031235958.000000+000", "20241331235958.000000+000", "20241200235958.000000+000",
                           "20241232235958.000000+000", "20241231245958.000000+000", "20241231236058.000000+000",
                           "20241231235960.000000+000", "00000001240000.000000:000", "00000001006000.000000:000",
                           "00000001000060.000000:000", "00000001000000.000000:001"}) {
    ExpectMismatch("\"" + std::string(text) + "\" is not a CIM datetime", [text] { TCIMDateTime::FromString(text); });
  }
}

TEST(CimDateTime, AsterisksInsideAFieldOrBeforeDigitsAreRefused) {
  for (const char* text : {"2*241231235958.000000+000", "202*1231235958.000000+000", "20241*31235958.000000+000",
                           "20241231235958.0*0000+000", "****1231235958.000000+000", "20241231**5958.000000+000",
                           "20241231******.000000+000", "20241231235958.******+***", "20241231235958.******+0*0",
                           "0000**********.******:000", "000000**000000.000000:000"}) {
    ExpectMismatch("\"" + std::string(text) + "\" is not a CIM datetime", [text] { TCIMDateTime::FromString(text); });
  }
}

TEST(CimDateTime, EveryTruncationAndExtensionIsRefused) {
  const std::string text = "20241231235958.000000+000";
  for (std::size_t size = 0; size < text.size(); ++size) {
    EXPECT_THROW(TCIMDateTime::FromString(text.substr(0, size)), TVELException) << size;
  }
  EXPECT_THROW(TCIMDateTime::FromString(text + "0"), TVELException);
  EXPECT_NO_THROW(TCIMDateTime::FromString(text));
}

TEST(CimDateTime, CopiesAreIndependent) {
  TCIMDateTime original = TCIMDateTime::FromString("00000001132312.125000:000");
  const TCIMDateTime copy = original;
  original = TCIMDateTime(2026, 1, 31, 0, 0, 0, 0, 0);
  EXPECT_EQ(copy.ToString(), "00000001132312.125000:000");
  EXPECT_EQ(original.ToString(), "20260131000000.000000+000");
}

}  // namespace
}  // namespace tests
