#include "host/base/cimdatetime.h"

#include <gtest/gtest.h>

#include <string>

namespace velhost {
namespace {

TEST(CimDateTime, AcceptsPointsInTimeAndIntervals) {
  for (const char* text : {"20241231235958.000000+000", "00000101000000.999999-720", "99999999235959.999999:000",
                           "20260131******.******+060", "20260131123456.123***+000", "**************.******:000"}) {
    EXPECT_EQ(CimDateTimeProblem(text), "");
    EXPECT_TRUE(IsCimDateTime(text)) << text;
  }
}

TEST(CimDateTime, SaysWhichCharacterIsWrong) {
  EXPECT_EQ(CimDateTimeProblem("2024123123595a.000000+000"),
            "found 'a' at position 14 of the datetime, expected a digit");
  EXPECT_EQ(CimDateTimeProblem("20241231235958,000000+000"), "found ',' at position 15 of the datetime, expected '.'");
  EXPECT_EQ(CimDateTimeProblem("20241231235958.000000 000"),
            "found ' ' at position 22 of the datetime, expected '+', '-' or ':'");
  EXPECT_EQ(CimDateTimeProblem("20241231235958.000000+\n00"),
            "found another character at position 23 of the datetime, expected a digit");
}

TEST(CimDateTime, SaysWhichFieldIsOutOfRange) {
  EXPECT_EQ(CimDateTimeProblem("20241331235958.000000+000"), "found the month '13' in the datetime, expected 01 to 12");
  EXPECT_EQ(CimDateTimeProblem("20241200235958.000000+000"), "found the day '00' in the datetime, expected 01 to 31");
  EXPECT_EQ(CimDateTimeProblem("00000001240000.000000:000"), "found the hour '24' in the datetime, expected 00 to 23");
  EXPECT_EQ(CimDateTimeProblem("20241231236058.000000+000"),
            "found the minute '60' in the datetime, expected 00 to 59");
  EXPECT_EQ(CimDateTimeProblem("20241231235960.000000+000"),
            "found the second '60' in the datetime, expected 00 to 59");
  EXPECT_EQ(CimDateTimeProblem("00000001000000.000000:001"), "found '001' after ':', expected '000'");
}

TEST(CimDateTime, RequiresAsterisksToBeginWithAField) {
  for (const std::string text : {"2*241231235958.000000+000", "20241231******.000000+000", "0000**********.******:000",
                                 "****1231235958.000000+000"}) {
    EXPECT_EQ(CimDateTimeProblem(text), "found '" + text +
                                            "', expected asterisks from the start of a field up to position 21 of the "
                                            "datetime");
  }
}

TEST(CimDateTime, HasTwentyFiveCharacters) {
  const std::string text = "20241231235958.000000+000";
  for (std::size_t size = 0; size < text.size(); ++size) EXPECT_FALSE(IsCimDateTime(text.substr(0, size))) << size;
  EXPECT_EQ(CimDateTimeProblem(text + "0"),
            "found 26 characters, expected a datetime of 25 characters, \"yyyymmddhhmmss.mmmmmmsutc\" or "
            "\"ddddddddhhmmss.mmmmmm:000\"");
}

}  // namespace
}  // namespace velhost
