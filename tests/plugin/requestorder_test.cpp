// The order of the steps of a request, observed by letting one of them fail, and the data passed between
// them.
#include <gtest/gtest.h>

#include "host/model/failures.h"
#include "tests/plugin/dispatchtest.h"
#include "tests/support/hostprobe.h"
#include "tests/support/namespaces.h"

namespace tests {
namespace {

class RequestOrder : public TDispatchTest {
 protected:
  // One request for one probed class in a probed namespace.
  void GetProbed(const boost::shared_ptr<ICIMClass>& requested) {
    std::vector<boost::shared_ptr<ICIMClass>> classes = {probe.Wrap(requested)};
    plugin.GetData(probe.Wrap(boost::shared_ptr<ICIMNamespace>(ns)), classes);
  }
  void ExpectOneFile(const std::string& name) {
    sp.Expect({Open(name).Answers(OemData({1, 0, 0, 0})), Size(name).Answers(SizeData(10)),
               Read({1, 0, 0, 0}, 0, 10).Answers(ReadData(TBytes(10, 0xAB))), Close({1, 0, 0, 0})});
  }

  THostProbe probe;
};

TEST_F(RequestOrder, ASecondRequestContinuesTheRecordNumbers) {
  plugin.Init();
  sp.nodes = 1;
  for (int request = 0; request < 2; ++request) {
    ExpectOneFile("cpu_err");
    ExpectOneFile("ioh_err");
    sp.Expect(Open("zyn_err").Fails(0xCB));
    GetData({"KROSG_DCAPFile"});
  }
  ASSERT_EQ(committed.size(), 4U);
  EXPECT_EQ(TextOf(*committed[0], "RecordID"), "0");
  EXPECT_EQ(TextOf(*committed[1], "RecordID"), "1");
  EXPECT_EQ(TextOf(*committed[2], "RecordID"), "2");
  EXPECT_EQ(TextOf(*committed[3], "RecordID"), "3");
  plugin.Init();
  ExpectOneFile("cpu_err");
  for (const char* const key : {"ioh_err", "zyn_err"}) sp.Expect(Open(key).Fails(0xCB));
  GetData({"KROSG_DCAPFile"});
  EXPECT_EQ(TextOf(*committed.at(4), "RecordID"), "0");
}

TEST_F(RequestOrder, TheNameOfARequestedClassIsQueriedOnce) {
  GetProbed(Class("KROSG_Other"));
  EXPECT_EQ(probe.CallsWith("KROSG_Other."), std::vector<std::string>{"KROSG_Other.GetName() {}"});
  SetMachineType("6102");
  GetProbed(Class("KROSG_VO_MEMCTL_StatisticData"));
  EXPECT_EQ(probe.CallsWith("KROSG_VO_MEMCTL_StatisticData."),
            (std::vector<std::string>{"KROSG_VO_MEMCTL_StatisticData.GetName() {}",
                                      "KROSG_VO_MEMCTL_StatisticData.GetQualifier(SupportedMachineTypes) {}"}));
  std::vector<boost::shared_ptr<ICIMClass>> base = {
      probe.Wrap(boost::shared_ptr<ICIMClass>(Class("KROSG_MEMCTL_StatisticData")))};
  plugin.GetData(ns, base);
  EXPECT_EQ(probe.CallsWith("KROSG_MEMCTL_StatisticData.GetName"),
            std::vector<std::string>{"KROSG_MEMCTL_StatisticData.GetName() {}"});
}

TEST_F(RequestOrder, AnR8RequestIsLoggedBeforeItsMachineTypesAreQueried) {
  logger.FailAt("Requested class KROSG_T4_MEMCTL_StatisticData");
  EXPECT_THROW(GetProbed(Class("KROSG_T4_MEMCTL_StatisticData")), std::runtime_error);
  EXPECT_TRUE(probe.CallsWith("KROSG_T4_MEMCTL_StatisticData.GetQualifier").empty());
}

TEST_F(RequestOrder, TheR8ClassIsCurrentBeforeItsCollectorRuns) {
  const auto other = TNamespace::Create();
  const auto without = other->AddClass(TClassBuilder("KROSG_VO_MEMCTL_StatisticData").Machines({"6101"}));
  std::vector<boost::shared_ptr<ICIMClass>> classes = {without};
  EXPECT_THROW(plugin.GetData(ns, classes), TAssertionFailure) << "it has no instance count";
  EXPECT_EQ(FieldsOf(plugin).currentClass, without);
}

TEST_F(RequestOrder, TheBaseClassIsCurrentUntilTheInstancesAreBuilt) {
  AddDelegate("Cache6101", "KROSG_L3Cache_StatisticData");
  logger.FailAt("Building CIM instances.");
  EXPECT_THROW(GetData({"Cache6101"}), std::runtime_error);
  EXPECT_EQ(FieldsOf(plugin).currentClass, Class("KROSG_L3Cache_StatisticData"));
}

TEST_F(RequestOrder, ABaseClassMissingAtTheSecondLookUpSkipsTheClass) {
  AddDelegate("Cache6101", "KROSG_L3Cache_StatisticData");
  probe.ReturnNothingAt("namespace.GetClass(KROSG_L3Cache_StatisticData) {request}", 2);
  GetProbed(Class("Cache6101"));
  EXPECT_EQ(probe.CallsWith("namespace.GetClass(KROSG_L3Cache_StatisticData)").size(), 2U);
  EXPECT_EQ(logger.Lines().back(), Debug("Collecting JFRErrorData."));
  EXPECT_FALSE(FieldsOf(plugin).currentClass);
}

TEST_F(RequestOrder, TheEmptyMachineTypeIsPartOfEveryType) {
  SetMachineType("");
  sp.Expect({Register(0, 0x10).Answers(RegisterData({1, 2, 3, 4, 5, 6, 7, 8})), Timestamp().Fails(0xCB)});
  GetData({"KROSG_VO_MEMCTL_StatisticData"});
  ASSERT_EQ(committed.size(), 1U);
  EXPECT_EQ(TextOf(*committed[0], "InstanceID"), "KROSG:KROSG_VO_MEMCTL_StatisticData::0");
}

TEST_F(RequestOrder, AnR8ClassWithoutInstancesStillReachesTheBuilder) {
  const auto other = TNamespace::Create();
  other->AddClass(TClassBuilder("KROSG_VO_MEMCTL_StatisticData").Machines({"6101"}).MaxInstances(0));
  std::vector<boost::shared_ptr<ICIMClass>> classes = {other->FindClass("KROSG_VO_MEMCTL_StatisticData")};
  plugin.GetData(ns, classes);
  const auto& lines = logger.Lines();
  ASSERT_GE(lines.size(), 2U);
  EXPECT_EQ(lines[lines.size() - 2], Debug("In buildCIMInstances."));
  EXPECT_EQ(lines.back(), Debug("Completed buildCIMInstances."));
}

}  // namespace
}  // namespace tests
