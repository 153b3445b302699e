#include "host/base/runstamp.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ctime>
#include <set>
#include <string>

#include "tests/support/namespaces.h"
#include "tests/support/timezone.h"

namespace tests {
namespace {

using std::chrono::microseconds;
using std::chrono::minutes;
using std::chrono::seconds;
using std::chrono::system_clock;

// As seen by the C library in the process's zone.
std::string TextIn(const char* zone, system_clock::time_point time) {
  const TTimeZone set(zone);
  tzset();
  return LocalWallTimeText(time);
}

system_clock::time_point At(std::chrono::microseconds sinceEpoch) { return system_clock::time_point(sinceEpoch); }

TEST(Uuid, HasVersionAndVariant) {
  // The third group begins with the version, the fourth with the two bits 10 of the variant.
  EXPECT_THAT(NewUuid(), testing::MatchesRegex("[0-9a-f]{8}-[0-9a-f]{4}-4[0-9a-f]{3}-[89ab][0-9a-f]{3}-[0-9a-f]{12}"));
}

TEST(Uuid, IsAnotherOneEachTime) {
  std::set<std::string> seen;
  for (int i = 0; i < 100; ++i) seen.insert(NewUuid());
  EXPECT_EQ(seen.size(), 100U);
}

// 1769859296 s after 1970 is 2026-01-31 11:34:56 UTC.
TEST(WallTime, IsTheTimeOfTheZone) {
  const auto time = At(seconds(1769859296) + microseconds(789999));
  EXPECT_EQ(WallTimeText(time, minutes(0)), "2026-01-31T11:34:56.789+00:00");
  EXPECT_EQ(WallTimeText(time, minutes(60)), "2026-01-31T12:34:56.789+01:00");
  EXPECT_EQ(WallTimeText(time, minutes(-210)), "2026-01-31T08:04:56.789-03:30");
  EXPECT_EQ(WallTimeText(time, minutes(-12 * 60)), "2026-01-30T23:34:56.789-12:00");
  EXPECT_EQ(WallTimeText(time, minutes(-30)), "2026-01-31T11:04:56.789-00:30");
  EXPECT_EQ(WallTimeText(time, minutes(13 * 60)), "2026-02-01T00:34:56.789+13:00");
}

TEST(WallTime, HasMillisecondsAlways) {
  EXPECT_EQ(WallTimeText(At(microseconds(0)), minutes(0)), "1970-01-01T00:00:00.000+00:00");
  EXPECT_EQ(WallTimeText(At(microseconds(1999)), minutes(0)), "1970-01-01T00:00:00.001+00:00");
  EXPECT_EQ(WallTimeText(At(microseconds(-1)), minutes(0)), "1969-12-31T23:59:59.999+00:00");
}

TEST(WallTime, FollowsTheZoneOfTheProcess) {
  const auto winter = At(seconds(1769859296));
  const auto summer = At(seconds(1785497696));  // 2026-07-31 11:34:56 UTC
  constexpr const char* kCentralEurope = "CET-1CEST,M3.5.0,M10.5.0/3";
  EXPECT_EQ(TextIn(kCentralEurope, winter), "2026-01-31T12:34:56.000+01:00");
  EXPECT_EQ(TextIn(kCentralEurope, summer), "2026-07-31T13:34:56.000+02:00");
  EXPECT_EQ(TextIn("NST3:30", winter), "2026-01-31T08:04:56.000-03:30");
}

}  // namespace
}  // namespace tests
