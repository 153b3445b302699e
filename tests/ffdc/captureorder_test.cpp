// Capture files: what is passed to the host and in what order, and what counts as success.
#include <gtest/gtest.h>

#include "nkrovel20/tvelexception.h"
#include "tests/support/hostprobe.h"
#include "tests/support/namespaces.h"
#include "tests/support/plugintest.h"

namespace tests {
namespace {

class CaptureOrder : public TPluginTest {
 protected:
  CaptureOrder() {
    AddCaptureClass();
    plugin.Init();
    logger.Clear();
    environment.localTime = TCIMDateTime(2026, 1, 31, 12, 34, 56, 0, 60);
  }
  void AddProbed() {
    unsigned char byte = 0x5A;
    plugin.AddErrFFDCinstance(probe.Wrap(boost::shared_ptr<ICIMNamespace>(ns)), &byte, 1, "ioh_err", 1);
  }
  static SPLibrary* Node() { return SPLibrary::GetSplibraryInstance(0); }

  THostProbe probe;
  unsigned char handle[4] = {1, 0, 0, 0};
};

TEST_F(CaptureOrder, NumbersArePassedAsTextAndTheTimeAsADatetime) {
  AddProbed();
  EXPECT_EQ(probe.Settings(),
            (std::vector<std::string>{"FileName string = ioh_err", "ErrRawData string = 5a ",
                                      "MessageTimestamp datetime = 20260131123456.000000+060", "SourceNode string = 2",
                                      "CreationClassName string = KROSG_DCAPFile",
                                      "LogCreationClassName string = KROSG_DCAPFile", "LogName string = KROSG_DCAPFile",
                                      "RecordID string = 0"}));
}

TEST_F(CaptureOrder, TheExitIsLoggedOnlyAfterTheCommit) {
  probe.FailAt("KROSG_DCAPFile instance.Commit() {}", 1);
  EXPECT_THROW(AddProbed(), TVELException);
  EXPECT_EQ(logger.Lines().back(), Debug("Data added into KROSG_DCAPFile class:5a "));
  EXPECT_EQ(logger.Count(Debug("Exit AddErrFFDCinstance funtion")), 0U);
}

TEST_F(CaptureOrder, ATextGetsTheSamePropertiesAsBytes) {
  plugin.AddErrFFDCinstance(probe.Wrap(boost::shared_ptr<ICIMNamespace>(ns)), std::string("text"), 0, "zyn_err", 0);
  EXPECT_EQ(probe.Settings(),
            (std::vector<std::string>{"FileName string = zyn_err", "ErrRawData string = text",
                                      "MessageTimestamp datetime = 20260131123456.000000+060", "SourceNode string = 1",
                                      "CreationClassName string = KROSG_DCAPFile",
                                      "LogCreationClassName string = KROSG_DCAPFile", "LogName string = KROSG_DCAPFile",
                                      "RecordID string = 0"}));
}

TEST_F(CaptureOrder, TheTimeOfATextIsReadBeforeItsFirstLine) {
  logger.FailAt("Enter AddErrFFDCinstance funtion");
  EXPECT_THROW(plugin.AddErrFFDCinstance(ns, std::string(), 0, "cpu_err", 0), std::runtime_error);
  EXPECT_EQ(environment.clockReadings, 1);
}

TEST_F(CaptureOrder, OnlyCompletionCodeZeroGivesASize) {
  int size = 77;
  for (const std::uint8_t code : TBytes{0x01, 0x7F, 0x80, 0xFF}) {
    logger.Clear();
    sp.Expect(Size("cpu_err").Answers(SizeData(10)).WithCode(code));
    EXPECT_FALSE(plugin.QueryStorageAreaSize(size, "cpu_err", Node())) << int{code};
    EXPECT_EQ(size, 77);
    EXPECT_EQ(logger.Lines().size(), 2U) << "neither size nor end";
  }
}

TEST_F(CaptureOrder, OnlyCompletionCodeZeroReportsAClose) {
  for (const std::uint8_t code : TBytes{0x01, 0x7F, 0x80, 0xFF}) {
    sp.Expect(Close({1, 0, 0, 0}).Answers(OemData({})).WithCode(code));
    plugin.CloseStorageArea(handle, Node());
  }
  EXPECT_EQ(logger.Count(Debug("close file successfully")), 0U);
  EXPECT_EQ(logger.Count(Debug("Exit ReadStorageArea funtion")), 4U);
}

}  // namespace
}  // namespace tests
