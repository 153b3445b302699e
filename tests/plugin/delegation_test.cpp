// The choice of the machine-specific subclass.
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

}  // namespace
}  // namespace tests
