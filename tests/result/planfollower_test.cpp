// How the follower attributes exchanges and instances, and where it leaves the plan.
#include "host/result/planfollower.h"

#include "tests/result/followertest.h"

namespace tests {
namespace {

using testing::ElementsAre;

class Follower : public TFollowerTest {};

TEST_F(Follower, AWholeRunHasNoReasons) {
  Plans({{kVoMemory, "Chipset", kBlockClass}});
  EXPECT_EQ(follower_->Turn(), 0U);
  SeesMemory();
  EXPECT_EQ(Commits(kVoMemory), kInstance);
  Sees(DotBlock(0).Lost());
  EXPECT_EQ(follower_->Turn(), 2U);
  Sees(DotBlock(1).Lost());
  EXPECT_EQ(follower_->PlannedMade(), 3U) << "a register and two blocks";
  EXPECT_THAT(Ends(), ElementsAre("5 exchanges", "failed dot sp0: lost", "failed dot sp1: lost",
                                  "unread J/sp0/instance0 block-unread", "unread J/sp1/instance0 block-unread",
                                  "reason Chipset not-served 1", "reason J block-unread 2"));
}

TEST_F(Follower, AClassThatIsNamedTwiceHasTwoSetsOfKeys) {
  for (const auto& requests : {std::vector<std::vector<std::string>>{{kVoMemory, kVoMemory}},
                               std::vector<std::vector<std::string>>{{kVoMemory}, {kVoMemory}}}) {
    Plans(requests);
    SeesMemory();
    EXPECT_EQ(Commits(kVoMemory), kInstance);
    if (requests.size() == 2) {
      Returns();
      Begins(1);
    }
    Sees(Register(0, 0x10).Lost());
    EXPECT_THAT(Ends(), ElementsAre("4 exchanges", "failed register A 000010 node0 VO_MEMCTL/node0/instance0#2: lost",
                                    "unread VO_MEMCTL/node0/instance0#2 register-unread",
                                    "reason VO_MEMCTL register-unread 1"));
  }
}

TEST_F(Follower, DepartsAtTheFirstOtherExchange) {
  Plans({{kVoBridge}});
  Sees(Register(1, 0x20).Answers(kCount));
  Sees(Timestamp().Lost());
  Sees(Register(3, 0x20).Answers(kCount));
  Sees(Register(2, 0x20).Fails(0xC3));
  EXPECT_EQ(Commits(kVoBridge), "VO_PCIIOBRIDGE/?1");
  EXPECT_THAT(Ends(), ElementsAre("4 exchanges", "failed timestamp node0 VO_PCIIOBRIDGE/node0/instance0: lost",
                                  "failed register 000020 node0: code 195", "reason VO_PCIIOBRIDGE request-failed 1",
                                  "reason VO_PCIIOBRIDGE register-unread 1"));
  EXPECT_EQ(MessageOf(EReason::kRequestFailed),
            "the collector did not follow the plan: found the register read of chip 3 at 0x000020 on node 0, expected "
            "the register read of chip 2 at 0x000020 on node 0");
}

TEST_F(Follower, EveryByteOfARequestCounts) {
  for (std::size_t i = 0; i < 256; ++i) {
    Plans({{kVoMemory}});
    TStep other = Register(0, 0x10).Answers(kCount);
    other.request.at(i) ^= 1U;
    Sees(other);
    Sees(Timestamp().Answers(kTime));
    Sees(Timestamp().Answers(kTime));
    EXPECT_EQ(Commits(kVoMemory), "VO_MEMCTL/?1") << i;
  }
}

TEST_F(Follower, TheNodeCounts) {
  Plans({{kVoMemory}});
  TStep other = Register(0, 0x10).Answers(kCount);
  other.target = 1;
  Sees(other);
  EXPECT_EQ(Commits(kVoMemory), "VO_MEMCTL/?1");
}

TEST_F(Follower, EveryByteOfADotCommandCounts) {
  for (std::size_t i = 0; i < 7; ++i) {
    Plans({{kBlockClass}});
    TStep other = DotBlock(0).Returns(TBytes(4096, 1));
    other.request.at(i) ^= 1U;
    Sees(other);
    Sees(DotBlock(1).Returns(TBytes(4096, 1)));
    EXPECT_EQ(Commits(kBlockClass), "J/?1") << i;
  }
  Plans({{kBlockClass}});
  Sees(DotBlock(1).Returns(TBytes(4096, 1)));
  EXPECT_EQ(Commits(kBlockClass), "J/?1") << "another service processor";
}

TEST_F(Follower, AnUnknownTurnDepartsAtAnyExchange) {
  Plans({{kUnknown, kVoMemory}});
  SeesMemory();
  EXPECT_EQ(Commits(kVoMemory), "VO_MEMCTL/?1") << "the unknown class may have made those exchanges";
  EXPECT_THAT(Ends(), ElementsAre("3 exchanges"));
}

TEST_F(Follower, AnUnknownTurnKeepsWhatCameBefore) {
  Plans({{kVoMemory, kUnknown}});
  SeesMemory();
  EXPECT_EQ(Commits(kVoMemory), kInstance);
  EXPECT_EQ(Commits(kUnknown), "T4_MEMCTL/?1");
  EXPECT_EQ(follower_->Turn(), 1U);
  Sees(Register(0, 0x30).Lost());
  EXPECT_THAT(Ends(),
              ElementsAre("4 exchanges", "failed register 000030 node0: lost", "reason T4_MEMCTL register-unread 1"));
}

TEST_F(Follower, WhatFailsInAnUnknownTurnWasAskedForAllTheSame) {
  Plans({{kUnknown}});
  Sees(Register(0, 0x30).Fails(0xC3));
  Sees(Register(0, 0x38).Fails(0xCB));
  Sees(Timestamp().Lost());
  Sees(Open("cpu_err").Fails(0xC1));
  Sees(Open("ioh_err").Fails(0xC3));
  Sees(Size("zyn_err").Fails(0xCB));
  Sees(Read({1, 2, 3, 4}, 0, 10).Lost());
  Sees(Close({1, 2, 3, 4}).Lost());
  Sees(DotBlock(1).Lost());
  const auto lines = Ends();
  EXPECT_THAT(std::vector(lines.end() - 4, lines.end()),
              ElementsAre("reason T4_MEMCTL register-unread 1", "reason T4_MEMCTL time-unread 1",
                          "reason T4_MEMCTL file-unread 3", "reason T4_MEMCTL block-unread 1"))
      << "what is absent is not a reason, and a close delivers nothing";
  EXPECT_EQ(MessageOf(EReason::kRegisterUnread), "1 register was not read") << "of how many, the plan does not know";
}

TEST_F(Follower, NothingIsKnownOfAnotherPlugin) {
  isCollector = false;
  Plans({{kVoMemory}});
  SeesMemory();
  EXPECT_EQ(Commits(kVoMemory), "VO_MEMCTL/?1");
  EXPECT_THAT(Ends("it failed"), ElementsAre("3 exchanges", "reason VO_MEMCTL request-failed 1"));
  EXPECT_EQ(MessageOf(EReason::kRequestFailed), "it failed");
}

TEST_F(Follower, TheCommitOfAnotherClassDeparts) {
  Plans({{kVoMemory}});
  SeesMemory();
  EXPECT_EQ(Commits(kVoBridge), "VO_PCIIOBRIDGE/?1");
  EXPECT_EQ(Commits(kVoMemory), "VO_MEMCTL/?2");
  EXPECT_THAT(Ends(), ElementsAre("3 exchanges", "reason VO_MEMCTL request-failed 1"));
  EXPECT_EQ(MessageOf(EReason::kRequestFailed),
            "the collector did not follow the plan: found an instance of KROSG_VO_PCIIOBRIDGE_StatisticData, expected "
            "an instance of KROSG_VO_MEMCTL_StatisticData");
}

TEST_F(Follower, ACommitBeforeItsExchangesDeparts) {
  Plans({{kVoMemory}});
  Sees(Register(0, 0x10).Answers(kCount));
  EXPECT_EQ(Commits(kVoMemory), "VO_MEMCTL/?1");
  EXPECT_THAT(Ends(), ElementsAre("1 exchanges", "reason VO_MEMCTL request-failed 1"));
  EXPECT_EQ(MessageOf(EReason::kRequestFailed),
            "the collector did not follow the plan: found an instance of KROSG_VO_MEMCTL_StatisticData, expected the "
            "timestamp read on node 0");
}

TEST_F(Follower, ASecondCommitOfOneCandidateDeparts) {
  Plans({{kVoMemory}});
  SeesMemory();
  Commits(kVoMemory);
  EXPECT_EQ(Commits(kVoMemory), "VO_MEMCTL/?1");
  EXPECT_EQ(Ends().back(), "reason VO_MEMCTL request-failed 1");
  EXPECT_EQ(MessageOf(EReason::kRequestFailed),
            "the collector did not follow the plan: found an instance of KROSG_VO_MEMCTL_StatisticData, expected the "
            "end of the request");
}

TEST_F(Follower, AnExchangeBeforeACommitDeparts) {
  Plans({{kVoMemory, kBlockClass}});
  SeesMemory();
  Sees(DotBlock(0).Lost());
  EXPECT_EQ(Commits(kVoMemory), "VO_MEMCTL/?1");
  EXPECT_THAT(Ends(), ElementsAre("4 exchanges", "failed dot sp0: lost", "reason VO_MEMCTL request-failed 1",
                                  "reason VO_MEMCTL block-unread 1"));
  EXPECT_EQ(MessageOf(EReason::kRequestFailed),
            "the collector did not follow the plan: found the dot command for a register block to service processor 0, "
            "expected an instance of KROSG_VO_MEMCTL_StatisticData");
}

TEST_F(Follower, AnExchangeAfterTheLastTurnDeparts) {
  Plans({{kVoMemory}});
  SeesMemory();
  Commits(kVoMemory);
  Sees(Ipmi(0, TBytes{0x01, 0x20, 0x06, 0x00, 0x01}).Fails(0xC1));
  EXPECT_THAT(Ends(), ElementsAre("4 exchanges", "failed other node0: code 193", "reason VO_MEMCTL request-failed 1"));
  EXPECT_EQ(MessageOf(EReason::kRequestFailed),
            "the collector did not follow the plan: found a request of unknown purpose on node 0, expected the end of "
            "the request");
}

TEST_F(Follower, ADepartureEndsWithItsRequest) {
  Plans({{kVoMemory}, {kVoMemory}});
  Sees(Timestamp().Answers(kTime));
  Returns();
  Begins(1);
  SeesMemory();
  EXPECT_EQ(Commits(kVoMemory), "VO_MEMCTL/node0/instance0#2, chip 0, time 12 34 56 78");
}

TEST_F(Follower, QuestionMarksCountOverTheRun) {
  Plans({{kUnknown}, {kVoMemory}, {kUnknown}});
  EXPECT_EQ(Commits(kUnknown), "T4_MEMCTL/?1");
  EXPECT_EQ(Commits(kUnknown), "T4_MEMCTL/?2");
  Returns();
  Begins(1);
  SeesMemory();
  EXPECT_EQ(Commits(kVoMemory), kInstance);
  Returns();
  Begins(2);
  EXPECT_EQ(Commits(kUnknown), "T4_MEMCTL/?3");
}

TEST_F(Follower, ACaptureFileOfADepartedCallIsCutIfAReadFailed) {
  Plans({{kFileClass}});
  Sees(Timestamp().Lost());
  EXPECT_EQ(Commits(kFileClass), "DCAPFile/?1");
  Sees(Read({1, 2, 3, 4}, 0, 10).Lost());
  EXPECT_EQ(Commits(kFileClass), "DCAPFile/?2; cut");
  EXPECT_EQ(Commits(kVoMemory), "VO_MEMCTL/?3");
}

TEST_F(Follower, ARefusedSizeOfADepartedCallIsAReason) {
  Plans({{kFileClass}});
  Sees(Timestamp().Lost());
  Sees(Size("cpu_err").Answers(SizeData(1 << 30)));
  SeesSizeRefused();
  const auto lines = Ends();
  EXPECT_EQ(lines.back(), "reason DCAPFile file-unread 1");
}

TEST_F(Follower, AnExchangeForAClassAfterTheCaptureClassDeparts) {
  Plans({{kFileClass, kVoMemory}});
  for (const char* area : {"cpu_err", "ioh_err", "zyn_err"}) Sees(Open(area).Fails(0xCB));
  SeesMemory();
  EXPECT_EQ(Commits(kVoMemory), "VO_MEMCTL/?1");
  EXPECT_EQ(follower_->Turn(), 0U);
}

TEST_F(Follower, ARequestWithoutClassesHasNoTurns) {
  Plans({{}});
  Sees(Timestamp().Lost());
  EXPECT_EQ(Commits(kVoMemory), "VO_MEMCTL/?1");
  EXPECT_THAT(Ends("it failed"), ElementsAre("1 exchanges", "reason request-failed 1", "reason nothing-read 1"));
}

TEST_F(Follower, ExchangesOutsideOfARequestAreCounted) {
  Plans({{kVoMemory}});
  SeesMemory();
  Commits(kVoMemory);
  Returns();
  Sees(Timestamp().Lost());
  EXPECT_EQ(follower_->Turn(), 0U);
  EXPECT_EQ(Commits(kVoMemory), "VO_MEMCTL/?1");
  EXPECT_THAT(Ends(), ElementsAre("4 exchanges"));
  Plans({});
  Sees(Timestamp().Lost());
  SeesSizeRefused();
  EXPECT_THAT(Ends(), ElementsAre("1 exchanges", "reason nothing-read 1"));
}

// Two registers of errors, of which the second masks the first.
TClassMeaning MeaningOfTwo() {
  TClassMeaning meaning;
  meaning.registers.resize(2);
  for (TRegisterMeaning& one : meaning.registers) one.role = ERole::kErrors;
  meaning.registers[0].maskedBy = 1;
  return meaning;
}

class FollowedMeaning : public TFollowedRun {
 protected:
  void PlansWithMeaning(const std::string& name) {
    Plans({{name}});
    Means(name, MeaningOfTwo());
  }
  const TBytes any_ = TBytes(14, 0);
};

TEST_F(FollowedMeaning, FindingsComeOfRegistersThatWereRead) {
  Add(Class(kVoMemory, 1).Register("A", 0x10, 8).Register("B", 0x20, 8));
  PlansWithMeaning(kVoMemory);
  Sees(Register(0, 0x10).Answers(RegisterData({0x21, 0, 0, 0, 0, 0, 0, 0x80})));
  Sees(Register(0, 0x20).Fails(0xC3));
  Sees(Timestamp().Lost());
  EXPECT_EQ(Commits(kVoMemory, {{"A", any_}}),
            "VO_MEMCTL/node0/instance0, chip 0, A 000010 = 8000000000000021; missing B 000020 code 195; missing "
            "StatisticTime lost; found A 0 without B; found A 5 without B; found A 63 without B");
}

TEST_F(FollowedMeaning, OnlyBytesThatCameAreFindings) {
  Add(Class(kBlockClass, 1).Record("A", 0).Record("B", 2));
  server.serviceProcessors = 1;
  PlansWithMeaning(kBlockClass);
  TBytes block(25, 0);  // the record of B, at 7 + 2 x 8, has two bytes
  const TBytes header = {0x00, 0x18, 0x0C, 0x1F, 0x17, 0x3B, 0x3A};
  std::copy(header.begin(), header.end(), block.begin());
  block[17] = 0x08;
  Sees(DotBlock(0).Returns(block));
  EXPECT_EQ(
      Commits(kBlockClass, {{"A", any_}, {"B", TBytes(14, 48)}}),
      "J/sp0/instance0, A index 0 = 0000000000000008 id 00 00 00; missing B index 2 short 2; found A 3 without B");
}

TEST_F(FollowedMeaning, AnInstanceWithoutAPlaceHasNoFindings) {
  Add(Class(kVoMemory, 1).Register("A", 0x10, 8).Register("B", 0x20, 8));
  PlansWithMeaning(kVoMemory);
  EXPECT_EQ(Commits(kVoMemory, {{"A", TBytes(14, 1)}}), "VO_MEMCTL/?1");
}

}  // namespace
}  // namespace tests
