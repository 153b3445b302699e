// Capture files: the reads of each size, and what every answer leads to.
#include "host/result/capturewalk.h"

#include <limits>

#include "tests/result/followedrun.h"

namespace tests {
namespace {

using testing::ElementsAre;

const TBytes kHandle = {7, 0, 0, 1};
const TBytes kTen(10, 0xAA);

// One node, so that the files are cpu_err, ioh_err and zyn_err.
class CaptureWalk : public TFollowedRun {
 protected:
  CaptureWalk() { Add(TClassBuilder(kFileClass).CaptureProperties()); }

  void PlansFiles() { Plans({{kFileClass}}); }
  void Opens(const std::string& name, std::int32_t size) {
    Sees(Open(name).Answers(OemData(kHandle)));
    Sees(Size(name).Answers(SizeData(size)));
  }
  void Reads(std::uint32_t offset, std::uint8_t count, const TBytes& bytes) {
    Sees(Read(kHandle, offset, count).Answers(ReadData(bytes)));
  }
  void Closes() { Sees(Close(kHandle).Answers(OemData({}))); }
  void SeesNoFile(const std::string& name) { Sees(Open(name).Fails(0xCB)); }
  std::string CommitsFile() { return Commits(kFileClass); }
  /// The run ends after two files that do not exist; what the reasons has about the first one.
  std::vector<std::string> EndsAfterOne() {
    SeesNoFile("ioh_err");
    SeesNoFile("zyn_err");
    std::vector<std::string> lines;
    for (const std::string& line : Ends()) {
      const bool isOther = line.find("ioh_err") != std::string::npos || line.find("zyn_err") != std::string::npos;
      if (!isOther) lines.push_back(line);
    }
    return lines;
  }
};

TEST_F(CaptureWalk, TwentyFiveBytesAreReadsOfTenTenAndFive) {
  PlansFiles();
  Opens("cpu_err", 25);
  Reads(0, 10, kTen);
  Reads(10, 10, kTen);
  Reads(20, 5, {1, 2, 3, 4, 5});
  Closes();
  EXPECT_EQ(CommitsFile(), "DCAPFile/node0/cpu_err, cpu_err 25 of 25");
  EXPECT_THAT(EndsAfterOne(), ElementsAre("8 exchanges"));
}

TEST_F(CaptureWalk, ReadsOfEachSize) {
  struct TCase {
    std::int32_t size;
    std::vector<int> chunks;
  };
  for (const TCase& one : {TCase{0, {10}}, TCase{1, {10}}, TCase{9, {10}}, TCase{10, {10}}, TCase{11, {10, 1}},
                           TCase{19, {10, 9}}, TCase{20, {10, 10}}, TCase{21, {10, 10, 1}}}) {
    SCOPED_TRACE(one.size);
    PlansFiles();
    Opens("cpu_err", one.size);
    std::uint32_t offset = 0;
    for (const int chunk : one.chunks) {
      const auto left = static_cast<std::size_t>(one.size) - offset;
      Reads(offset, static_cast<std::uint8_t>(chunk), TBytes(std::min<std::size_t>(left, 10), 1));
      offset += 10;
    }
    Closes();
    const std::string bytes = std::to_string(one.size);
    EXPECT_EQ(CommitsFile(), "DCAPFile/node0/cpu_err, cpu_err " + bytes + " of " + bytes);
    EXPECT_EQ(EndsAfterOne().size(), 1U);
  }
}

TEST_F(CaptureWalk, ANegativeSizeIsClosedWithoutAnInstance) {
  PlansFiles();
  Opens("cpu_err", -1);
  Closes();
  EXPECT_THAT(EndsAfterOne(),
              ElementsAre("5 exchanges", "unread DCAPFile/node0/cpu_err file-unread", "reason DCAPFile file-unread 1"));
}

TEST_F(CaptureWalk, ARefusedSizeIsNotEvenClosed) {
  PlansFiles();
  Sees(Open("cpu_err").Answers(OemData(kHandle)));
  Sees(Size("cpu_err").Fails(0xCB));
  EXPECT_THAT(EndsAfterOne(),
              ElementsAre("4 exchanges", "failed size node0 DCAPFile/node0/cpu_err: code 203",
                          "unread DCAPFile/node0/cpu_err file-unread", "reason DCAPFile file-unread 1"));
}

TEST_F(CaptureWalk, ASizeOverTheLimitIsNotEvenClosed) {
  PlansFiles();
  Opens("cpu_err", std::numeric_limits<std::int32_t>::max());
  SeesSizeRefused();
  EXPECT_THAT(EndsAfterOne(),
              ElementsAre("4 exchanges", "unread DCAPFile/node0/cpu_err file-unread", "reason DCAPFile file-unread 1"));
  EXPECT_EQ(MessageOf(EReason::kFileUnread), "1 of 3 capture files is missing or incomplete; too large");
}

TEST_F(CaptureWalk, ACloseInPlaceOfTheFirstReadMeansNoMemory) {
  PlansFiles();
  Opens("cpu_err", 5);
  Closes();
  EXPECT_THAT(EndsAfterOne(),
              ElementsAre("5 exchanges", "unread DCAPFile/node0/cpu_err file-unread", "reason DCAPFile file-unread 1"));
}

TEST_F(CaptureWalk, ACloseInPlaceOfALaterReadIsNotPlanned) {
  PlansFiles();
  Opens("cpu_err", 20);
  Reads(0, 10, kTen);
  Closes();
  EXPECT_EQ(CommitsFile(), "DCAPFile/?1");
}

TEST_F(CaptureWalk, TheNextFileBeforeTheCommitIsNotPlanned) {
  PlansFiles();
  Opens("cpu_err", 1);
  Reads(0, 10, {1});
  Closes();
  SeesNoFile("ioh_err");
  EXPECT_EQ(CommitsFile(), "DCAPFile/?1");
}

TEST_F(CaptureWalk, ARefusedReadEndsTheReads) {
  PlansFiles();
  Opens("cpu_err", 25);
  Reads(0, 10, kTen);
  Sees(Read(kHandle, 10, 10).Fails(0xC3));
  Closes();
  EXPECT_EQ(CommitsFile(), "DCAPFile/node0/cpu_err, cpu_err 10 of 25; missing ErrRawData offset 10 code 195; cut");
  EXPECT_THAT(EndsAfterOne(), ElementsAre("7 exchanges", "failed read node0 DCAPFile/node0/cpu_err: code 195",
                                          "reason DCAPFile file-unread 1"));
}

TEST_F(CaptureWalk, ALostReadEndsTheReads) {
  PlansFiles();
  Opens("cpu_err", 25);
  Sees(Read(kHandle, 0, 10).Lost());
  Closes();
  EXPECT_EQ(CommitsFile(), "DCAPFile/node0/cpu_err, cpu_err 0 of 25; missing ErrRawData offset 0 lost; cut");
}

TEST_F(CaptureWalk, NothingIsMissingFromAnEmptyFile) {
  PlansFiles();
  Opens("cpu_err", 0);
  Sees(Read(kHandle, 0, 10).Fails(0xC3));
  Closes();
  EXPECT_EQ(CommitsFile(), "DCAPFile/node0/cpu_err, cpu_err 0 of 0; cut");
  EXPECT_THAT(EndsAfterOne(), ElementsAre("6 exchanges", "failed read node0 DCAPFile/node0/cpu_err: code 195"));
}

TEST_F(CaptureWalk, AnAreaThatIsAbsentAfterItsOpenIsIncomplete) {
  PlansFiles();
  Opens("cpu_err", 25);
  Sees(Read(kHandle, 0, 10).Fails(0xCB));
  Closes();
  EXPECT_EQ(CommitsFile(), "DCAPFile/node0/cpu_err, cpu_err 0 of 25; missing ErrRawData offset 0 code 203; cut");
  EXPECT_EQ(EndsAfterOne().back(), "reason DCAPFile file-unread 1");
}

TEST_F(CaptureWalk, AShortReadDoesNotEndTheReads) {
  PlansFiles();
  Opens("cpu_err", 25);
  Reads(0, 10, {1, 2, 3});
  Reads(10, 10, kTen);
  Reads(20, 5, {});
  Closes();
  EXPECT_EQ(CommitsFile(), "DCAPFile/node0/cpu_err, cpu_err 13 of 25; missing ErrRawData offset 3 short 3; cut");
  EXPECT_THAT(EndsAfterOne(),
              ElementsAre("8 exchanges", "failed read node0 DCAPFile/node0/cpu_err: short 3",
                          "failed read node0 DCAPFile/node0/cpu_err: short 0", "reason DCAPFile file-unread 1"));
}

TEST_F(CaptureWalk, EqualFailuresOfOneFileAreOne) {
  PlansFiles();
  Opens("cpu_err", 30);
  for (const std::uint32_t offset : {0U, 10U, 20U}) Reads(offset, 10, {});
  Closes();
  CommitsFile();
  EXPECT_EQ(EndsAfterOne().at(1), "failed read node0 DCAPFile/node0/cpu_err: short 0 x3");
}

// The data length, the count field and the request each limit what a read brought.
TEST_F(CaptureWalk, AReadBringsWhatAllItsLengthsAllow) {
  PlansFiles();
  Opens("cpu_err", 30);
  Sees(Read(kHandle, 0, 10).Answers(OemData({4, 0}) + kTen));
  Sees(Read(kHandle, 10, 10).Answers(OemData({10, 0}) + kTen).WithDataLength(11));
  Sees(Read(kHandle, 20, 10).Answers(OemData({11, 0}) + TBytes(11, 0xAA)));
  Closes();
  EXPECT_EQ(CommitsFile(), "DCAPFile/node0/cpu_err, cpu_err 20 of 30; missing ErrRawData offset 4 short 4; cut");
  const auto lines = EndsAfterOne();
  EXPECT_EQ(lines.at(1), "failed read node0 DCAPFile/node0/cpu_err: short 4");
  EXPECT_EQ(lines.at(2), "failed read node0 DCAPFile/node0/cpu_err: short 6");
}

TEST_F(CaptureWalk, EveryLengthOfAReadsAnswer) {
  const TBytes whole = OemData({10, 0}) + kTen;
  for (std::size_t size = 0; size <= whole.size(); ++size) {
    SCOPED_TRACE(size);
    PlansFiles();
    Opens("cpu_err", 10);
    Sees(Read(kHandle, 0, 10).Answers(TBytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size))));
    Closes();
    const std::string came = std::to_string(size > 5 ? size - 5 : 0);
    EXPECT_EQ(CommitsFile(), "DCAPFile/node0/cpu_err, cpu_err " + came + " of 10" +
                                 (size < 15 ? "; missing ErrRawData offset " + came + " short " + came + "; cut" : ""));
  }
}

