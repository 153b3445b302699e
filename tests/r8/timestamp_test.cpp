// The capture time: 16 bits of seconds in UTC, with the offset of the local zone.
#include <gtest/gtest.h>

#include "tests/r8/registertest.h"
#include "tests/support/namespaces.h"
#include "tests/support/timezone.h"

namespace tests {
namespace {

class CaptureTime : public TRegisterTest {
 protected:
  CaptureTime() { Collector(Chip().MaxInstances(1)); }
  TCIMValue Time(const TStep& step) {
    sp.Expect(step);
    return collector->getTimeStampValue();
  }
  std::string TimeIn(const char* zone, const TBytes& bytes) {
    const TTimeZone scope(zone);
    return Time(Timestamp().Answers(bytes)).ToString(10);
  }
};

TEST_F(CaptureTime, TheLastTwoBytesAreSecondsOfTheFirstOfJanuary1970) {
  // 0x5678 = 22136 s = 6 h 8 min 56 s.
  EXPECT_EQ(TimeIn("UTC0", {0x12, 0x34, 0x56, 0x78}), "19700101060856.000000+000");
  EXPECT_EQ(TimeIn("UTC0", {0xFF, 0xFF, 0x56, 0x78}), "19700101060856.000000+000");
  EXPECT_EQ(TimeIn("UTC0", {0, 0, 0, 0}), "19700101000000.000000+000");
  EXPECT_EQ(TimeIn("UTC0", {0, 0, 0x01, 0x00}), "19700101000416.000000+000");  // 256 s
  EXPECT_EQ(TimeIn("UTC0", {0, 0, 0xFF, 0xFF}), "19700101181215.000000+000");  // 65535 s
}

TEST_F(CaptureTime, TheOffsetIsTheLocalZonesAndTheFieldsAreUtc) {
  const TBytes bytes = {0, 0, 0x56, 0x78};
  EXPECT_EQ(TimeIn("CET-1CEST", bytes), "19700101060856.000000+060");
  EXPECT_EQ(TimeIn("EST5EDT", bytes), "19700101060856.000000-300");
  EXPECT_EQ(TimeIn("NST3:30NDT", bytes), "19700101060856.000000-210");
  EXPECT_EQ(TimeIn("NPT-5:45", bytes), "19700101060856.000000+345");
  EXPECT_EQ(TimeIn("<+14>-14", bytes), "19700101060856.000000+840");
  EXPECT_EQ(TimeIn("<-12>12", bytes), "19700101060856.000000-720");
}

TEST_F(CaptureTime, OffsetSecondsAreTruncatedTowardsZero) {
  EXPECT_EQ(TimeIn("XXX0:01:30", {0, 0, 0, 0}), "19700101000000.000000-001");
  EXPECT_EQ(TimeIn("AAA-0:01:30", {0, 0, 0, 0}), "19700101000000.000000+001");
  EXPECT_EQ(TimeIn("XXX0:00:59", {0, 0, 0, 0}), "19700101000000.000000+000");
}

TEST_F(CaptureTime, TheZoneIsLookedUpForEveryReading) {
  EXPECT_EQ(TimeIn("EST5EDT", {0, 0, 0, 1}), "19700101000001.000000-300");
  EXPECT_EQ(TimeIn("CET-1CEST", {0, 0, 0, 1}), "19700101000001.000000+060");
}

TEST_F(CaptureTime, LogsItsTranscript) {
  TimeIn("UTC0", {0x12, 0x34, 0x56, 0x78});
  EXPECT_EQ(logger.Lines(),
            (std::vector<TLine>{Debug("Entered get time stamp request"),
                                Verbose("Command completed checking success...\n\nThe response length is 4"),
                                Debug("TimeStamp Size and Value4\n\nDate and Time19700101060856.000000+000")}));
}

TEST_F(CaptureTime, TheTranscriptShowsTheLengthThatTheBmcReported) {
  const TTimeZone scope("UTC0");
  Time(Timestamp().Answers({0, 0, 0, 1, 9, 9}));
  EXPECT_EQ(logger.Lines().back(), Debug("TimeStamp Size and Value6\n\nDate and Time19700101000001.000000+000"));
}

TEST_F(CaptureTime, AFailedReadGivesNullAndADebugLineWithoutAFullStop) {
  for (const TStep& step : {Timestamp().Fails(0xCB), Timestamp().Lost(), Timestamp().Answers({1, 2, 3}),
                            Timestamp().Answers({1, 2, 3, 4}).WithLength(12)}) {
    EXPECT_TRUE(Time(step).IsNull());
    EXPECT_EQ(logger.Lines().back(),
              Debug("Unable to determine the timestamp associated with the collected register data"));
  }
  EXPECT_TRUE(logger.OfSeverity(2).empty()) << "the status line belongs to a time that cannot be broken down";
}

}  // namespace
}  // namespace tests
