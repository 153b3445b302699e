// Reading one capture file from every node.
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <limits>

#include "nkrovel20/tvelexception.h"
#include "tests/support/namespaces.h"
#include "tests/support/plugintest.h"

namespace tests {
namespace {

const TBytes kHandle = {1, 0, 0, 0};
const TLine kEnter = Debug("Enter ReadErrFFDC funtion");
const TLine kExit = Debug("Exit ReadErrFFDC funtion");

class FfdcReader : public TPluginTest {
 protected:
  FfdcReader() {
    AddCaptureClass();
    plugin.Init();
    logger.Clear();
  }
  void OpenAndSize(int size, int node = 0, const std::string& name = "cpu_err") {
    sp.Expect(Open(name, node).Answers(OemData(kHandle)));
    sp.Expect(Size(name, node).Answers(SizeData(size)));
  }
  // A file of ten bytes, all of them `byte`.
  void ExpectFile(std::uint8_t byte, int node = 0, const std::string& name = "cpu_err") {
    OpenAndSize(10, node, name);
    sp.Expect(Read(kHandle, 0, 10, node).Answers(ReadData(TBytes(10, byte))));
    sp.Expect(Close(kHandle, node).Answers(OemData({})));
  }
  std::string Text(std::size_t i, const std::string& property) const { return TextOf(*committed.at(i), property); }
};

TEST_F(FfdcReader, WithoutNodesItSaysSoAndDoesNotCheckTheDriver) {
  sp.nodes = 0;
  plugin.ReadErrFFDC(ns, "cpu_err");
  EXPECT_EQ(logger.Lines(),
            (std::vector<TLine>{kEnter, Status("No eQT/BMC on the system. TORGA log is not available.")}));
  EXPECT_EQ(sp.Discoveries(), 1);
}

TEST_F(FfdcReader, WithoutADriverItSaysSo) {
  sp.driverPresent = false;
  plugin.ReadErrFFDC(ns, "cpu_err");
  EXPECT_EQ(
      logger.Lines(),
      (std::vector<TLine>{kEnter, Debug("IPMI driver is not installed on the system. TORGA log is not available.")}));
  EXPECT_EQ(sp.Discoveries(), 2);
}

TEST_F(FfdcReader, ANegativeNodeCountReadsNothing) {
  sp.nodes = -3;
  plugin.ReadErrFFDC(ns, "cpu_err");
  EXPECT_EQ(logger.Lines(), (std::vector<TLine>{kEnter, kExit}));
}

TEST_F(FfdcReader, EveryNodeGivesItsOwnInstance) {
  sp.nodes = 2;
  ExpectFile(0x11, 0);
  ExpectFile(0x22, 1);
  plugin.ReadErrFFDC(ns, "cpu_err");
  ASSERT_EQ(committed.size(), 2U);
  EXPECT_EQ(Text(0, "ErrRawData"), "11 11 11 11 11 11 11 11 11 11 ");
  EXPECT_EQ(Text(1, "ErrRawData"), "22 22 22 22 22 22 22 22 22 22 ");
  EXPECT_EQ(Text(0, "SourceNode"), "1");
  EXPECT_EQ(Text(1, "SourceNode"), "2");
  EXPECT_EQ(Text(0, "RecordID"), "0");
  EXPECT_EQ(Text(1, "RecordID"), "1");
  EXPECT_EQ(logger.StartingWith("The system has"), (std::vector<TLine>{Debug("The system has2 . Now reading Node0"),
                                                                       Debug("The system has2 . Now reading Node1")}));
  EXPECT_EQ(logger.Lines().back(), kExit);
}

TEST_F(FfdcReader, AllAreasOfANodeShareItsNumber) {
  for (const char* const name : {"cpu_err", "ioh_err", "zyn_err"}) {
    ExpectFile(0, 0, name);
    plugin.ReadErrFFDC(ns, name);
    EXPECT_EQ(TextOf(*committed.back(), "FileName"), name);
    EXPECT_EQ(TextOf(*committed.back(), "SourceNode"), "1");
  }
}

TEST_F(FfdcReader, ANodeThatCannotOpenIsSkipped) {
  sp.nodes = 3;
  ExpectFile(1, 0);
  sp.Expect(Open("cpu_err", 1).Fails(0xCB));
  ExpectFile(3, 2);
  plugin.ReadErrFFDC(ns, "cpu_err");
  ASSERT_EQ(committed.size(), 2U);
  EXPECT_EQ(Text(1, "SourceNode"), "3");
  EXPECT_EQ(logger.Count(Debug("Error when opening files. Exit.")), 1U);
}

TEST_F(FfdcReader, ANodeWhoseSizeFailsIsSkippedWithoutAMessageAndStaysOpen) {
  sp.nodes = 2;
  sp.Expect(Open("cpu_err", 0).Answers(OemData(kHandle)));
  sp.Expect(Size("cpu_err", 0).Fails(0xCB));
  ExpectFile(2, 1);
  plugin.ReadErrFFDC(ns, "cpu_err");
  ASSERT_EQ(committed.size(), 1U);
  EXPECT_EQ(Text(0, "SourceNode"), "2");
  // After the line of the failed query, the next node follows.
  const auto& lines = logger.Lines();
  EXPECT_EQ(lines.at(5), Debug("Enter QueryStorageAreaSize funtion"));
  EXPECT_EQ(lines.at(7), Debug("The system has2 . Now reading Node1"));
}

TEST_F(FfdcReader, AnEmptyFileIsReadAsTenBytes) {
  OpenAndSize(0);
  sp.Expect(Read(kHandle, 0, 10).Answers(ReadData({1, 2, 3, 4, 5, 6, 7, 8, 9, 10})));
  sp.Expect(Close(kHandle));
  plugin.ReadErrFFDC(ns, "cpu_err");
  EXPECT_EQ(Text(0, "ErrRawData"), "01 02 03 04 05 06 07 08 09 0a ");
}

TEST_F(FfdcReader, AFileOfFewerThanTenBytesIsReadAsTenToo) {
  for (const int size : {1, 5, 9}) {
    committed.clear();
    OpenAndSize(size);
    sp.Expect(Read(kHandle, 0, 10).Answers(ReadData({1, 2, 3, 4, 5, 6, 7, 8, 9, 10})));
    sp.Expect(Close(kHandle));
    plugin.ReadErrFFDC(ns, "cpu_err");
    EXPECT_EQ(Text(0, "ErrRawData"), "01 02 03 04 05 06 07 08 09 0a ") << size;
  }
}

TEST_F(FfdcReader, AShortReadStillMakesAnInstance) {
  OpenAndSize(25);
  sp.Expect(Read(kHandle, 0, 10).Answers(ReadData(TBytes(10, 0xEE))));
  sp.Expect(Read(kHandle, 10, 10).Fails(0xC9));
  sp.Expect(Close(kHandle));
  plugin.ReadErrFFDC(ns, "cpu_err");
  EXPECT_EQ(Text(0, "ErrRawData"), "ee ee ee ee ee ee ee ee ee ee ");
}

TEST_F(FfdcReader, AReadThatFailsAtOnceMakesAnEmptyInstance) {
  OpenAndSize(25);
  sp.Expect(Read(kHandle, 0, 10).Lost());
  sp.Expect(Close(kHandle));
  plugin.ReadErrFFDC(ns, "cpu_err");
  ASSERT_EQ(committed.size(), 1U);
  EXPECT_EQ(Text(0, "ErrRawData"), "");
}

TEST_F(FfdcReader, AnImpossibleSizeSkipsTheNode) {
  sp.nodes = 2;
  for (const int size : {-1, -1000000, std::numeric_limits<int>::min()}) {
    committed.clear();
    logger.Clear();
    OpenAndSize(size, 0);
    sp.Expect(Close(kHandle, 0).Answers(OemData({})));
    ExpectFile(5, 1);
    plugin.ReadErrFFDC(ns, "cpu_err");
    ASSERT_EQ(committed.size(), 1U);
    EXPECT_EQ(Text(0, "SourceNode"), "2");
    const auto& lines = logger.Lines();
    // Entry, node, 3 lines of open, 4 of query, 4 of close, then the line.
    EXPECT_EQ(lines.at(9), Debug("Enter CloseStorageArea funtion"));
    EXPECT_EQ(lines.at(13), Debug("Unable to allocate memory for the storage area."));
    EXPECT_EQ(lines.at(14), Debug("The system has2 . Now reading Node1"));
  }
}

#ifndef VELHOST_SANITIZED  // a sanitizer needs more address space than this limit allows
TEST_F(FfdcReader, ASizeTooLargeForMemorySkipsTheNode) {
  rlimit before = {};
  ASSERT_EQ(getrlimit(RLIMIT_AS, &before), 0);
  rlimit small = before;
  small.rlim_cur = 1U << 30U;  // 1 GiB, for a file of 2 GiB
  ASSERT_EQ(setrlimit(RLIMIT_AS, &small), 0);
  OpenAndSize(std::numeric_limits<int>::max());
  sp.Expect(Close(kHandle));
  plugin.ReadErrFFDC(ns, "cpu_err");
  setrlimit(RLIMIT_AS, &before);
  EXPECT_TRUE(committed.empty());
  EXPECT_EQ(logger.Count(Debug("Unable to allocate memory for the storage area.")), 1U);
  EXPECT_EQ(logger.Lines().back(), kExit);
}
#endif

TEST_F(FfdcReader, TheLargestSizeIsReadAsFarAsItGoes) {
  OpenAndSize(std::numeric_limits<int>::max());
  sp.Expect(Read(kHandle, 0, 10).Answers(ReadData(TBytes(10, 1))));
  sp.Expect(Read(kHandle, 10, 10).Fails(0xC9));
  sp.Expect(Close(kHandle));
  plugin.ReadErrFFDC(ns, "cpu_err");
  EXPECT_EQ(Text(0, "ErrRawData"), "01 01 01 01 01 01 01 01 01 01 ");
}

TEST_F(FfdcReader, TheAreaIsClosedBeforeTheInstanceIsBuilt) {
  ns->SetCommitCallback([](const boost::shared_ptr<const TInstance>&) { throw TVELException(1); });
  sp.nodes = 2;
  ExpectFile(1, 0);
  EXPECT_THROW(plugin.ReadErrFFDC(ns, "cpu_err"), TVELException);
  EXPECT_EQ(sp.StepsLeft(), 0U) << "the close went out, and node 1 is not read";
  EXPECT_EQ(logger.Count(Debug("close file successfully")), 1U);
}

TEST_F(FfdcReader, ALongNameIsTruncatedOnTheWireAndCompleteInTheInstance) {
  const std::string name = "a_name_of_more_than_25_bytes";  // 28 characters, so byte 5 is 40 and 32
  TStep open = Open(name.substr(0, 25));
  TStep size = Size(name.substr(0, 25));
  open.request[5] = 40;
  size.request[5] = 32;
  sp.Expect({open.Answers(OemData(kHandle)), size.Answers(SizeData(10)),
             Read(kHandle, 0, 10).Answers(ReadData(TBytes(10, 0))), Close(kHandle)});
  plugin.ReadErrFFDC(ns, name);
  EXPECT_EQ(Text(0, "FileName"), name);
}

}  // namespace
}  // namespace tests
