// The plugin object's state, and which calls change it.
#include <gtest/gtest.h>

#include "tests/plugin/dispatchtest.h"
#include "tests/support/namespaces.h"

namespace tests {
namespace {

struct TState {
  TPluginManagerProvider* pluginProvider;
  boost::shared_ptr<ICIMClass> currentClass;
  LogMessage* logger;
  std::string machineType;
  std::int32_t recordCounter;
  friend bool operator==(const TState&, const TState&) = default;
};

class KeptState : public TDispatchTest {
 protected:
  TState State() const {
    const auto fields = FieldsOf(plugin);
    return {fields.pluginProvider, fields.currentClass, fields.logger, fields.machineType, fields.recordCounter};
  }
  // A request and a capture file, which change every field from its initial value.
  void FillEveryField() {
    sp.Expect(Register(0, 0x10).Lost());
    GetData({"KROSG_VO_MEMCTL_StatisticData"});
    plugin.AddErrFFDCinstance(ns, std::string(), 0, "cpu_err", 0);
    logger.Clear();
    environment.machineType = "6102";
  }
};

TEST_F(KeptState, ARequestAndACaptureFileFillEveryField) {
  FillEveryField();
  EXPECT_EQ(State(), (TState{&pluginManager->provider, Class("KROSG_VO_MEMCTL_StatisticData"),
                             LogMessage::getInstance(), "6101", 1}));
}

TEST_F(KeptState, InitResetsTheCounterAndNothingElse) {
  FillEveryField();
  TState expected = State();
  expected.recordCounter = 0;
  plugin.Init();
  EXPECT_EQ(State(), expected);
  EXPECT_EQ(logger.Lines().size(), 1U) << "the facade is still registered";
}

TEST_F(KeptState, DeInitChangesNothing) {
  FillEveryField();
  const TState before = State();
  plugin.DeInit();
  EXPECT_EQ(State(), before);
  EXPECT_EQ(logger.Lines().size(), 1U);
  LogMessage::getInstance()->writeDebug("after it");
  EXPECT_EQ(logger.Lines().size(), 2U) << "lines are still let through";
}

TEST_F(KeptState, InitAndDeInitMakeNoHostCalls) {
  FillEveryField();
  const int queries = environment.machineTypeQueries;
  const int readings = environment.clockReadings;
  const int discoveries = sp.Discoveries();
  plugin.Init();
  plugin.DeInit();
  EXPECT_EQ(environment.machineTypeQueries, queries);
  EXPECT_EQ(environment.clockReadings, readings);
  EXPECT_EQ(sp.Discoveries(), discoveries);
  EXPECT_EQ(pluginManager->registered.size(), 1U);
}

TEST_F(KeptState, TheMachineTypeIsQueriedAgainAfterARequest) {
  GetData({});
  environment.machineType = "6102";
  EXPECT_EQ(plugin.getMachineType(), "6102");
  EXPECT_EQ(environment.machineTypeQueries, 2);
  EXPECT_EQ(FieldsOf(plugin).machineType, "6101") << "and is not stored";
}

TEST_F(KeptState, AnEmptyMachineTypeReplacesTheOldOne) {
  GetData({});
  ASSERT_EQ(FieldsOf(plugin).machineType, "6101");
  environment.machineType = "";
  GetData({});
  EXPECT_EQ(FieldsOf(plugin).machineType, "");
}

TEST_F(KeptState, CaptureFilesKeepTheCurrentClass) {
  GetData({"KROSG_DCAPFile"});
  EXPECT_FALSE(FieldsOf(plugin).currentClass);
  sp.Expect(Register(0, 0x10).Lost());
  GetData({"KROSG_VO_MEMCTL_StatisticData", "KROSG_DCAPFile"});
  EXPECT_EQ(FieldsOf(plugin).currentClass, Class("KROSG_VO_MEMCTL_StatisticData"));
  GetData({"KROSG_DCAPFile"});
  EXPECT_EQ(FieldsOf(plugin).currentClass, Class("KROSG_VO_MEMCTL_StatisticData"));
}

TEST_F(KeptState, ACaptureFileThatIsReadKeepsItToo) {
  sp.nodes = 1;
  sp.Expect({Open("cpu_err").Answers(OemData({1, 0, 0, 0})), Size("cpu_err").Answers(SizeData(10)),
             Read({1, 0, 0, 0}, 0, 10).Answers(ReadData(TBytes(10, 0xAB))), Close({1, 0, 0, 0}),
             Open("ioh_err").Fails(0xCB), Open("zyn_err").Fails(0xCB), Register(0, 0x10).Lost()});
  GetData({"KROSG_DCAPFile"});
  ASSERT_EQ(committed.size(), 1U);
  EXPECT_FALSE(FieldsOf(plugin).currentClass);
  GetData({"KROSG_T4_MEMCTL_StatisticData"});
  EXPECT_EQ(FieldsOf(plugin).currentClass, Class("KROSG_T4_MEMCTL_StatisticData"));
}

TEST_F(KeptState, AnInvalidClassKeepsTheCurrentClass) {
  sp.Expect(Register(0, 0x10).Lost());
  GetData({"KROSG_VO_MEMCTL_StatisticData"});
  SetMachineType("6102");
  GetData({"KROSG_Other", "KROSG_T4_MEMCTL_StatisticData"});  // the second is for another machine
  EXPECT_EQ(FieldsOf(plugin).currentClass, Class("KROSG_VO_MEMCTL_StatisticData"));
}

}  // namespace
}  // namespace tests
