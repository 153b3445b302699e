// Committing a capture file as an instance.
#include <gtest/gtest.h>

#include "host/model/failures.h"
#include "nkrovel20/tvelexception.h"
#include "tests/support/hostprobe.h"
#include "tests/support/namespaces.h"
#include "tests/support/plugintest.h"

namespace tests {
namespace {

class CaptureFile : public TPluginTest {
 protected:
  CaptureFile() {
    AddCaptureClass();
    plugin.Init();
    logger.Clear();
  }
  void Add(TBytes bytes, const std::string& name = "cpu_err", int node = 0) {
    const int length = static_cast<int>(bytes.size());
    plugin.AddErrFFDCinstance(ns, bytes.data(), length, name, node);
  }
  std::string Last(const std::string& property) const { return TextOf(*committed.back(), property); }
};

TEST_F(CaptureFile, HasItsEightProperties) {
  environment.localTime = TCIMDateTime(2026, 1, 31, 12, 34, 56, 789, 60);
  Add({0x0A, 0xFF, 0x00}, "ioh_err", 1);
  ASSERT_EQ(committed.size(), 1U);
  EXPECT_EQ(committed[0]->Class().Name(), "KROSG_DCAPFile");
  EXPECT_EQ(Last("FileName"), "ioh_err");
  EXPECT_EQ(Last("ErrRawData"), "0a ff 00 ");
  EXPECT_EQ(Last("MessageTimestamp"), "20260131123456.000789+060");
  EXPECT_EQ(Last("SourceNode"), "2");
  EXPECT_EQ(Last("CreationClassName"), "KROSG_DCAPFile");
  EXPECT_EQ(Last("LogCreationClassName"), "KROSG_DCAPFile");
  EXPECT_EQ(Last("LogName"), "KROSG_DCAPFile");
  EXPECT_EQ(Last("RecordID"), "0");
}

TEST_F(CaptureFile, LogsItsTrace) {
  Add({0x0A, 0xFF, 0x00});
  EXPECT_EQ(logger.Lines(), (std::vector<TLine>{Debug("Enter AddErrFFDCinstance funtion"),
                                                Debug("Data added into KROSG_DCAPFile class:0a ff 00 "),
                                                Debug("Exit AddErrFFDCinstance funtion")}));
}

TEST_F(CaptureFile, AnEmptyFileHasEmptyRawData) {
  for (const int length : {0, -1}) {
    logger.Clear();
    unsigned char byte = 0xAA;
    plugin.AddErrFFDCinstance(ns, &byte, length, "cpu_err", 0);
    EXPECT_EQ(Last("ErrRawData"), "");
    EXPECT_EQ(logger.Lines()[1], Debug("Data added into KROSG_DCAPFile class:"));
  }
}

TEST_F(CaptureFile, TheTextOverloadKeepsTheTextAndLogsNoDataLine) {
  plugin.AddErrFFDCinstance(ns, std::string("as it is\n"), -5, "zyn_err", 9);
  EXPECT_EQ(Last("ErrRawData"), "as it is\n");
  EXPECT_EQ(Last("FileName"), "zyn_err");
  EXPECT_EQ(Last("SourceNode"), "10");
  EXPECT_EQ(Last("RecordID"), "0");
  EXPECT_EQ(logger.Lines(),
            (std::vector<TLine>{Debug("Enter AddErrFFDCinstance funtion"), Debug("Exit AddErrFFDCinstance funtion")}));
}

TEST_F(CaptureFile, NodeNumbersOfEveryWidthAreComplete) {
  const std::vector<std::pair<int, std::string>> nodes = {
      {8, "9"}, {9, "10"}, {-1, "0"}, {-2, "-1"}, {2147483646, "2147483647"}, {-2147483647 - 1, "-2147483647"}};
  for (const auto& [node, text] : nodes) {
    Add({}, "cpu_err", node);
    EXPECT_EQ(Last("SourceNode"), text);
  }
}

TEST_F(CaptureFile, BothOverloadsShareTheCounter) {
  Add({1});
  plugin.AddErrFFDCinstance(ns, std::string("x"), 1, "cpu_err", 0);
  Add({2});
  ASSERT_EQ(committed.size(), 3U);
  for (std::size_t i = 0; i < 3; ++i) EXPECT_EQ(TextOf(*committed[i], "RecordID"), std::to_string(i));
}

TEST_F(CaptureFile, OnlyInitRestartsTheCounter) {
  Add({1});
  plugin.DeInit();
  Add({1});
  EXPECT_EQ(Last("RecordID"), "1");
  plugin.Init();
  Add({1});
  EXPECT_EQ(Last("RecordID"), "0");
}

TEST_F(CaptureFile, TheClockIsReadOnceAndFirst) {
  logger.FailAt("Enter AddErrFFDCinstance funtion");
  EXPECT_THROW(Add({1}), std::runtime_error);
  EXPECT_EQ(environment.clockReadings, 1);
  logger.FailAt("(none)");
  Add({1});
  EXPECT_EQ(environment.clockReadings, 2);
}

TEST_F(CaptureFile, AMissingClassAssertsAfterTheDataLine) {
  const auto bare = TNamespace::Create();
  unsigned char byte = 0x7F;
  EXPECT_THROW(plugin.AddErrFFDCinstance(bare, &byte, 1, "cpu_err", 0), TAssertionFailure);
  EXPECT_EQ(logger.Lines().back(), Debug("Data added into KROSG_DCAPFile class:7f "));
  EXPECT_THROW(plugin.AddErrFFDCinstance(bare, std::string("x"), 1, "cpu_err", 0), TAssertionFailure);
  EXPECT_EQ(FieldsOf(plugin).recordCounter, 0);
}

TEST_F(CaptureFile, AnEmptyNamespaceAsserts) {
  unsigned char byte = 0;
  EXPECT_THROW(plugin.AddErrFFDCinstance({}, &byte, 1, "cpu_err", 0), TAssertionFailure);
  EXPECT_EQ(logger.Lines(), std::vector<TLine>{Debug("Enter AddErrFFDCinstance funtion")});
}

TEST_F(CaptureFile, TheHostIsCalledInOrder) {
  THostProbe probe;
  unsigned char byte = 1;
  plugin.AddErrFFDCinstance(probe.Wrap(boost::shared_ptr<ICIMNamespace>(ns)), &byte, 1, "cpu_err", 0);
  const std::string set = "KROSG_DCAPFile instance.SetProperty(";
  EXPECT_EQ(probe.Calls(), (std::vector<std::string>{
                               "namespace.GetClass(KROSG_DCAPFile) {request}", "KROSG_DCAPFile.CreateInstance() {}",
                               set + "FileName) {}", set + "ErrRawData) {}", set + "MessageTimestamp) {}",
                               set + "SourceNode) {}", set + "CreationClassName) {}", set + "LogCreationClassName) {}",
                               set + "LogName) {}", set + "RecordID) {}", "KROSG_DCAPFile instance.Commit() {}"}));
}

TEST_F(CaptureFile, TheNumberOfAFailedCommitIsNotReused) {
  THostProbe probe;
  const auto probed = probe.Wrap(boost::shared_ptr<ICIMNamespace>(ns));
  unsigned char byte = 1;
  probe.FailAt("KROSG_DCAPFile instance.Commit() {}", 1);
  EXPECT_THROW(plugin.AddErrFFDCinstance(probed, &byte, 1, "cpu_err", 0), TVELException);
  EXPECT_EQ(FieldsOf(plugin).recordCounter, 1);
  probe.FailAt("KROSG_DCAPFile instance.SetProperty(RecordID) {}", 1);
  EXPECT_THROW(plugin.AddErrFFDCinstance(probed, &byte, 1, "cpu_err", 0), TVELException);
  EXPECT_EQ(FieldsOf(plugin).recordCounter, 1) << "a failure before the count leaves it";
}

TEST_F(CaptureFile, AnEmptyInstanceAsserts) {
  THostProbe probe;
  probe.ReturnNothingAt("KROSG_DCAPFile.CreateInstance() {}");
  unsigned char byte = 1;
  EXPECT_THROW(plugin.AddErrFFDCinstance(probe.Wrap(boost::shared_ptr<ICIMNamespace>(ns)), &byte, 1, "cpu_err", 0),
               TAssertionFailure);
}

}  // namespace
}  // namespace tests
