// Exceptions from a request, and the state that remains.
#include <gtest/gtest.h>

#include "host/model/failures.h"
#include "nkrovel20/tvelexception.h"
#include "tests/plugin/dispatchtest.h"
#include "tests/support/hostprobe.h"
#include "tests/support/namespaces.h"

namespace tests {
namespace {

class DispatchFailure : public TDispatchTest {
 protected:
  void ExpectOneInstance() {
    sp.Expect(Register(0, 0x10).Answers(RegisterData({1, 2, 3, 4, 5, 6, 7, 8})));
    sp.Expect(Timestamp().Fails(0xCB));
  }
};

TEST_F(DispatchFailure, WithoutANamespaceItAsserts) {
  std::vector<boost::shared_ptr<ICIMClass>> classes;
  EXPECT_THROW(plugin.GetData({}, classes), TAssertionFailure);
  EXPECT_EQ(logger.Lines(),
            std::vector<TLine>{Debug("Collecting delegates for class KROSG_PCIIOBRIDGE_StatisticData")});
}

TEST_F(DispatchFailure, AMissingBaseClassAsserts) {
  const auto bare = TNamespace::Create();
  std::vector<boost::shared_ptr<ICIMClass>> classes;
  EXPECT_THROW(plugin.GetData(bare, classes), TAssertionFailure);
}

TEST_F(DispatchFailure, AnEmptyRequestedClassAsserts) {
  std::vector<boost::shared_ptr<ICIMClass>> classes = {Class("KROSG_Other"), {}, Class("KROSG_Other")};
  EXPECT_THROW(plugin.GetData(ns, classes), TAssertionFailure);
  EXPECT_EQ(logger.StartingWith("Entering").size(), 1U);
}

TEST_F(DispatchFailure, AnR8ClassWithoutMachineTypesAsserts) {
  const auto other = TNamespace::Create();
  other->AddClass(TClassBuilder("KROSG_VO_MEMCTL_StatisticData"));
  std::vector<boost::shared_ptr<ICIMClass>> classes = {other->FindClass("KROSG_VO_MEMCTL_StatisticData")};
  EXPECT_THROW(plugin.GetData(ns, classes), TAssertionFailure);
  EXPECT_EQ(logger.Lines().back(), Debug("Requested class KROSG_VO_MEMCTL_StatisticData"));
}

TEST_F(DispatchFailure, TheHostRefusesMachineTypesThatAreNotAnArray) {
  const auto other = TNamespace::Create();
  other->AddClass(TClassBuilder("KROSG_VO_MEMCTL_StatisticData").With("SupportedMachineTypes", TCIMValue("6101")));
  std::vector<boost::shared_ptr<ICIMClass>> classes = {other->FindClass("KROSG_VO_MEMCTL_StatisticData")};
  EXPECT_THROW(plugin.GetData(ns, classes), TVELException);
}

TEST_F(DispatchFailure, EarlierInstancesStayAndLaterClassesAreNotServed) {
  ExpectOneInstance();
  std::vector<boost::shared_ptr<ICIMClass>> classes = {
      Class("KROSG_VO_MEMCTL_StatisticData"), {}, Class("KROSG_T4_MEMCTL_StatisticData")};
  EXPECT_THROW(plugin.GetData(ns, classes), TAssertionFailure);
  ASSERT_EQ(committed.size(), 1U);
  EXPECT_EQ(committed[0]->Class().Name(), "KROSG_VO_MEMCTL_StatisticData");
  EXPECT_EQ(FieldsOf(plugin).currentClass, Class("KROSG_VO_MEMCTL_StatisticData"));
}

TEST_F(DispatchFailure, AFailureInTheBuilderPropagatesWithTheClassSet) {
  ns->SetCommitCallback([](const boost::shared_ptr<const TInstance>&) { throw TVELException(1); });
  ExpectOneInstance();
  EXPECT_THROW(GetData({"KROSG_VO_MEMCTL_StatisticData", "KROSG_Other"}), TVELException);
  EXPECT_EQ(FieldsOf(plugin).currentClass, Class("KROSG_VO_MEMCTL_StatisticData"));
  EXPECT_EQ(logger.StartingWith("Entering").size(), 1U);
}

TEST_F(DispatchFailure, AnExceptionOfAnyTypePropagates) {
  THostProbe probe;
  probe.DoAt("namespace.GetClass(KROSG_MEMCTL_StatisticData) {request}", [] { throw 42; });
  std::vector<boost::shared_ptr<ICIMClass>> classes;
  EXPECT_THROW(plugin.GetData(probe.Wrap(boost::shared_ptr<ICIMNamespace>(ns)), classes), int);
}

TEST_F(DispatchFailure, TheMachineTypeIsStoredBeforeAnythingFails) {
  environment.machineType = "4414";
  std::vector<boost::shared_ptr<ICIMClass>> classes;
  EXPECT_THROW(plugin.GetData({}, classes), TAssertionFailure);
  EXPECT_EQ(FieldsOf(plugin).machineType, "4414");
}

TEST_F(DispatchFailure, ARequestAfterAFailedOneIsServed) {
  std::vector<boost::shared_ptr<ICIMClass>> broken = {{}};
  EXPECT_THROW(plugin.GetData(ns, broken), TAssertionFailure);
  ExpectOneInstance();
  GetData({"KROSG_VO_MEMCTL_StatisticData"});
  EXPECT_EQ(committed.size(), 1U);
}

TEST_F(DispatchFailure, CaptureFilesWithoutTheirClassAssertAndLaterKeysAreNotRead) {
  const auto bare = TNamespace::Create();
  AddJfrBases(*bare);
  sp.nodes = 1;
  sp.Expect({Open("cpu_err").Answers(OemData({1, 0, 0, 0})), Size("cpu_err").Answers(SizeData(0)),
             Read({1, 0, 0, 0}, 0, 10).Fails(0xC9), Close({1, 0, 0, 0})});
  std::vector<boost::shared_ptr<ICIMClass>> classes = {Class("KROSG_DCAPFile")};
  EXPECT_THROW(plugin.GetData(bare, classes), TAssertionFailure);
  EXPECT_EQ(FieldsOf(plugin).recordCounter, 0);
}

}  // namespace
}  // namespace tests
