// Classes whose registers are read one by one: what follows which answer, and what becomes of each register.
#include "host/result/r8walk.h"

#include "tests/result/followedrun.h"

namespace tests {
namespace {

using testing::ElementsAre;

const TBytes kCount = RegisterData({1, 2, 3, 4, 5, 6, 7, 8});
const TBytes kTime = {0x12, 0x34, 0x56, 0x78};
// What the collector makes of a register; the walk looks at it only for narrow ones.
const TBytes kAny(14, 0);

class R8Walk : public TFollowedRun {
 protected:
  void PlansMemory(std::uint16_t instances = 1) {
    Add(Class(kVoMemory, instances).Register("A", 0x10, 8).Register("B", 0x20, 8));
    Plans({{kVoMemory}});
  }
  void SeesTimes() {
    Sees(Timestamp().Answers({0x12, 0x34, 0x56, 0x77}));
    Sees(Timestamp().Answers(kTime));
  }
};

TEST_F(R8Walk, ATimestampFollowsOnlyAGoodRegister) {
  PlansMemory(2);
  Sees(Register(0, 0x10).Fails(0xC3));
  Sees(Register(0, 0x20).Lost());
  Sees(Register(0, 0x10).Answers(kCount));
  Sees(Register(0, 0x20).Lost());
  SeesTimes();
  EXPECT_EQ(Commits(kVoMemory, {{"A", kAny}}),
            "VO_MEMCTL/node0/instance1, chip 0, time 12 34 56 78, A 000010 = 0807060504030201; missing B 000020 lost");
  EXPECT_THAT(Ends(),
              ElementsAre("6 exchanges", "failed register A 000010 node0 VO_MEMCTL/node0/instance0: code 195",
                          "failed register B 000020 node0 VO_MEMCTL/node0/instance0: lost",
                          "failed register B 000020 node0 VO_MEMCTL/node0/instance1: lost",
                          "unread VO_MEMCTL/node0/instance0 register-unread", "reason VO_MEMCTL register-unread 3"));
}

TEST_F(R8Walk, ThirteenBytesAreBad) {
  PlansMemory();
  Sees(Register(0, 0x10).Answers(TBytes(13, 1)));
  Sees(Register(0, 0x20).Answers(TBytes(14, 1)));
  SeesTimes();
  EXPECT_EQ(Commits(kVoMemory, {{"B", kAny}}),
            "VO_MEMCTL/node0/instance0, chip 0, time 12 34 56 78, B 000020 = 0101010101010101; missing A 000010 short "
            "13");
  EXPECT_THAT(Ends(), ElementsAre("4 exchanges", "failed register A 000010 node0 VO_MEMCTL/node0/instance0: short 13",
                                  "reason VO_MEMCTL register-unread 1"));
}

TEST_F(R8Walk, ARegisterChecksByteFiveWhateverTheLength) {
  PlansMemory();
  Sees(Register(0, 0x10).Answers(kCount).WithDataLength(13));
  Sees(Register(0, 0x20).Answers({0, 0, 0, 0, 0, 0, 7}).WithDataLength(14).WithLength(0));
  SeesTimes();
  EXPECT_EQ(Commits(kVoMemory, {{"B", kAny}}),
            "VO_MEMCTL/node0/instance0, chip 0, time 12 34 56 78, B 000020 = 0000000000000007; missing A 000010 short "
            "13");
}

TEST_F(R8Walk, ACompletionCodeCountsBeforeTheLength) {
  PlansMemory();
  Sees(Register(0, 0x10).Answers(kCount).WithCode(0xC1));
  Sees(Register(0, 0x20).Answers({}).WithCode(0xCB));
  EXPECT_THAT(Ends(), ElementsAre("2 exchanges", "failed register A 000010 node0 VO_MEMCTL/node0/instance0: code 193",
                                  "failed register B 000020 node0 VO_MEMCTL/node0/instance0: code 203",
                                  "unread VO_MEMCTL/node0/instance0 register-unread", "reason nothing-read 1",
                                  "reason VO_MEMCTL register-unread 1"));
}

TEST_F(R8Walk, ATimestampChecksTheLengthWhateverByteFive) {
  PlansMemory(4);
  const auto seesRegisters = [this] {
    Sees(Register(0, 0x10).Answers(kCount));
    Sees(Register(0, 0x20).Fails(0xCB));
  };
  seesRegisters();
  Sees(Timestamp().Answers({1, 2, 3}));
  seesRegisters();
  Sees(Timestamp().Answers(kTime).WithLength(12));
  seesRegisters();
  Sees(Timestamp().Answers({1, 2, 3}).WithLength(13));
  Sees(Timestamp().Answers({1, 2, 3}).WithLength(13));
  seesRegisters();
  Sees(Timestamp().Answers(kTime));
  Sees(Timestamp().Fails(0xC3));
  const std::string absent = "; missing B 000020 code 203";
  EXPECT_EQ(Commits(kVoMemory), "VO_MEMCTL/node0/instance0, chip 0" + absent + "; missing StatisticTime short 3");
  EXPECT_EQ(Commits(kVoMemory), "VO_MEMCTL/node0/instance1, chip 0" + absent + "; missing StatisticTime short 4");
  EXPECT_EQ(Commits(kVoMemory), "VO_MEMCTL/node0/instance2, chip 0, time 01 02 03 00" + absent);
  EXPECT_EQ(Commits(kVoMemory), "VO_MEMCTL/node0/instance3, chip 0" + absent + "; missing StatisticTime code 195");
  const auto lines = Ends();
  EXPECT_EQ(lines.front(), "14 exchanges");
  EXPECT_EQ(lines.back(), "reason VO_MEMCTL time-unread 3");
}

TEST_F(R8Walk, ATimeThatDoesNotExistIsNoReason) {
  PlansMemory();
  Sees(Register(0, 0x10).Answers(kCount));
  Sees(Register(0, 0x20).Answers(kCount));
  Sees(Timestamp().Fails(0xCB));
  EXPECT_EQ(Commits(kVoMemory), "VO_MEMCTL/node0/instance0, chip 0; missing StatisticTime code 203");
  EXPECT_THAT(Ends(), ElementsAre("3 exchanges", "failed timestamp node0 VO_MEMCTL/node0/instance0: code 203"));
}

TEST_F(R8Walk, AnInstanceWithoutAnyRegisterIsAbsent) {
  PlansMemory();
  Sees(Register(0, 0x10).Fails(0xCB));
  Sees(Register(0, 0x20).Fails(0xCB));
  EXPECT_THAT(Ends(), ElementsAre("2 exchanges", "failed register A 000010 node0 VO_MEMCTL/node0/instance0: code 203",
                                  "failed register B 000020 node0 VO_MEMCTL/node0/instance0: code 203",
                                  "unread VO_MEMCTL/node0/instance0 absent", "reason nothing-read 1"));
}

TEST_F(R8Walk, OfSeveralAddressesExactlyOneMustAnswer) {
  Add(Class(kVoMemory, 1)
          .Register("Both", {0x10, 0x11}, 8)
          .Register("Second", {0x20, 0x21}, 8)
          .Register("Absent", {0x30, 0x31}, 8)
          .Register("Neither", {0x40, 0x41}, 8));
  Plans({{kVoMemory}});
  Sees(Register(0, 0x10).Answers(kCount));
  Sees(Register(0, 0x11).Answers(kCount));
  Sees(Register(0, 0x20).Fails(0xC3));
  Sees(Register(0, 0x21).Answers(kCount));
  Sees(Register(0, 0x30).Fails(0xCB));
  Sees(Register(0, 0x31).Fails(0xCB));
  Sees(Register(0, 0x40).Fails(0xCB));
  Sees(Register(0, 0x41).Lost());
  SeesTimes();
  EXPECT_EQ(Commits(kVoMemory, {{"Second", kAny}}),
            "VO_MEMCTL/node0/instance0, chip 0, time 12 34 56 78, Second 000021 = 0807060504030201; missing Both "
            "000010 000011 answered 2; missing Absent 000030 000031 code 203; missing Neither 000040 000041 answered "
            "0");
  EXPECT_EQ(Ends().back(), "reason VO_MEMCTL register-unread 2");
}

TEST_F(R8Walk, TwoGoodAddressesAreNoValue) {
  Add(Class(kVoMemory, 1).Register("A", {0x10, 0x11}, 8));
  Plans({{kVoMemory}});
  Sees(Register(0, 0x10).Answers(kCount));
  Sees(Register(0, 0x11).Answers(kCount));
  EXPECT_THAT(Ends(), ElementsAre("2 exchanges", "unread VO_MEMCTL/node0/instance0 register-unread",
                                  "reason nothing-read 1", "reason VO_MEMCTL register-unread 1"));
}

TEST_F(R8Walk, ARegisterWithoutAnAddressIsUnread) {
  Add(Class(kVoMemory, 1)
          .Register("None", std::vector<std::uint32_t>(), 8)
          .Register("A", 0x10, 8)
          .Register("Last", std::vector<std::uint32_t>(), 8));
  Plans({{kVoMemory}});
  Sees(Register(0, 0x10).Answers(kCount));
  SeesTimes();
  EXPECT_EQ(Commits(kVoMemory, {{"A", kAny}}),
            "VO_MEMCTL/node0/instance0, chip 0, time 12 34 56 78, A 000010 = 0807060504030201; missing None answered "
            "0; missing Last answered 0");
  EXPECT_THAT(Ends(), ElementsAre("3 exchanges", "reason VO_MEMCTL register-unread 2"));
}

TEST_F(R8Walk, ARegisterWithoutAnAddressIsNotUnreadIfItsInstanceWasNeverAskedFor) {
  Add(Class(kVoMemory, 1).Register("None", std::vector<std::uint32_t>(), 8).Register("A", 0x10, 8));
  Plans({{kVoMemory}});
  EXPECT_THAT(Ends("it failed"), ElementsAre("0 exchanges", "unread VO_MEMCTL/node0/instance0 register-unread",
                                             "reason nothing-read 1", "reason VO_MEMCTL request-failed 1"));
}

TEST_F(R8Walk, AClassWithoutRegistersHasNoInstances) {
  Add(Class(kVoMemory, 2));
  Plans({{kVoMemory}});
  EXPECT_THAT(Ends(), ElementsAre("0 exchanges"));
}

TEST_F(R8Walk, NarrowRegistersHaveFourBytes) {
  Add(Class(kVoMemory, 1).Register("Count", 0x12ABCDEF, 4).Register("Ecc", 0x0C0118, 4).Register("Full", 0x0C0120, 4));
  Plans({{kVoMemory}});
  Sees(Register(0, 0xABCDEF).Answers(RegisterData({0x00, 0x01, 0, 0, 0, 0, 0, 0})));
  Sees(Register(0, 0x0C0118).Answers(RegisterData({0x18, 0x10, 0x2E, 0x2B, 0x45, 0x59, 0x7E, 0x76})));
  Sees(Register(0, 0x0C0120).Answers(RegisterData({0x20, 0x10, 0x2E, 0x13, 0x45, 0x59, 0x46, 0x76})));
  SeesTimes();
  EXPECT_EQ(Commits(kVoMemory, {{"Count", {0xAB, 0xCD, 0xEF, 0, 0, 1, 1, 0, 0, 0, 0xEF, 0xFE, 0xFE, 0xEF}},
                                {"Ecc", {0x0C, 1, 0x18, 0x2B, 0x2E, 0x10, 0x18, 0, 0, 0, 0xEF, 0xFE, 0xFE, 0xEF}},
                                {"Full", {0x0C, 1, 0x20, 0x13, 0x2E, 0x10, 0x30, 0, 0, 0, 0xEF, 0xFE, 0xFE, 0xEF}}}),
            "VO_MEMCTL/node0/instance0, chip 0, time 12 34 56 78, Count ABCDEF = 00000100 folded 00000101, Ecc 0C0118 "
            "= 2B2E1018 upper 767E5945, Full 0C0120 = 132E1020 upper 76465945 folded 132E1030");
}

TEST_F(R8Walk, ABridgeHasAChipForEachInstance) {
  Add(Class(kVoBridge, 257).Register("A", 0x10, 8));
  Plans({{kVoBridge}});
  for (int chip = 1; chip < 256; ++chip) Sees(Register(static_cast<std::uint8_t>(chip), 0x10).Fails(0xCB));
  Sees(Register(0, 0x10).Answers(kCount));
  SeesTimes();
  Sees(Register(1, 0x10).Fails(0xCB));
  EXPECT_EQ(Commits(kVoBridge, {{"A", kAny}}),
            "VO_PCIIOBRIDGE/node0/instance255, chip 0, time 12 34 56 78, A 000010 = 0807060504030201");
  EXPECT_EQ(Ends().front(), "259 exchanges");
}

TEST_F(R8Walk, ARegisterThatTheInstanceLacksIsLeftOut) {
  PlansMemory();
  Sees(Register(0, 0x10).Answers(kCount));
  Sees(Register(0, 0x20).Answers(kCount));
  SeesTimes();
  EXPECT_EQ(Commits(kVoMemory, {{"B", kAny}}),
            "VO_MEMCTL/node0/instance0, chip 0, time 12 34 56 78, B 000020 = 0807060504030201");
}

TEST_F(R8Walk, ARefusedExchangeIsMadeButNotAttempted) {
  PlansMemory();
  Sees(Register(0, 0x10).Answers(kCount));
  SeesRefused(Register(0, 0x20));
  SeesRefused(Timestamp());
  EXPECT_EQ(Commits(kVoMemory, {{"A", kAny}}),
            "VO_MEMCTL/node0/instance0, chip 0, A 000010 = 0807060504030201; missing B 000020 not sent; missing "
            "StatisticTime not sent");
  EXPECT_THAT(Ends(),
              ElementsAre("1 exchanges", "reason VO_MEMCTL register-unread 1", "reason VO_MEMCTL time-unread 1"));
}

TEST_F(R8Walk, WhatARecordingDoesNotHaveIsNamedSo) {
  PlansMemory();
  noAnswer = ENoAnswer::kNotRecorded;
  Sees(Register(0, 0x10).Answers(kCount));
  Sees(Register(0, 0x20).Lost());
  SeesTimes();
  EXPECT_EQ(Commits(kVoMemory), "VO_MEMCTL/node0/instance0, chip 0, time 12 34 56 78; missing B 000020 not recorded");
  EXPECT_THAT(Ends(),
              ElementsAre("4 exchanges", "failed register B 000020 node0 VO_MEMCTL/node0/instance0: not recorded",
                          "reason VO_MEMCTL register-unread 1"));
}

TEST_F(R8Walk, WithoutANodeTheReadsAreStillTheirs) {
  server.bmcNodes = 0;
  PlansMemory();
  Sees(Register(0, 0x10).Lost());
  Sees(Register(0, 0x20).Lost());
  EXPECT_THAT(Ends(), ElementsAre("2 exchanges", "failed register A 000010 node0 VO_MEMCTL/node0/instance0: lost",
                                  "failed register B 000020 node0 VO_MEMCTL/node0/instance0: lost",
                                  "reason nothing-read 1", "reason VO_MEMCTL not-served 1"));
}

}  // namespace
}  // namespace tests