// The collector takes what there is of a cut answer, with zeros after it.
TEST_F(CaptureWalk, ACutOpenOrSizeIsTaken) {
  PlansFiles();
  Sees(Open("cpu_err").Answers({0x39}));
  Sees(Size("cpu_err").Answers({0x39, 0x30, 0x00, 0x0B}));
  Sees(Read({0, 0, 0, 0}, 0, 10).Answers(ReadData(kTen)));
  Sees(Read({0, 0, 0, 0}, 10, 1).Answers(ReadData({1})));
  Sees(Close({0, 0, 0, 0}).Fails(0xCB));
  EXPECT_EQ(CommitsFile(), "DCAPFile/node0/cpu_err, cpu_err 11 of 11");
  EXPECT_THAT(EndsAfterOne(), ElementsAre("7 exchanges", "failed close node0 DCAPFile/node0/cpu_err: code 203"));
}

TEST_F(CaptureWalk, OnlyTwoCodesOfAnOpenMeanAbsent) {
  PlansFiles();
  Sees(Open("cpu_err").Fails(0xCB));
  Sees(Open("ioh_err").Fails(0xC1));
  Sees(Open("zyn_err").Fails(0xC3));
  EXPECT_THAT(Ends(), ElementsAre("3 exchanges", "failed open node0 DCAPFile/node0/cpu_err: code 203",
                                  "failed open node0 DCAPFile/node0/ioh_err: code 193",
                                  "failed open node0 DCAPFile/node0/zyn_err: code 195",
                                  "unread DCAPFile/node0/cpu_err absent", "unread DCAPFile/node0/ioh_err absent",
                                  "unread DCAPFile/node0/zyn_err file-unread", "reason DCAPFile file-unread 1"));
}

