// Turning property maps into committed instances.
#include <gtest/gtest.h>

#include <boost/make_shared.hpp>

#include "host/model/failures.h"
#include "nkrovel20/tvelexception.h"
#include "tests/support/hostprobe.h"
#include "tests/support/namespaces.h"
#include "tests/support/plugintest.h"

namespace tests {
namespace {

class InstanceBuilder : public TPluginTest {
 protected:
  InstanceBuilder() {
    ns->AddClass(TClassBuilder("CHIP").Property(TType::kUint32, "RegisterNumber").Text("A").Text("B").Bytes("Data"));
    SetCurrentClass(Class("CHIP"));
  }
  // Normally a request sets the current class; the builder's tests do without one.
  void SetCurrentClass(const boost::shared_ptr<ICIMClass>& cimClass) { FieldsOf(plugin).currentClass = cimClass; }
};

const TLine kFirst = Debug("In buildCIMInstances.");
const TLine kLast = Debug("Completed buildCIMInstances.");

TEST_F(InstanceBuilder, AnEmptyVectorYieldsTheTwoDebugLines) {
  plugin.buildCIMInstances({});
  EXPECT_EQ(logger.Lines(), (std::vector<TLine>{kFirst, kLast}));
  EXPECT_TRUE(committed.empty());
}

TEST_F(InstanceBuilder, AnEmptyVectorNeedsNoClass) {
  SetCurrentClass({});
  plugin.buildCIMInstances({TPropertyMap()});
  EXPECT_EQ(logger.Lines(), (std::vector<TLine>{kFirst, kLast}));
}

TEST_F(InstanceBuilder, AnEmptyMapYieldsNoInstance) {
  plugin.buildCIMInstances({{}, {{"B", TCIMValue("two")}, {"A", TCIMValue("one")}}});
  ASSERT_EQ(committed.size(), 1U);
  EXPECT_EQ(TextOf(*committed[0], "A"), "one");
  EXPECT_EQ(TextOf(*committed[0], "B"), "two");
  EXPECT_EQ(logger.Lines(), (std::vector<TLine>{kFirst, Verbose("valueIt->first = A. valueIt->second = one."),
                                                Verbose("valueIt->first = B. valueIt->second = two."), kLast}));
}

TEST_F(InstanceBuilder, TheVerboseLineAddsNoSpaces) {
  plugin.buildCIMInstances({{{"RegisterNumber", TCIMValue(5)}}});
  EXPECT_EQ(logger.Lines()[1], Verbose("valueIt->first = RegisterNumber. valueIt->second = 5."));
}

TEST_F(InstanceBuilder, NullValuesAreNeitherSetNorLogged) {
  TCIMValue null;
  null.SetNullValue(TCIMValue::TCIMType::kUint8, 14);
  plugin.buildCIMInstances({{{"A", TCIMValue()}, {"B", TCIMValue("x")}, {"Data", null}}});
  ASSERT_EQ(committed.size(), 1U);
  EXPECT_EQ(TextOf(*committed[0], "A"), "(not set)");
  EXPECT_EQ(TextOf(*committed[0], "Data"), "(not set)");
  EXPECT_EQ(logger.OfSeverity(4), std::vector<TLine>{Verbose("valueIt->first = B. valueIt->second = x.")});
}

TEST_F(InstanceBuilder, AMapOfNullsYieldsAnInstanceWithNothingSet) {
  plugin.buildCIMInstances({{{"A", TCIMValue()}, {"B", TCIMValue()}}});
  ASSERT_EQ(committed.size(), 1U);
  EXPECT_EQ(TextOf(*committed[0], "A"), "(not set)");
  EXPECT_EQ(logger.Lines(), (std::vector<TLine>{kFirst, kLast}));
}

TEST_F(InstanceBuilder, AnEmptyArrayAndAnEmptyTextAreSet) {
  plugin.buildCIMInstances({{{"A", TCIMValue("")}, {"Data", TCIMValue(TType::kUint8, 0, {})}}});
  EXPECT_EQ(TextOf(*committed.at(0), "A"), "");
  EXPECT_EQ(logger.OfSeverity(4), (std::vector<TLine>{Verbose("valueIt->first = A. valueIt->second = ."),
                                                      Verbose("valueIt->first = Data. valueIt->second = {}.")}));
}

TEST_F(InstanceBuilder, NumbersAreDecimal) {
  plugin.buildCIMInstances({{{"Data", TCIMValue(TType::kUint8, 2, {TCIMValue(10), TCIMValue(255)})}}});
  EXPECT_EQ(logger.Lines()[1], Verbose("valueIt->first = Data. valueIt->second = {10, 255}."));
}

TEST_F(InstanceBuilder, InstancesAreCommittedInMapOrder) {
  plugin.buildCIMInstances({{{"A", TCIMValue("1")}}, {{"A", TCIMValue("2")}}, {{"A", TCIMValue("3")}}});
  ASSERT_EQ(committed.size(), 3U);
  for (std::size_t i = 0; i < 3; ++i) EXPECT_EQ(TextOf(*committed[i], "A"), std::to_string(i + 1));
}

TEST_F(InstanceBuilder, TheHostIsCalledInOrderWithEmptyContexts) {
  THostProbe probe;
  SetCurrentClass(probe.Wrap(boost::shared_ptr<ICIMClass>(Class("CHIP"))));
  plugin.buildCIMInstances({{{"B", TCIMValue("b")}, {"A", TCIMValue("a")}}, {}, {{"A", TCIMValue("c")}}});
  EXPECT_EQ(probe.Calls(), (std::vector<std::string>{"CHIP.CreateInstance() {}", "CHIP instance.SetProperty(A) {}",
                                                     "CHIP instance.SetProperty(B) {}", "CHIP instance.Commit() {}",
                                                     "CHIP.CreateInstance() {}", "CHIP instance.SetProperty(A) {}",
                                                     "CHIP instance.Commit() {}"}));
  SetCurrentClass({});
}

// A host may move from the value that it is given.
class TTakingInstance : public ICIMInstance {
 public:
  void SetProperty(const std::string&, const TCIMValue& value, const TPropertyMap&) override {
    taken.push_back(std::move(const_cast<TCIMValue&>(value)));
  }
  void Commit(const TPropertyMap&) override {}

