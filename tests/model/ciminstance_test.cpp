#include "host/model/ciminstance.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "host/model/cimnamespace.h"
#include "tests/support/classbuilder.h"
#include "tests/support/expectfailure.h"
#include "tests/support/namespaces.h"

namespace tests {
namespace {

using TType = TCIMValue::TCIMType;

class CimInstance : public testing::Test {
 protected:
  CimInstance() {
    namespace_->AddClass(TClassBuilder("Base").Text("InstanceID").Time("StatisticTime"));
    class_ = namespace_->AddClass(
        TClassBuilder("Sample", "Base").Bytes("Register").Property(TType::kUint16, "Number").Text("Remark"));
    namespace_->SetCommitCallback(
        [this](const boost::shared_ptr<const TInstance>& instance) { committed_.push_back(instance); });
  }

  boost::shared_ptr<ICIMInstance> NewInstance() const { return class_->CreateInstance({}); }

  boost::shared_ptr<TNamespace> namespace_ = TNamespace::Create();
  boost::shared_ptr<TCIMClass> class_;
  std::vector<boost::shared_ptr<const TInstance>> committed_;
};

TEST_F(CimInstance, ReachesTheHostOnlyWhenCommitted) {
  const auto instance = NewInstance();
  instance->SetProperty("InstanceID", "a", {});
  EXPECT_TRUE(committed_.empty());
  instance->Commit({});
  ASSERT_EQ(committed_.size(), 1U);
  EXPECT_EQ(&committed_[0]->Class(), class_.get());
  EXPECT_EQ(*committed_[0]->Find("InstanceID"), TCIMValue("a"));
}

TEST_F(CimInstance, CommitsArriveInOrder) {
  const auto first = NewInstance();
  const auto second = NewInstance();
  second->Commit({});
  first->Commit({});
  ASSERT_EQ(committed_.size(), 2U);
  EXPECT_EQ(committed_[0], second);
  EXPECT_EQ(committed_[1], first);
}

TEST_F(CimInstance, ANewInstanceHasNothingSet) {
  NewInstance()->Commit({});
  for (std::size_t i = 0; i < class_->Properties().size(); ++i) EXPECT_FALSE(committed_[0]->IsSet(i));
  EXPECT_EQ(committed_[0]->Find("InstanceID"), nullptr);
}

TEST_F(CimInstance, PropertiesAreSetByNameInAnyCase) {
  const auto instance = NewInstance();
  instance->SetProperty("INSTANCEID", "a", {});
  instance->SetProperty("number", 7, {});
  instance->Commit({});
  EXPECT_EQ(*committed_[0]->Find("instanceid"), TCIMValue("a"));
  EXPECT_EQ(committed_[0]->Value(3).ToString(10), "7");
  EXPECT_FALSE(committed_[0]->IsSet(4));
}

TEST_F(CimInstance, SettingAPropertyAgainReplacesItsValue) {
  const auto instance = NewInstance();
  instance->SetProperty("Remark", "a", {});
  instance->SetProperty("Remark", "b", {});
  instance->Commit({});
  EXPECT_EQ(*committed_[0]->Find("Remark"), TCIMValue("b"));
}

TEST_F(CimInstance, ValuesAreConvertedToTheDeclaredType) {
  const auto instance = NewInstance();
  instance->SetProperty("Number", "0x1F", {});
  instance->SetProperty("Remark", 12, {});
  instance->SetProperty("StatisticTime", "20260131123456.000000+060", {});
  instance->SetProperty("Register", TCIMValue(TType::kSint32, 2, {TCIMValue(61), TCIMValue(-1)}), {});
  instance->Commit({});
  EXPECT_EQ(*committed_[0]->Find("Number"), TCIMValue::FromInteger(TType::kUint16, 31));
  EXPECT_EQ(*committed_[0]->Find("Remark"), TCIMValue("12"));
  EXPECT_EQ(*committed_[0]->Find("StatisticTime"), TCIMValue(TCIMDateTime(2026, 1, 31, 12, 34, 56, 0, 60)));
  EXPECT_EQ(committed_[0]->Find("Register")->ToString(10), "{61, 255}");
  EXPECT_EQ(committed_[0]->Find("Register")->GetType(), TType::kUint8);
}

TEST_F(CimInstance, ANullSetsAnyProperty) {
  const auto instance = NewInstance();
  instance->SetProperty("Register", TCIMValue(), {});
  instance->SetProperty("Number", TCIMValue(), {});
  instance->Commit({});
  EXPECT_TRUE(committed_[0]->Find("Register")->IsNull());
  EXPECT_EQ(committed_[0]->Find("Number")->GetType(), TType::kUint16);
}

TEST_F(CimInstance, AnUndeclaredPropertyIsRefused) {
  ExpectFailure(12, "class Sample declares no property \"Colour\"",
                [this] { NewInstance()->SetProperty("Colour", "red", {}); });
  ExpectFailure(12, "class Sample declares no property \"\"", [this] { NewInstance()->SetProperty("", "", {}); });
}

TEST_F(CimInstance, ArraysAndScalarsDoNotMix) {
  ExpectMismatch("property Sample.Register is declared as an array and cannot take a scalar",
                 [this] { NewInstance()->SetProperty("register", static_cast<unsigned char>(1), {}); });
  ExpectMismatch("property Sample.Number is declared as a scalar and cannot take an array",
                 [this] { NewInstance()->SetProperty("Number", TCIMValue(TType::kUint16, 0, {}), {}); });
}

TEST_F(CimInstance, AValueOfTheWrongTypeIsRefusedWithThePropertysName) {
  ExpectMismatch("property Sample.Number is declared as uint16: \"many\" is not a number",
                 [this] { NewInstance()->SetProperty("Number", "many", {}); });
  ExpectMismatch("property Sample.StatisticTime is declared as datetime: a sint32 is not a datetime",
                 [this] { NewInstance()->SetProperty("StatisticTime", 5, {}); });
}

TEST_F(CimInstance, ARefusedValueLeavesThePropertyAsItWas) {
  const auto instance = NewInstance();
  instance->SetProperty("Number", 5, {});
  EXPECT_THROW(instance->SetProperty("Number", "many", {}), TVELException);
  EXPECT_THROW(instance->SetProperty("InstanceID", TCIMValue(TType::kString, 0, {}), {}), TVELException);
  instance->Commit({});
  EXPECT_EQ(committed_[0]->Find("Number")->ToString(10), "5");
  EXPECT_EQ(committed_[0]->Find("InstanceID"), nullptr);
}

TEST_F(CimInstance, ASecondCommitIsRefused) {
  const auto instance = NewInstance();
  instance->Commit({});
  ExpectFailure(1, "an instance of Sample was committed twice", [&] { instance->Commit({}); });
  EXPECT_EQ(committed_.size(), 1U);
}

TEST_F(CimInstance, WithoutItsNamespaceACommitIsRefused) {
  const auto instance = NewInstance();
  namespace_.reset();
  ExpectFailure(1, "an instance of Sample outlived its namespace", [&] { instance->Commit({}); });
}

TEST_F(CimInstance, ExceptionsFromTheHostReachThePlugin) {
  namespace_->SetCommitCallback([](const boost::shared_ptr<const TInstance>&) { throw std::runtime_error("full"); });
  const auto instance = NewInstance();
  EXPECT_THROW(instance->Commit({}), std::runtime_error);
}

TEST_F(CimInstance, WithoutACallbackACommitIsAcceptedSilently) {
  namespace_->SetCommitCallback({});
  EXPECT_NO_THROW(NewInstance()->Commit({}));
}

TEST_F(CimInstance, AnUncommittedInstanceIsDropped) {
  boost::weak_ptr<ICIMInstance> dropped = NewInstance();
  EXPECT_TRUE(dropped.expired());
}

}  // namespace
}  // namespace tests
