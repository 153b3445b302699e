// The routing of a request, with its trace; exceptions from a request, and the state that remains.
#include <gtest/gtest.h>

#include <boost/make_shared.hpp>

#include "host/model/failures.h"
#include "nkrovel20/tvelexception.h"
#include "tests/plugin/dispatchtest.h"
#include "tests/support/hostprobe.h"
#include "tests/support/namespaces.h"

namespace tests {
namespace {

class Dispatch : public TDispatchTest {};

// The registers' answers do not matter here.
std::vector<TStep> OneInstance(std::uint8_t chip) {
  return {Register(chip, 0x10).Answers(RegisterData({1, 2, 3, 4, 5, 6, 7, 8})), Timestamp().Fails(0xCB)};
}

TEST_F(Dispatch, AnEmptyRequestStillSearchesTheDelegates) {
  GetData({});
  EXPECT_EQ(logger.Lines(), Preparation());
  EXPECT_EQ(environment.machineTypeQueries, 1);
}

TEST_F(Dispatch, ADelegateIsLoggedWhenAddedToListAndMap) {
  AddDelegate("Memory6101", "KROSG_MEMCTL_StatisticData");
  GetData({});
  EXPECT_EQ(logger.Lines(), (std::vector<TLine>{Debug("Collecting delegates for class KROSG_PCIIOBRIDGE_StatisticData"),
                                                Debug("Collecting delegates for class KROSG_MEMCTL_StatisticData"),
                                                Debug("Adding class Memory6101 in Class list"),
                                                Debug("Adding class Memory6101 in child map"),
                                                Debug("Collecting delegates for class KROSG_L3Cache_StatisticData")}));
}

TEST_F(Dispatch, ADelegateIsCollectedByTheJfrPath) {
  AddDelegate("Bridge6101", "KROSG_PCIIOBRIDGE_StatisticData");
  GetData({});
  logger.Clear();
  GetData({"Bridge6101"});
  EXPECT_EQ(logger.StartingWith(""),
            Together({Debug("Collecting delegates for class KROSG_PCIIOBRIDGE_StatisticData"),
                      Debug("Adding class Bridge6101 in Class list"), Debug("Adding class Bridge6101 in child map"),
                      Debug("Collecting delegates for class KROSG_MEMCTL_StatisticData"),
                      Debug("Collecting delegates for class KROSG_L3Cache_StatisticData")},
                     {Debug("Entering collection for requested class Bridge6101"), Debug("Collecting JFRErrorData."),
                      Debug("Calling error data"), Debug("TNOVRequestTorgaReg()::Is not Dotcommand."),
                      Debug("Class supports 0 instances on this machine"), Debug("fSPInstances = 0."),
                      Debug("Total Instances collected are 0"), Debug("Building CIM instances."),
                      Debug("In buildCIMInstances."), Debug("Completed buildCIMInstances."),
                      Debug("Normal exit from Engineering Information collector...")}));
  EXPECT_EQ(FieldsOf(plugin).currentClass, Class("Bridge6101"));
}

TEST_F(Dispatch, ABaseClassItselfIsNotCollected) {
  AddDelegate("Bridge6101", "KROSG_PCIIOBRIDGE_StatisticData");
  for (const char* const name :
       {"KROSG_PCIIOBRIDGE_StatisticData", "KROSG_MEMCTL_StatisticData", "KROSG_L3Cache_StatisticData"}) {
    logger.Clear();
    GetData({name});
    ASSERT_EQ(logger.Lines().size(), 7U);
    EXPECT_EQ(logger.Lines()[5], Debug(std::string("Entering collection for requested class ") + name));
    EXPECT_EQ(logger.Lines()[6], Debug("Collecting JFRErrorData."));
    EXPECT_FALSE(FieldsOf(plugin).currentClass);
  }
}

TEST_F(Dispatch, EachR8ClassIsCollectedOnItsMachine) {
  for (const char* const name : {"KROSG_T4_MEMCTL_StatisticData", "KROSG_VO_MEMCTL_StatisticData",
                                 "KROSG_T4_PCIIOBRIDGE_StatisticData", "KROSG_VO_PCIIOBRIDGE_StatisticData"}) {
    const bool isBridge = std::string(name).find("BRIDGE") != std::string::npos;
    sp.Expect(OneInstance(isBridge ? 1 : 0));
    GetData({name});
    ASSERT_EQ(committed.size(), 1U) << name;
    EXPECT_EQ(committed[0]->Class().Name(), name);
    EXPECT_EQ(FieldsOf(plugin).currentClass, Class(name));
    committed.clear();
  }
}

TEST_F(Dispatch, AnR8RequestLogsBeforeAndAfterTheCollector) {
  sp.Expect(OneInstance(0));
  GetData({"KROSG_VO_MEMCTL_StatisticData"});
  const auto& lines = logger.Lines();
  EXPECT_EQ(lines.at(3), Debug("Entering collection for requested class KROSG_VO_MEMCTL_StatisticData"));
  EXPECT_EQ(lines.at(4), Debug("Requested class KROSG_VO_MEMCTL_StatisticData"));
  EXPECT_EQ(lines.at(5), Debug("Class supports 1 instances on this machine"));
  EXPECT_EQ(lines.back(), Debug("Completed buildCIMInstances."));
}

TEST_F(Dispatch, AnR8ClassOfAnotherMachineIsSkippedSilently) {
  SetMachineType("6102");
  GetData({"KROSG_VO_MEMCTL_StatisticData"});
  EXPECT_EQ(logger.Lines(),
            Together(Preparation(), {Debug("Entering collection for requested class KROSG_VO_MEMCTL_StatisticData"),
                                     Debug("Requested class KROSG_VO_MEMCTL_StatisticData")}));
  EXPECT_FALSE(FieldsOf(plugin).currentClass);
}

TEST_F(Dispatch, APartOfTheMachineTypeIsEnough) {
  SetMachineType("610");
  sp.Expect(OneInstance(0));
  GetData({"KROSG_VO_MEMCTL_StatisticData"});
  EXPECT_EQ(committed.size(), 1U);
}

TEST_F(Dispatch, AMatchAnywhereInAnR8ClassesListIsEnough) {
  const auto other = TNamespace::Create();
  other->AddClass(TClassBuilder("KROSG_T4_MEMCTL_StatisticData").Machines({"4411", "4414", "6101"}).MaxInstances(0));
  std::vector<boost::shared_ptr<ICIMClass>> classes = {other->FindClass("KROSG_T4_MEMCTL_StatisticData")};
  plugin.GetData(ns, classes);
  EXPECT_EQ(FieldsOf(plugin).currentClass, classes[0]);
  EXPECT_EQ(logger.Lines().back(), Debug("Completed buildCIMInstances."));
}

TEST_F(Dispatch, TheHostsMachineTypeDecidesAndTheNamespacesIsReported) {
  environment.machineType = "6101";
  ns->SetMachineType("4411");
  sp.Expect(OneInstance(0));
  GetData({"KROSG_VO_MEMCTL_StatisticData"});
  EXPECT_EQ(TextOf(*committed.at(0), "MachineType"), "4411");
  EXPECT_EQ(FieldsOf(plugin).machineType, "6101");
}

TEST_F(Dispatch, AnR8ClassIsMatchedAgainstTheTypeThatTheRequestStartedWith) {
  logger.FailAt("Requested class KROSG_VO_MEMCTL_StatisticData", [this] { environment.machineType = "6102"; });
  sp.Expect(OneInstance(0));
  GetData({"KROSG_VO_MEMCTL_StatisticData"});
  EXPECT_EQ(committed.size(), 1U);
  EXPECT_EQ(FieldsOf(plugin).machineType, "6101");
  EXPECT_EQ(environment.machineTypeQueries, 1);
}

TEST_F(Dispatch, AnUnknownClassIsLoggedAndSkipped) {
  GetData({"KROSG_Other", "KROSG_Other"});
  const std::vector<TLine> twoLines = {Debug("Entering collection for requested class KROSG_Other"),
                                       Debug("Collector received an invalid collection request.KROSG_Other")};
  EXPECT_EQ(logger.Lines(), Together(Together(Preparation(), twoLines), twoLines));
}

TEST_F(Dispatch, NamesAreComparedCaseSensitively) {
  const auto lower = TNamespace::Create();
  lower->AddClass(TClassBuilder("krosg_memctl_statisticdata"));
  lower->AddClass(TClassBuilder("krosg_dcapfile"));
  std::vector<boost::shared_ptr<ICIMClass>> classes = {lower->FindClass("krosg_memctl_statisticdata"),
                                                       lower->FindClass("krosg_dcapfile")};
  plugin.GetData(ns, classes);
  EXPECT_EQ(logger.Count(Debug("Collector received an invalid collection request.krosg_memctl_statisticdata")), 1U);
  EXPECT_EQ(logger.Lines().back(), Debug("Collector received an invalid collection request.krosg_dcapfile"));
}

TEST_F(Dispatch, TheCaptureClassIsFirstInvalidThenServedAndEndsTheRequest) {
  GetData({"KROSG_DCAPFile", "KROSG_Other"});
  EXPECT_EQ(logger.Lines(), Together(Preparation(), CaptureWithoutBmc()));
}

TEST_F(Dispatch, ClassesBeforeTheCaptureClassAreServedFirst) {
  GetData({"KROSG_Other", "KROSG_DCAPFile"});
  const std::vector<TLine> other = {Debug("Entering collection for requested class KROSG_Other"),
                                    Debug("Collector received an invalid collection request.KROSG_Other")};
  EXPECT_EQ(logger.Lines(), Together(Together(Preparation(), other), CaptureWithoutBmc()));
}

TEST_F(Dispatch, CaptureFilesAreReadInOrder) {
  sp.nodes = 1;
  for (const char* const key : {"cpu_err", "ioh_err", "zyn_err"}) sp.Expect(Open(key).Fails(0xCB));
  GetData({"KROSG_DCAPFile"});
  EXPECT_EQ(sp.StepsLeft(), 0U);
}

// A delegate of two bases belongs to the one whose name comes first: KROSG_MEMCTL... before
// KROSG_PCIIOBRIDGE..., although the bridge is searched first.
TEST_F(Dispatch, ADelegateOfTwoBasesBelongsToTheFirstInKeyOrder) {
  THostProbe probe;
  AddDelegate("Shared", "KROSG_PCIIOBRIDGE_StatisticData");
  boost::shared_ptr<ICIMClass> base = Class("KROSG_PCIIOBRIDGE_StatisticData");
  // The same class is the delegate for both bases.
  class TAliasing : public ICIMNamespace {
   public:
    explicit TAliasing(boost::shared_ptr<ICIMNamespace> inner) : inner_(std::move(inner)) {}
    boost::shared_ptr<ICIMClass> GetClass(const std::string& name, const TPropertyMap& context) override {
      return inner_->GetClass(name == "KROSG_MEMCTL_StatisticData" ? "KROSG_PCIIOBRIDGE_StatisticData" : name, context);
    }
    std::string GetMachineType() const override { return inner_->GetMachineType(); }

   private:
    boost::shared_ptr<ICIMNamespace> inner_;
  };
  const boost::shared_ptr<ICIMNamespace> aliasing(new TAliasing(ns));
  std::vector<boost::shared_ptr<ICIMClass>> classes = {Class("Shared")};
  plugin.GetData(probe.Wrap(aliasing), classes);
  EXPECT_EQ(probe.CallsWith("namespace.GetClass"),
            (std::vector<std::string>{"namespace.GetClass(KROSG_PCIIOBRIDGE_StatisticData) {request}",
                                      "namespace.GetClass(KROSG_MEMCTL_StatisticData) {request}",
                                      "namespace.GetClass(KROSG_L3Cache_StatisticData) {request}",
                                      "namespace.GetClass(KROSG_MEMCTL_StatisticData) {request}"}));
}

TEST_F(Dispatch, AllThreePathsServeOneRequestInOrder) {
  AddDelegate("Cache6101", "KROSG_L3Cache_StatisticData");
  sp.Expect(OneInstance(0));
  sp.Expect(OneInstance(1));
  GetData({"KROSG_VO_MEMCTL_StatisticData", "Cache6101", "KROSG_T4_PCIIOBRIDGE_StatisticData", "KROSG_DCAPFile"});
  EXPECT_EQ(logger.StartingWith("Entering collection for requested class "),
            (std::vector<TLine>{Debug("Entering collection for requested class KROSG_VO_MEMCTL_StatisticData"),
                                Debug("Entering collection for requested class Cache6101"),
                                Debug("Entering collection for requested class KROSG_T4_PCIIOBRIDGE_StatisticData"),
                                Debug("Entering collection for requested class KROSG_DCAPFile")}));
  ASSERT_EQ(committed.size(), 2U);
  EXPECT_EQ(TextOf(*committed[0], "ElementName"), "Memory controller with integrated L4 cache module,0");
  EXPECT_EQ(TextOf(*committed[1], "ElementName"), "PCI I/O bridge,0");
}

TEST_F(Dispatch, LookUpsCarryTheRequestContextAndQueriesNone) {
  THostProbe probe;
  AddDelegate("Cache6101", "KROSG_L3Cache_StatisticData");
  const auto probed = probe.Wrap(boost::shared_ptr<ICIMNamespace>(ns));
  std::vector<boost::shared_ptr<ICIMClass>> classes = {
      probe.Wrap(boost::shared_ptr<ICIMClass>(Class("Cache6101"))),
      probe.Wrap(boost::shared_ptr<ICIMClass>(Class("KROSG_T4_MEMCTL_StatisticData")))};
  sp.Expect(OneInstance(0));
  plugin.GetData(probed, classes);
  for (const std::string& call : probe.CallsWith("namespace.GetClass")) {
    EXPECT_TRUE(call.ends_with("{request}")) << call;
  }
  EXPECT_EQ(probe.CallsWith("namespace.GetClass").size(), 4U);
  EXPECT_TRUE(probe.CallsWith("{other}").empty());
  for (const std::string& call : probe.CallsWith("{request}")) {
    EXPECT_TRUE(call.starts_with("namespace.GetClass")) << call;
  }
}

TEST_F(Dispatch, MachineTypeAndCurrentClassSurviveTheCall) {
  sp.Expect(OneInstance(0));
  GetData({"KROSG_VO_MEMCTL_StatisticData", "KROSG_Other"});
  EXPECT_EQ(FieldsOf(plugin).currentClass, Class("KROSG_VO_MEMCTL_StatisticData"));
  EXPECT_EQ(FieldsOf(plugin).machineType, "6101");
  SetMachineType("6102");
  GetData({});
  EXPECT_EQ(FieldsOf(plugin).machineType, "6102");
  EXPECT_EQ(FieldsOf(plugin).currentClass, Class("KROSG_VO_MEMCTL_StatisticData"));
  GetData({"KROSG_MEMCTL_StatisticData"});
  EXPECT_FALSE(FieldsOf(plugin).currentClass) << "a base class empties it";
}

// A host may modify the map that it is given for a look-up.
TEST_F(Dispatch, EveryLookUpHasItsOwnRequestContext) {
  class TSpoiling : public ICIMNamespace {
   public:
    explicit TSpoiling(boost::shared_ptr<ICIMNamespace> inner) : inner_(std::move(inner)) {}
    boost::shared_ptr<ICIMClass> GetClass(const std::string& name, const TPropertyMap& context) override {
      const auto found = inner_->GetClass(name, context);
      const_cast<TPropertyMap&>(context).clear();
      return found;
    }
    std::string GetMachineType() const override { return inner_->GetMachineType(); }

   private:
    boost::shared_ptr<ICIMNamespace> inner_;
  };
  THostProbe probe;
  AddDelegate("Cache6101", "KROSG_L3Cache_StatisticData");
  std::vector<boost::shared_ptr<ICIMClass>> classes = {Class("Cache6101"), Class("Cache6101")};
  plugin.GetData(boost::make_shared<TSpoiling>(probe.Wrap(boost::shared_ptr<ICIMNamespace>(ns))), classes);
  EXPECT_EQ(probe.CallsWith("namespace.GetClass"),
            (std::vector<std::string>{"namespace.GetClass(KROSG_PCIIOBRIDGE_StatisticData) {request}",
                                      "namespace.GetClass(KROSG_MEMCTL_StatisticData) {request}",
                                      "namespace.GetClass(KROSG_L3Cache_StatisticData) {request}",
                                      "namespace.GetClass(KROSG_L3Cache_StatisticData) {request}",
                                      "namespace.GetClass(KROSG_L3Cache_StatisticData) {request}"}));
}

TEST_F(Dispatch, TheVectorIsNotModified) {
  std::vector<boost::shared_ptr<ICIMClass>> classes = {Class("KROSG_Other"), Class("KROSG_DCAPFile"), {}};
  const auto before = classes;
  plugin.GetData(ns, classes);
  EXPECT_EQ(classes, before) << "and what follows the capture files is not looked at";
}

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
