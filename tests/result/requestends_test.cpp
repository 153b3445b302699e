// What the end of a request means for the turns that are left.
#include "host/result/planfollower.h"

#include "tests/result/followertest.h"

namespace tests {
namespace {

using testing::ElementsAre;

class RequestEnds : public TFollowerTest {};

TEST_F(RequestEnds, AnEarlyReturnSaysHowMuchIsUnmade) {
  Plans({{kVoBridge, kBlockClass}});
  Sees(Register(1, 0x20).Lost());
  EXPECT_THAT(Ends(), ElementsAre("1 exchanges", "failed register A 000020 node0 VO_PCIIOBRIDGE/node0/instance0: lost",
                                  "unread VO_PCIIOBRIDGE/node0/instance0 register-unread",
                                  "unread VO_PCIIOBRIDGE/node0/instance1 register-unread",
                                  "unread J/sp0/instance0 block-unread", "unread J/sp1/instance0 block-unread",
                                  "reason nothing-read 1", "reason VO_PCIIOBRIDGE request-failed 1",
                                  "reason VO_PCIIOBRIDGE register-unread 1"));
  EXPECT_EQ(MessageOf(EReason::kRequestFailed), "the collector returned before making 3 of 4 planned exchanges");
}

TEST_F(RequestEnds, AReturnBeforeATimeOrACommitIsEarlyToo) {
  Plans({{kVoMemory}});
  Sees(Register(0, 0x10).Answers(kCount));
  EXPECT_EQ(Ends().at(1), "unread VO_MEMCTL/node0/instance0 register-unread");
  EXPECT_EQ(MessageOf(EReason::kRequestFailed), "the collector returned before the timestamp read on node 0");
  Plans({{kVoMemory}});
  SeesMemory();
  Ends();
  EXPECT_EQ(MessageOf(EReason::kRequestFailed),
            "the collector returned before an instance of KROSG_VO_MEMCTL_StatisticData");
}

TEST_F(RequestEnds, AnExceptionBlamesTheFirstUnfinishedTurn) {
  Plans({{kVoMemory, kVoBridge, kBlockClass, "Chipset"}});
  SeesMemory();
  Commits(kVoMemory);
  EXPECT_THAT(Ends("it failed"), ElementsAre("3 exchanges", "unread VO_PCIIOBRIDGE/node0/instance0 register-unread",
                                             "unread VO_PCIIOBRIDGE/node0/instance1 register-unread",
                                             "reason VO_PCIIOBRIDGE request-failed 1", "reason J not-collected 1",
                                             "reason Chipset not-served 1"));
  EXPECT_EQ(MessageOf(EReason::kRequestFailed), "it failed");
  EXPECT_EQ(MessageOf(EReason::kNotCollected), "the request ended before this class");
}

TEST_F(RequestEnds, AnExceptionAtACommitLeavesItsInstancesUnread) {
  Plans({{kVoBridge, kVoMemory}});
  for (const std::uint8_t chip : {std::uint8_t{1}, std::uint8_t{2}}) {
    Sees(Register(chip, 0x20).Answers(kCount));
    Sees(Timestamp().Answers(kTime));
    Sees(Timestamp().Answers(kTime));
  }
  Commits(kVoBridge);
  EXPECT_THAT(Ends("it failed"),
              ElementsAre("6 exchanges", "unread VO_PCIIOBRIDGE/node0/instance1 register-unread",
                          "reason VO_PCIIOBRIDGE request-failed 1", "reason VO_MEMCTL not-collected 1"));
}

TEST_F(RequestEnds, AnExceptionAfterEverythingBlamesTheLastTurn) {
  Plans({{kVoBridge, kVoMemory}});
  Sees(Register(1, 0x20).Fails(0xCB));
  Sees(Register(2, 0x20).Fails(0xCB));
  SeesMemory();
  Commits(kVoMemory);
  EXPECT_EQ(Ends("it failed").back(), "reason VO_MEMCTL request-failed 1");
}

TEST_F(RequestEnds, AnExceptionInAnUnknownTurnIsItsOwn) {
  Plans({{kVoMemory, kUnknown, kVoBridge}});
  SeesMemory();
  Commits(kVoMemory);
  EXPECT_THAT(Ends("it failed"),
              ElementsAre("3 exchanges", "reason T4_MEMCTL request-failed 1", "reason VO_PCIIOBRIDGE not-collected 1"));
}

TEST_F(RequestEnds, AnExceptionOfADepartedCallReplacesItsSentence) {
  Plans({{kVoMemory}});
  Sees(Timestamp().Answers(kTime));
  EXPECT_THAT(Ends("it failed"),
              ElementsAre("1 exchanges", "reason nothing-read 1", "reason VO_MEMCTL request-failed 1"));
  EXPECT_EQ(MessageOf(EReason::kRequestFailed), "it failed");
}

TEST_F(RequestEnds, AnExceptionIsNotWhyAClassAfterTheCaptureClassIsNotCollected) {
  Plans({{kVoMemory, kFileClass, kBlockClass}});
  EXPECT_THAT(Ends("it failed"), ElementsAre("0 exchanges", "unread VO_MEMCTL/node0/instance0 register-unread",
                                             "reason nothing-read 1", "reason VO_MEMCTL request-failed 1",
                                             "reason DCAPFile not-collected 1", "reason J not-collected 1"));
  EXPECT_EQ(MessageOf(EReason::kNotCollected, kFileClass), "the request ended before this class");
  EXPECT_EQ(MessageOf(EReason::kNotCollected, kBlockClass), "the collector ends the request after KROSG_DCAPFile");
}

TEST_F(RequestEnds, ClassesAfterTheCaptureClassAreNotCollected) {
  Plans({{kFileClass, kVoMemory}});
  for (const char* area : {"cpu_err", "ioh_err", "zyn_err"}) Sees(Open(area).Fails(0xCB));
  const auto lines = Ends();
  EXPECT_EQ(lines.back(), "reason VO_MEMCTL not-collected 1");
  EXPECT_EQ(lines.at(lines.size() - 2), "unread DCAPFile/node0/zyn_err absent");
  EXPECT_EQ(MessageOf(EReason::kNotCollected), "the collector ends the request after KROSG_DCAPFile");
}

}  // namespace
}  // namespace tests