  std::vector<TCIMValue> taken;
};

class TClassOfTaking : public ICIMClass {
 public:
  const std::string& GetName(const TPropertyMap&) const override { return name_; }
  boost::shared_ptr<const ICIMQualifier> GetQualifier(const std::string&, const TPropertyMap&) const override {
    return {};
  }
  boost::shared_ptr<ICIMClass> GetSuperClass(const TPropertyMap&) const override { return {}; }
  boost::shared_ptr<ICIMNamespace> GetNamespace(const TPropertyMap&) const override { return {}; }
  boost::shared_ptr<ICIMInstance> CreateInstance(const TPropertyMap&) override { return instance; }
  void EnumerateSubClasses(const TClassCallback&, int, const TPropertyMap&) override {}
  void EnumeratePropertyDecls(const TPropertyDeclCallback&, const TPropertyMap&) override {}

  boost::shared_ptr<TTakingInstance> instance = boost::make_shared<TTakingInstance>();

 private:
  std::string name_ = "TAKING";
};

TEST_F(InstanceBuilder, TheHostCannotChangeTheValuesOfTheMap) {
  const auto taking = boost::make_shared<TClassOfTaking>();
  SetCurrentClass(taking);
  std::vector<TPropertyMap> maps = {{{"A", TCIMValue("one")}}};
  plugin.buildCIMInstances(maps);
  ASSERT_EQ(taking->instance->taken.size(), 1U);
  EXPECT_EQ(taking->instance->taken[0].ToString(10), "one");
  EXPECT_EQ(maps[0].at("A").ToString(10), "one");
  SetCurrentClass({});
}

TEST_F(InstanceBuilder, APropertyIsLoggedBeforeItIsSet) {
  EXPECT_THROW(plugin.buildCIMInstances({{{"Unknown", TCIMValue("x")}}}), TVELException);
  EXPECT_EQ(logger.Lines(), (std::vector<TLine>{kFirst, Verbose("valueIt->first = Unknown. valueIt->second = x.")}));
}

TEST_F(InstanceBuilder, AFailureDropsTheInstanceAndKeepsTheEarlierOnes) {
  EXPECT_THROW(
      plugin.buildCIMInstances(
          {{{"A", TCIMValue("1")}}, {{"A", TCIMValue("2")}, {"Data", TCIMValue("scalar")}}, {{"A", TCIMValue("3")}}}),
      TVELException);
  ASSERT_EQ(committed.size(), 1U);
  EXPECT_EQ(TextOf(*committed[0], "A"), "1");
  EXPECT_EQ(logger.Count(kLast), 0U);
}

TEST_F(InstanceBuilder, AFailureInCommitPropagatesToo) {
  ns->SetCommitCallback([](const boost::shared_ptr<const TInstance>&) { throw TVELException(1); });
  EXPECT_THROW(plugin.buildCIMInstances({{{"A", TCIMValue("1")}}}), TVELException);
}

TEST_F(InstanceBuilder, WithoutAClassItAsserts) {
  SetCurrentClass({});
  EXPECT_THROW(plugin.buildCIMInstances({{{"A", TCIMValue("1")}}}), TAssertionFailure);
}

TEST_F(InstanceBuilder, AnEmptyInstanceFromTheHostAsserts) {
  THostProbe probe;
  probe.ReturnNothingAt("CHIP.CreateInstance() {}");
  SetCurrentClass(probe.Wrap(boost::shared_ptr<ICIMClass>(Class("CHIP"))));
  EXPECT_THROW(plugin.buildCIMInstances({{{"A", TCIMValue("1")}}}), TAssertionFailure);
  SetCurrentClass({});
}

}  // namespace
}  // namespace tests
