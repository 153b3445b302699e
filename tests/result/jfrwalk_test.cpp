// Classes whose registers are in register blocks: blocks that were received whole, in part, or not at all.
#include "host/result/jfrwalk.h"

#include <algorithm>

#include "tests/result/followedrun.h"

namespace tests {
namespace {

using testing::ElementsAre;

const TBytes kAny(14, 0);

// 2024-12-31 23:59:58 in one of the two copies of the header; zeros otherwise.
TBytes BlockWithHeaderAt(std::size_t copy) {
  TBytes block(4096, 0);
  const TBytes header = {0x00, 0x18, 0x0C, 0x1F, 0x17, 0x3B, 0x3A};
  std::copy(header.begin(), header.end(), block.begin() + static_cast<std::ptrdiff_t>(copy));
  return block;
}
TBytes Block() { return BlockWithHeaderAt(0); }

TBytes WithRecord(TBytes block, std::size_t offset) {
  const TBytes record = {0x0B, 0x00, 0x54, 0x00, 0x00, 0x00, 0x1A, 0x3F, 0x4C, 0x2E, 0x40};
  std::copy(record.begin(), record.end(), block.begin() + static_cast<std::ptrdiff_t>(offset));
  return block;
}
const std::string kRecordText = "A index 5 = 0000001A3F4C2E40 id 0B 00 54";
const std::string kZeroText = "A index 5 = 0000000000000000 id 00 00 00";

class JfrWalk : public TFollowedRun {
 protected:
  void PlansBlocks(int serviceProcessors, std::uint16_t instances = 1) {
    server.serviceProcessors = serviceProcessors;
    Add(Class(kBlockClass, instances).Record("A", 5));
    Plans({{kBlockClass}});
  }
  std::string CommitsBlock() { return Commits(kBlockClass, {{"A", kAny}}); }
};

// Record 5 of bank 0 is at 7 + 5 x 8, that of bank 1 at 7 + (5 + 256) x 8.
TEST_F(JfrWalk, RecordsFollowTheFirstHeader) {
  PlansBlocks(1, 2);
  Sees(DotBlock(0).Returns(WithRecord(Block(), 2095)));
  EXPECT_EQ(CommitsBlock(), "J/sp0/instance0, " + kZeroText);
  EXPECT_EQ(CommitsBlock(), "J/sp0/instance1, " + kRecordText);
  EXPECT_THAT(Ends(), ElementsAre("1 exchanges"));
}

// 5 x 8: the place of the second copy is not added.
TEST_F(JfrWalk, RecordsOfTheSecondHeaderBeginWithTheBlock) {
  PlansBlocks(1);
  Sees(DotBlock(0).Returns(WithRecord(BlockWithHeaderAt(2040), 40)));
  EXPECT_EQ(CommitsBlock(), "J/sp0/instance0, " + kRecordText);
}

TEST_F(JfrWalk, OnlyTheLowSixteenBitsOfALengthCount) {
  PlansBlocks(2);
  Sees(DotBlock(0).Returns(Block()).WithLength(65536));
  Sees(DotBlock(1).Returns(Block()).WithLength(65537));
  EXPECT_EQ(CommitsBlock(), "J/sp1/instance0, " + kZeroText);
  EXPECT_THAT(Ends(), ElementsAre("2 exchanges", "failed dot sp0: short 0", "unread J/sp0/instance0 block-unread",
                                  "reason J block-unread 1"));
}

TEST_F(JfrWalk, ABlockThatDidNotComeLeavesTheOthers) {
  PlansBlocks(3);
  Sees(DotBlock(0).Returns(Block()));
  Sees(DotBlock(1).Lost());
  Sees(DotBlock(2).Returns({}));
  EXPECT_EQ(CommitsBlock(), "J/sp0/instance0, " + kZeroText);
  EXPECT_THAT(Ends(), ElementsAre("3 exchanges", "failed dot sp1: lost", "failed dot sp2: short 0",
                                  "unread J/sp1/instance0 block-unread", "unread J/sp2/instance0 block-unread",
                                  "reason J block-unread 2"));
}

TEST_F(JfrWalk, ABlockWithoutAHeaderEmptiesTheList) {
  PlansBlocks(4, 2);
  Sees(DotBlock(0).Returns(Block()));
  Sees(DotBlock(1).Lost());
  Sees(DotBlock(2).Returns(TBytes(4096, 0)));
  Sees(DotBlock(3).Returns(WithRecord(Block(), 47)));
  EXPECT_EQ(CommitsBlock(), "J/sp3/instance0, " + kRecordText);
  EXPECT_EQ(CommitsBlock(), "J/sp3/instance1, " + kZeroText);
  EXPECT_THAT(Ends(), ElementsAre("4 exchanges", "failed dot sp1: lost", "unread J/sp0/instance0 discarded",
                                  "unread J/sp0/instance1 discarded", "unread J/sp1/instance0 block-unread",
                                  "unread J/sp1/instance1 block-unread", "unread J/sp2/instance0 block-undecodable",
                                  "unread J/sp2/instance1 block-undecodable", "reason J block-unread 1",
                                  "reason J block-undecodable 1"));
}

TEST_F(JfrWalk, ADayOrAMonthOfZeroIsNoHeader) {
  PlansBlocks(1);
  for (const std::size_t zero : {std::size_t{2}, std::size_t{3}}) {
    Plans({{kBlockClass}});
    TBytes block = Block();
    block[zero] = 0;
    Sees(DotBlock(0).Returns(block));
    EXPECT_EQ(Ends().at(1), "unread J/sp0/instance0 block-undecodable") << zero;
  }
}

TEST_F(JfrWalk, WithoutInstancesNobodyLooksAtTheHeader) {
  PlansBlocks(2, 0);
  Sees(DotBlock(0).Returns(TBytes(4096, 0)));
  Sees(DotBlock(1).Returns({1}));
  EXPECT_THAT(Ends(), ElementsAre("2 exchanges", "reason nothing-read 1"));
}

// The filler makes the header of a block of one byte valid: month and day are 48.
TEST_F(JfrWalk, ABlockOfOneByteHasAHeaderOfFiller) {
  PlansBlocks(1);
  Sees(DotBlock(0).Returns({0x00}));
  EXPECT_EQ(CommitsBlock(), "J/sp0/instance0; missing A index 5 short 0; missing StatisticTime short 1");
  EXPECT_THAT(Ends(), ElementsAre("1 exchanges", "failed dot sp0: short 1", "reason J block-short 1"));
}

// The record of register 5 is bytes 47 to 57.
TEST_F(JfrWalk, EveryLengthOfABlock) {
  PlansBlocks(1);
  const TBytes block = WithRecord(Block(), 47);
  for (std::size_t size = 1; size <= block.size(); ++size) {
    SCOPED_TRACE(size);
    Plans({{kBlockClass}});
    Sees(DotBlock(0).Returns(TBytes(block.begin(), block.begin() + static_cast<std::ptrdiff_t>(size))));
    std::string expected = "J/sp0/instance0";
    if (size >= 58) {
      expected += ", " + kRecordText;
    } else {
      expected += "; missing A index 5 short " + std::to_string(size > 47 ? size - 47 : 0);
    }
    if (size < 7) expected += "; missing StatisticTime short " + std::to_string(size);
    EXPECT_EQ(CommitsBlock(), expected);
    EXPECT_EQ(Ends().size(), size >= 58 ? 1U : 3U);
    if (HasFailure()) return;
  }
}

// The second header is bytes 2040 to 2046. Cut before its month, filler takes its place, the first one's zeros stay.
TEST_F(JfrWalk, EveryLengthAroundTheSecondHeader) {
  PlansBlocks(1);
  const TBytes block = WithRecord(BlockWithHeaderAt(2040), 40);
  for (std::size_t size = 2030; size < 2060; ++size) {
    SCOPED_TRACE(size);
    Plans({{kBlockClass}});
    Sees(DotBlock(0).Returns(TBytes(block.begin(), block.begin() + static_cast<std::ptrdiff_t>(size))));
    const std::size_t came = size < 2040 ? 0 : size - 2040;
    EXPECT_EQ(CommitsBlock(), "J/sp0/instance0, " + kRecordText +
                                  (size < 2047 ? "; missing StatisticTime short " + std::to_string(came) : ""));
    EXPECT_EQ(Ends().size(), size < 2047 ? 3U : 1U);
    if (HasFailure()) return;
  }
}

TEST_F(JfrWalk, AShortBlockThatIsDroppedLaterWasShortAllTheSame) {
  PlansBlocks(2);
  Sees(DotBlock(0).Returns({0x00}));
  Sees(DotBlock(1).Returns(TBytes(4096, 0)));
  EXPECT_THAT(Ends(), ElementsAre("2 exchanges", "failed dot sp0: short 1", "unread J/sp0/instance0 discarded",
                                  "unread J/sp1/instance0 block-undecodable", "reason nothing-read 1",
                                  "reason J block-short 1", "reason J block-undecodable 1"));
}

TEST_F(JfrWalk, WithoutCommunicationNoBlockIsAskedFor) {
  server.communicates = false;
  PlansBlocks(2, 2);
  EXPECT_THAT(Ends(), ElementsAre("0 exchanges", "unread J/sp0/instance0 block-unread",
                                  "unread J/sp0/instance1 block-unread", "unread J/sp1/instance0 block-unread",
                                  "unread J/sp1/instance1 block-unread", "reason J block-unread 2"));
}

TEST_F(JfrWalk, WithoutDotCommandsTheClassIsNotServed) {
  server.dotCommands = false;
  PlansBlocks(2);
  EXPECT_THAT(Ends(), ElementsAre("0 exchanges", "reason J not-served 1"));
}

TEST_F(JfrWalk, OfThreeHundredServiceProcessorsFortyFourAreAsked) {
  PlansBlocks(300);
  for (int i = 0; i < 44; ++i) Sees(DotBlock(i).Lost());
  const auto lines = Ends();
  EXPECT_EQ(lines.front(), "44 exchanges");
  EXPECT_EQ(lines.back(), "reason J block-unread 44");
  EXPECT_EQ(lines.size(), 1U + 44U + 44U + 2U) << "failures, instances, nothing-read";
}

}  // namespace
}  // namespace tests
