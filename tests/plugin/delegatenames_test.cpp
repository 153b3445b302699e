// Delegates whose names also belong to another path: they are collected as delegates.
#include <gtest/gtest.h>

#include "tests/support/namespaces.h"
#include "tests/support/plugintest.h"

namespace tests {
namespace {

using TLines = std::vector<TLine>;

class DelegateNames : public TPluginTest {
 protected:
  DelegateNames() {
    ns->AddClass(TClassBuilder("KROSG_PCIIOBRIDGE_StatisticData"));
    ns->AddClass(TClassBuilder("KROSG_L3Cache_StatisticData"));
    ns->AddClass(TClassBuilder("KROSG_Other"));
    SetMachineType("6101");
    sp.nodes = 0;
  }
  void AddMemoryBase() { ns->AddClass(TClassBuilder("KROSG_MEMCTL_StatisticData")); }
  void AddDelegate(const std::string& name, const std::string& base, const std::string& machine = "6101") {
    ns->AddClass(TClassBuilder(name, base).Machines({machine}).MaxInstances(0));
  }
  // What comes after the search for delegates.
  TLines Served(const std::vector<std::string>& names) {
    GetData(names);
    TLines lines = logger.Lines();
    while (!lines.empty() && !lines.front().message.starts_with("Entering")) lines.erase(lines.begin());
    return lines;
  }
  static TLines CollectedAsDelegate(const std::string& name) {
    return {Debug("Entering collection for requested class " + name),
            Debug("Collecting JFRErrorData."),
            Debug("Calling error data"),
            Debug("TNOVRequestTorgaReg()::Is not Dotcommand."),
            Debug("Class supports 0 instances on this machine"),
            Debug("fSPInstances = 0."),
            Debug("Total Instances collected are 0"),
            Debug("Building CIM instances."),
            Debug("In buildCIMInstances."),
            Debug("Completed buildCIMInstances."),
            Debug("Normal exit from Engineering Information collector...")};
  }
};

TEST_F(DelegateNames, ADelegateNamedLikeTheCaptureClassIsCollectedAndTheRequestContinues) {
  AddMemoryBase();
  AddDelegate("KROSG_DCAPFile", "KROSG_MEMCTL_StatisticData");
  TLines expected = CollectedAsDelegate("KROSG_DCAPFile");
  expected.push_back(Debug("Entering collection for requested class KROSG_Other"));
  expected.push_back(Debug("Collector received an invalid collection request.KROSG_Other"));
  EXPECT_EQ(Served({"KROSG_DCAPFile", "KROSG_Other"}), expected);
  EXPECT_EQ(FieldsOf(plugin).currentClass, Class("KROSG_DCAPFile"));
  EXPECT_EQ(sp.Discoveries(), 1) << "no BMC was asked for";
}

TEST_F(DelegateNames, ForAnotherMachineItIsTheCaptureClassAndEndsTheRequest) {
  AddMemoryBase();
  AddDelegate("KROSG_DCAPFile", "KROSG_MEMCTL_StatisticData", "6102");
  const TLines lines = Served({"KROSG_DCAPFile", "KROSG_Other"});
  ASSERT_GE(lines.size(), 3U);
  EXPECT_EQ(lines[1], Debug("Collector received an invalid collection request.KROSG_DCAPFile"));
  EXPECT_EQ(lines[2], Debug("begin to collect KROSG_DCAPFile"));
  EXPECT_EQ(lines.back(), Debug("Complete to collect KROSG_DCAPFile"));
}

class R8DelegateNames : public DelegateNames, public ::testing::WithParamInterface<const char*> {};

INSTANTIATE_TEST_SUITE_P(EachR8Class, R8DelegateNames,
                         ::testing::Values("KROSG_T4_MEMCTL_StatisticData", "KROSG_T4_PCIIOBRIDGE_StatisticData",
                                           "KROSG_VO_MEMCTL_StatisticData", "KROSG_VO_PCIIOBRIDGE_StatisticData"));

TEST_P(R8DelegateNames, AreCollectedAsDelegates) {
  AddMemoryBase();
  AddDelegate(GetParam(), "KROSG_L3Cache_StatisticData");
  EXPECT_EQ(Served({GetParam()}), CollectedAsDelegate(GetParam()));
}

// A base class derived from another base class is a delegate of that one, and is still searched for its own
// delegates.
TEST_F(DelegateNames, ABaseClassMayBeTheDelegateOfAnother) {
  AddDelegate("KROSG_MEMCTL_StatisticData", "KROSG_PCIIOBRIDGE_StatisticData");
  EXPECT_EQ(Served({"KROSG_MEMCTL_StatisticData"}), CollectedAsDelegate("KROSG_MEMCTL_StatisticData"));
  EXPECT_EQ(logger.Count(Debug("Collecting delegates for class KROSG_MEMCTL_StatisticData")), 1U);
  EXPECT_EQ(FieldsOf(plugin).currentClass, Class("KROSG_MEMCTL_StatisticData"));
}

}  // namespace
}  // namespace tests