TEST_F(CaptureWalk, EachAreaIsReadFromAllNodes) {
  server.bmcNodes = 2;
  PlansFiles();
  for (const char* area : {"cpu_err", "ioh_err", "zyn_err"}) {
    Sees(Open(area, 0).Lost());
    Sees(Open(area, 1).Fails(0xCB));
  }
  EXPECT_THAT(Ends(), ElementsAre("6 exchanges", "failed open node0 DCAPFile/node0/cpu_err: lost",
                                  "failed open node1 DCAPFile/node1/cpu_err: code 203",
                                  "failed open node0 DCAPFile/node0/ioh_err: lost",
                                  "failed open node1 DCAPFile/node1/ioh_err: code 203",
                                  "failed open node0 DCAPFile/node0/zyn_err: lost",
                                  "failed open node1 DCAPFile/node1/zyn_err: code 203",
                                  "unread DCAPFile/node0/cpu_err file-unread", "unread DCAPFile/node1/cpu_err absent",
                                  "unread DCAPFile/node0/ioh_err file-unread", "unread DCAPFile/node1/ioh_err absent",
                                  "unread DCAPFile/node0/zyn_err file-unread", "unread DCAPFile/node1/zyn_err absent",
                                  "reason DCAPFile file-unread 3"));
}

TEST_F(CaptureWalk, WithoutADriverNothingIsOpened) {
  server.ipmiDriver = false;
  PlansFiles();
  EXPECT_THAT(Ends(), ElementsAre("0 exchanges", "unread DCAPFile/node0/cpu_err file-unread",
                                  "unread DCAPFile/node0/ioh_err file-unread",
                                  "unread DCAPFile/node0/zyn_err file-unread", "reason DCAPFile file-unread 3"));
}

TEST_F(CaptureWalk, WithoutANodeTheClassIsNotServed) {
  for (const int nodes : {0, -1}) {
    server.bmcNodes = nodes;
    PlansFiles();
    EXPECT_THAT(Ends(), ElementsAre("0 exchanges", "reason DCAPFile not-served 1"));
  }
}

}  // namespace
}  // namespace tests
