// The order of the steps in decoding a block, and of fetching it, observed by letting one of
// them fail.
#include <gtest/gtest.h>

#include "host/model/failures.h"
#include "jfr/TNOVRequesttorgareg.h"
#include "tests/jfr/blocktest.h"
#include "tests/support/namespaces.h"
#include "tests/support/timezone.h"

namespace tests {
namespace {

class BlockOrder : public TBlockTest {
 protected:
  static TStep Block() { return DotBlock(0).Returns(TBlock().Bytes()); }
};

TEST_F(BlockOrder, WithoutInstancesTheBlockIsReadForNothing) {
  sp.Expect(Block());
  EXPECT_TRUE(Collector(Chip().MaxInstances(0).Record("R", 0)).getData().empty());
  EXPECT_EQ(sp.StepsLeft(), 0U);
}

TEST_F(BlockOrder, ABlocksTimeIsUtcInEveryZone) {
  const TTimeZone zone("XYZ-5:30");
  TBlock block;
  EXPECT_EQ(Collector(Chip()).getTimeStamp(block.Data()).ToString(), "20241231235958.000000+000");
}

TEST_F(BlockOrder, TheMachineTypeIsThatOfTheRequestedClassesNamespace) {
  const auto other = TNamespace::Create();
  other->SetMachineType("4411");
  const auto base = other->AddClass(TClassBuilder(kBridgeBase));
  const auto asked = ns->AddClass(Chip());
  EXPECT_EQ(TJFRErrorData(base, asked).getMachineType(), "6203");
  EXPECT_EQ(TJFRErrorData(asked, base).getMachineType(), "4411");
}

TEST_F(BlockOrder, AnIdentityQueriesTheClassNameAndThenTheMachineType) {
  Collector(Chip());
  const auto named = probe.Wrap(boost::shared_ptr<ICIMClass>(Class(kBridgeBase)));
  probe.Clear();
  collector->getCIMInstanceInfo(named, 0);
  EXPECT_EQ(probe.Calls(), (std::vector<std::string>{std::string(kBridgeBase) + ".GetName() {}",
                                                     "Bridge6203.GetNamespace() {}", "namespace.GetMachineType()"}));
}

TEST_F(BlockOrder, AnIdentityIsLoggedBeforeTheClassNameIsQueried) {
  Collector(Chip());
  const auto named = probe.Wrap(boost::shared_ptr<ICIMClass>(Class(kBridgeBase)));
  probe.Clear();
  logger.FailAt("In getCIMInstanceInfo()");
  EXPECT_THROW(collector->getCIMInstanceInfo(named, 0), std::runtime_error);
  EXPECT_TRUE(probe.Calls().empty());
}

TEST_F(BlockOrder, AnIdentityIsThatOfTheGivenClass) {
  Collector(Chip());
  ns->AddClass(TClassBuilder("KROSG_L3Cache_StatisticData"));
  const TPropertyMap info = collector->getCIMInstanceInfo(Class("KROSG_L3Cache_StatisticData"), 0);
  EXPECT_EQ(TextOf(info, "ElementName"), "Integrated L3 cache module,0");
  EXPECT_EQ(TextOf(info, "InstanceID"), "KROSG:KROSG_L3Cache_StatisticData:6203:0");
}

TEST_F(BlockOrder, EveryDeclarationIsQueriedForNameOriginAndThenSuperclass) {
  ns->AddClass(TClassBuilder("PARENT").Text("InstanceID"));
  Collector(TClassBuilder("Bridge6203", "PARENT").Record("R", 0));
  TBlock block;
  probe.Clear();
  collector->getChipsetErrorRegisterValues(block.Data(), 0);
  EXPECT_EQ(probe.Calls(),
            (std::vector<std::string>{"Bridge6203.EnumeratePropertyDecls() {}", "InstanceID.GetName() {}",
                                      "InstanceID.GetClassOrigin() {}", "PARENT.GetName() {}",
                                      "Bridge6203.GetSuperClass() {}", "PARENT.GetName() {}",
                                      "Bridge6203.GetName() {}",  // is it one of its own registers?
                                      "R.GetName() {}", "R.GetClassOrigin() {}", "Bridge6203.GetName() {}",
                                      "Bridge6203.GetSuperClass() {}", "PARENT.GetName() {}", "Bridge6203.GetName() {}",
                                      "R.GetType() {}", "R.GetQualifier(Index) {}", "R.GetQualifier(MaxLen) {}"}));
}

TEST_F(BlockOrder, ADeclarationIsLoggedBeforeTheClassNameIsQueried) {
  Collector(TClassBuilder("Bridge6203", kBridgeBase).Record("R", 0));
  TBlock block;
  probe.Clear();
  logger.FailAt("propertyDecl = InstanceID. classOrigin = KROSG_StatisticBase. superClass = " +
                std::string(kBridgeBase));
  EXPECT_THROW(collector->getChipsetErrorRegisterValues(block.Data(), 0), std::runtime_error);
  EXPECT_TRUE(probe.CallsWith("Bridge6203.GetName").empty());
}

TEST_F(BlockOrder, AClassWithoutSuperclassAssertsEvenIfNothingIsToBeRead) {
  Collector(TClassBuilder("Bridge6203").Text("InstanceID"));
  TBlock block;
  EXPECT_THROW(collector->getChipsetErrorRegisterValues(block.Data(), 0), TAssertionFailure);
}

TEST_F(BlockOrder, DecodingIsLoggedBeforeTheEnumeration) {
  Collector(Chip().Record("R", 0));
  TBlock block;
  probe.Clear();
  logger.FailAt("In getChipsetErrorRegisterValues()");
  EXPECT_THROW(collector->getChipsetErrorRegisterValues(block.Data(), 0), std::runtime_error);
  EXPECT_TRUE(probe.Calls().empty());
}

class RequestOrder : public TPartTest {
 protected:
  RequestOrder() { sp.takesDotCommands = true; }
};

TEST_F(RequestOrder, DotCommandSupportIsLoggedBeforeTheCheck) {
  logger.FailAt("TNOVRequestTorgaReg()::Is Dotcommand.");
  EXPECT_THROW(TNOVRequestTorgaReg(), std::runtime_error);
  EXPECT_EQ(sp.Discoveries(), 1);
}

TEST_F(RequestOrder, ARequestIsLoggedBeforeItIsSent) {
  TNOVRequestTorgaReg transport;
  TBytes out(14);
  unsigned short length = 0;
  logger.FailAt("Entered torgareg request.");
  EXPECT_THROW(transport.getData(0, 1, out.data(), &length), std::runtime_error);
  logger.FailAt("Entered get time stamp request");
  EXPECT_THROW(transport.getTimeStamp(out.data(), &length), std::runtime_error);
}

TEST_F(RequestOrder, ACompletionCodeAddsNothingToATranscript) {
  TNOVRequestTorgaReg transport;
  TBytes out(14);
  unsigned short length = 0;
  sp.Expect({Register(0, 1).Answers(TBytes(14, 1)).WithCode(0xC1), Timestamp().Answers({1, 2, 3, 4}).WithCode(0xC1)});
  logger.Clear();
  EXPECT_FALSE(transport.getData(0, 1, out.data(), &length));
  EXPECT_FALSE(transport.getTimeStamp(out.data(), &length));
  EXPECT_EQ(logger.OfSeverity(4),
            (std::vector<TLine>{Verbose("command completed checking success...\n\nThe response length is 23"),
                                Verbose("Command completed checking success...\n")}));
}

}  // namespace
}  // namespace tests
