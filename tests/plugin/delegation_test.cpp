// The choice of the machine-specific subclass, and delegates whose names also belong to another path.
#include <gtest/gtest.h>

#include <functional>

#include "host/model/failures.h"
#include "nkrovel20/tvelexception.h"
#include "plugin/issubstring.h"
#include "tests/support/hostprobe.h"
#include "tests/support/namespaces.h"
#include "tests/support/plugintest.h"

namespace tests {
namespace {

class Delegation : public TPluginTest {
 protected:
  Delegation() { ns->AddClass(TClassBuilder("BASE")); }
  void AddSubClass(const std::string& name, const std::vector<std::string>& machines,
                   const std::string& super = "BASE") {
    ns->AddClass(TClassBuilder(name, super).Machines(machines));
  }
  std::string Delegate(const std::string& machineType) { return plugin.delegateRequest(Class("BASE"), machineType); }
};

TEST_F(Delegation, NoSubClassesMeanNoDelegate) { EXPECT_EQ(Delegate("6203"), ""); }

TEST_F(Delegation, NoMatchMeansNoDelegate) {
  AddSubClass("A", {"6101", "6102"});
  AddSubClass("B", {});
  EXPECT_EQ(Delegate("6203"), "");
}

TEST_F(Delegation, TheFirstMatchInEnumerationOrderWins) {
  AddSubClass("Z", {"6101"});
  AddSubClass("Y", {"6203"});
  AddSubClass("X", {"6203"});
  EXPECT_EQ(Delegate("6203"), "Y");
}

TEST_F(Delegation, AnyElementOfTheQualifierCounts) {
  AddSubClass("A", {"4411", "4414", "6203"});
  EXPECT_EQ(Delegate("6203"), "A");
}

TEST_F(Delegation, AnElementMayListSeveralTypes) {
  AddSubClass("A", {"6101,6102"});
  EXPECT_EQ(Delegate("6102"), "A");
  EXPECT_EQ(Delegate("6101"), "A");
  EXPECT_EQ(Delegate("1,61"), "A");
}

TEST_F(Delegation, APrefixOfALongerNumberMatchesToo) {
  AddSubClass("A", {"62034"});
  EXPECT_EQ(Delegate("6203"), "A");
  EXPECT_EQ(Delegate("203"), "A");
  EXPECT_EQ(Delegate("62035"), "");
}

TEST_F(Delegation, AnEmptyMachineTypeSelectsTheFirstSubClassWithAnElement) {
  AddSubClass("A", {});
  AddSubClass("B", {""});
  AddSubClass("C", {"6203"});
  EXPECT_EQ(Delegate(""), "B");
}

TEST_F(Delegation, IndirectSubClassesCountInDeclarationOrder) {
  AddSubClass("A", {"6101"});
  AddSubClass("A1", {"6203"}, "A");
  AddSubClass("B", {"6203"});
  EXPECT_EQ(Delegate("6203"), "A1");
}

TEST_F(Delegation, ANumberIsSearchedAsDecimalText) {
  ns->AddClass(TClassBuilder("A", "BASE").With("SupportedMachineTypes", Numbers({16203})));
  EXPECT_EQ(Delegate("6203"), "A");
}

TEST_F(Delegation, ASubClassWithoutTheQualifierAsserts) {
  AddSubClass("A", {"6101"});
  ns->AddClass(TClassBuilder("B", "BASE"));
  EXPECT_THROW(Delegate("6203"), TAssertionFailure);
  EXPECT_EQ(Delegate("6101"), "A") << "the search ends before it";
}

TEST_F(Delegation, AMissingBaseClassAsserts) { EXPECT_THROW(plugin.delegateRequest({}, "6203"), TAssertionFailure); }

TEST_F(Delegation, AnEmptyPointerInTheEnumerationAsserts) {
  THostProbe probe;
  probe.ReturnNothingAt("BASE.EnumerateSubClasses(1) {}");
  EXPECT_THROW(plugin.delegateRequest(probe.Wrap(boost::shared_ptr<ICIMClass>(Class("BASE"))), ""), TAssertionFailure);
}

TEST_F(Delegation, TheHostRefusesAQualifierThatIsNotAnArray) {
  ns->AddClass(TClassBuilder("A", "BASE").With("SupportedMachineTypes", TCIMValue("6203")));
  EXPECT_THROW(Delegate("6203"), TVELException);
}

TEST_F(Delegation, ANullArrayHasNoElements) {
  TCIMValue null;
  null.SetNullValue(TCIMValue::TCIMType::kString, 1);
  ns->AddClass(TClassBuilder("A", "BASE").With("SupportedMachineTypes", null));
  EXPECT_EQ(Delegate(""), "");
}

TEST_F(Delegation, CallsTheHostWithFlagOneAndEmptyContextsAndLogsNothing) {
  AddSubClass("A", {"6101"});
  AddSubClass("B", {"6203"});
  AddSubClass("C", {"6203"});
  THostProbe probe;
  EXPECT_EQ(plugin.delegateRequest(probe.Wrap(boost::shared_ptr<ICIMClass>(Class("BASE"))), "6203"), "B");
  EXPECT_EQ(probe.Calls(),
            (std::vector<std::string>{"BASE.EnumerateSubClasses(1) {}", "A.GetQualifier(SupportedMachineTypes) {}",
                                      "B.GetQualifier(SupportedMachineTypes) {}", "B.GetName() {}"}));
  EXPECT_TRUE(logger.Lines().empty());
}

TEST(IsSubString, TheElementIsTheHaystack) {
  EXPECT_TRUE(isSubString()(TCIMValue("6101,6102"), "6102"));
  EXPECT_FALSE(isSubString()(TCIMValue("610"), "6101"));
  EXPECT_TRUE(isSubString()(TCIMValue("6101"), ""));
  EXPECT_TRUE(isSubString()(TCIMValue(""), ""));
  EXPECT_TRUE(isSubString()(TCIMValue(), "")) << "a null element is the empty text";
  EXPECT_FALSE(isSubString()(TCIMValue(), "6101"));
}

TEST(IsSubString, DeclaresTheTypesThatBindersNeed) {
  EXPECT_TRUE((std::is_same_v<isSubString::first_argument_type, TCIMValue>));
  EXPECT_TRUE((std::is_same_v<isSubString::second_argument_type, std::string>));
  EXPECT_TRUE((std::is_same_v<isSubString::result_type, bool>));
}

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
