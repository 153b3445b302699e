// What the plan says of each kind of class, on machines with and without a way to it.
#include "host/profile/plan.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/schema/collectorneeds.h"
#include "host/schema/schemareader.h"
#include "tests/support/classbuilder.h"
#include "tests/support/namespaces.h"

namespace tests {
namespace {

using CollectorProfile::EPath;
using testing::ElementsAre;
using TAddresses = std::vector<std::uint32_t>;

constexpr TPlanServer kDemo = {2, true, true, true, 2};
const std::string kVoBridge = "KROSG_VO_PCIIOBRIDGE_StatisticData";
const std::string kVoMemory = "KROSG_VO_MEMCTL_StatisticData";
const std::string kMemoryBase = "KROSG_MEMCTL_StatisticData";

class Plan : public testing::Test {
 protected:
  Plan() : schema_(TNamespace::Create()) {
    schema_->AddClass(TClassBuilder("Top").Identification());
    schema_->AddClass(TClassBuilder("Chipset", "Top"));
    for (const std::string_view base : CollectorProfile::kJfrBaseClasses) {
      schema_->AddClass(TClassBuilder(std::string(base), "Chipset"));
    }
  }

  boost::shared_ptr<TCIMClass> Add(const TClassBuilder& builder) { return schema_->AddClass(builder); }
  static TClassBuilder Class(const std::string& name, const std::string& super = "Chipset") {
    return TClassBuilder(name, super).Machines({"6203"}).MaxInstances(2);
  }

  /// Each inner list of names is one request.
  TPlan Make(const std::vector<std::vector<std::string>>& requests, const TPlanServer& server = kDemo) const {
    std::vector<std::vector<TAskedClass>> asked;
    for (const auto& names : requests) {
      asked.emplace_back();
      for (const std::string& name : names) asked.back().push_back({schema_->FindClass(name), true});
    }
    const auto isCollectable = [this](const TCIMClass& cimClass) { return MeetsCollectorNeeds(*schema_, cimClass); };
    return MakePlan({*schema_, "6203", server, asked, isCollector, isCollectable});
  }
  TPlannedClass Planned(const std::string& name, const TPlanServer& server = kDemo) const {
    return Make({{name}}, server).classes.at(0);
  }
  std::string WhyNot(const std::string& name, const TPlanServer& server = kDemo) const {
    return Planned(name, server).whyNotServed;
  }

  boost::shared_ptr<TNamespace> schema_;
  bool isCollector = true;
};

// The shipped schema on the machine of the demo server.
class PlanOfTheDemo : public Plan {
 protected:
  PlanOfTheDemo() {
    TFileReader reader;
    schema_ = ReadSchema({VELHOST_SCHEMA_FOLDER}, reader).cimNamespace;
  }
};

TEST_F(PlanOfTheDemo, AT4BridgeHasTenRegistersOfTwoChips) {
  const TPlan plan = Make({{"KROSG_T4_PCIIOBRIDGE_StatisticData"}});
  const TPlannedClass& bridge = plan.classes.at(0);
  EXPECT_EQ(bridge.turn, ETurn::kPlanned);
  EXPECT_EQ(bridge.path, EPath::kR8);
  EXPECT_TRUE(bridge.isBridge);
  EXPECT_EQ(bridge.instances, 2U);
  EXPECT_EQ(bridge.readsOfInstance, 10U);
  TAddresses addresses;
  std::vector<std::string> narrow;
  for (const TPlannedRegister& one : bridge.registers) {
    ASSERT_EQ(one.addresses.size(), 1U);
    addresses.push_back(one.addresses[0]);
    if (one.isNarrow) narrow.push_back(bridge.cimClass->Properties()[one.property]->Definition().name);
  }
  EXPECT_THAT(addresses, ElementsAre(0x0F0000, 0x0F0008, 0x0D0100, 0x0D0108, 0x0D0110, 0x0D0118, 0x0D0120, 0x0D0128,
                                     0x0D0130, 0x0D0138));
  EXPECT_THAT(narrow, ElementsAre("ChipIdentification", "UncorrectableErrorStatus", "UncorrectableErrorMask",
                                  "UncorrectableErrorSeverity", "CorrectableErrorStatus", "FirstErrorPointer"));
  EXPECT_EQ(plan.RegisterReads(), 20U);
  EXPECT_EQ(plan.Total(), 20U);
}

TEST_F(PlanOfTheDemo, TwoClassesAreTwentyReadsAndTwoBlocks) {
  const TPlan plan = Make({{"KROSG_T4_PCIIOBRIDGE_StatisticData"}, {"KROSG_J2_MEMCTL_StatisticData"}});
  EXPECT_EQ(plan.RegisterReads(), 20U);
  EXPECT_EQ(plan.DotCommands(), 2U);
  EXPECT_EQ(plan.Total(), 22U);
  EXPECT_THAT(plan.classes.at(1).registers.at(8).index, 130);
}

TEST_F(PlanOfTheDemo, AllClassesTogetherAre86) {
  std::vector<std::vector<std::string>> requests;
  for (const auto& entry : CollectorProfile::CollectableClasses(*schema_, "6203")) {
    if (entry.served) requests.push_back({entry.cimClass->Name()});
  }
  EXPECT_EQ(requests.size(), 8U);
  const TPlan plan = Make(requests);
  EXPECT_EQ(plan.RegisterReads(), 80U);
  EXPECT_EQ(plan.DotCommands(), 6U);
  EXPECT_EQ(plan.Total(), 86U);
}

TEST_F(Plan, APlannedRegisterHasItsMeaning) {
  Add(Class(kVoBridge)
          .Bytes("Status", {{"Offset", Numbers({0x10})},
                            {"MaxLen", Number(TType::kUint32, 4)},
                            {"Role", "errors"},
                            {"MaskedBy", "Mask"},
                            {"Fields", Strings({"3 Timeout", "32 Beyond"})}})
          .Register("Mask", 0x14, 4));
  const TPlannedClass planned = Planned(kVoBridge);
  ASSERT_TRUE(planned.meaning);
  ASSERT_EQ(planned.meaning->registers.size(), planned.registers.size());
  const TRegisterMeaning& status = planned.meaning->registers[0];
  EXPECT_EQ(status.property, planned.registers[0].property);
  EXPECT_EQ(status.width, 32U);
  EXPECT_EQ(status.role, ERole::kErrors);
  EXPECT_EQ(status.maskedBy, 1U);
  ASSERT_EQ(status.fields.size(), 1U);
  EXPECT_EQ(status.fields[0].name, "Timeout");
  ASSERT_EQ(planned.slips.size(), 1U) << "a slip does not keep the class from being planned";
  EXPECT_EQ(planned.slips[0].message, "found bit 32, expected 0 to 31");
}

TEST_F(Plan, RegistersOfBlocksHave64BitsWhateverTheirLength) {
  Add(Class("KROSG_J", kMemoryBase)
          .Bytes("A", {{"Index", Number(TType::kUint16, 3)}, {"MaxLen", Number(TType::kUint32, 4)}}));
  EXPECT_EQ(Planned("KROSG_J").meaning->registers.at(0).width, 64U);
}

TEST_F(Plan, WhatIsNotPlannedHasNoMeaning) {
  Add(TClassBuilder("KROSG_DCAPFile").CaptureProperties());
  Add(Class(kVoBridge).Bytes("A", {{"Offset", Numbers({0x10})}}));
  EXPECT_FALSE(Planned("KROSG_DCAPFile").meaning);
  EXPECT_FALSE(Planned(kVoBridge).meaning) << "a register without its length";
}

TEST_F(Plan, AClassThatIsNamedTwiceHasTwoTurns) {
  Add(Class(kVoBridge).Register("A", 0x10, 8));
  const TPlan plan = Make({{kVoBridge}, {kVoBridge}});
  ASSERT_EQ(plan.classes.size(), 1U);
  const TPlannedTurn second = plan.requests.at(1).turns.at(0);
  EXPECT_EQ(second.time, 2U);
  EXPECT_EQ(plan.RegisterReads(), 4U);
  EXPECT_EQ(KeyOf(plan.classes[0], 1, {0, 1}), "KROSG_VO_PCIIOBRIDGE_StatisticData/node0/instance1");
  EXPECT_EQ(KeyOf(plan.classes[0], second.time, {0, 1}), "KROSG_VO_PCIIOBRIDGE_StatisticData/node0/instance1#2");
}

TEST_F(Plan, KeysOfTheOtherPaths) {
  Add(Class("KROSG_J", kMemoryBase).Record("A", 3));
  Add(TClassBuilder("KROSG_DCAPFile").CaptureProperties());
  EXPECT_EQ(KeyOf(Planned("krosg_j"), 1, {1, 0}), "KROSG_J/sp1/instance0") << "as the schema spells it";
  EXPECT_EQ(KeyOf(Planned("KROSG_DCAPFile"), 3, {1, 2}), "KROSG_DCAPFile/node1/zyn_err#3");
}

TEST_F(Plan, TheCaptureClassEndsItsRequest) {
  Add(Class(kVoMemory).Register("A", 0x10, 8));
  Add(TClassBuilder("KROSG_DCAPFile").CaptureProperties());
  const TPlan plan = Make({{kVoMemory, "KROSG_DCAPFile", kVoMemory}, {kVoMemory}});
  EXPECT_TRUE(plan.requests.at(0).turns.at(1).isReached);
  EXPECT_FALSE(plan.requests.at(0).turns.at(2).isReached);
  EXPECT_TRUE(plan.requests.at(1).turns.at(0).isReached);
  EXPECT_EQ(plan.RegisterReads(), 4U) << "two turns of two instances";
}

TEST_F(Plan, ABlockClassOfThatNameEndsNothing) {
  Add(Class("KROSG_DCAPFile", kMemoryBase).CaptureProperties().Record("A", 3));
  Add(Class(kVoMemory).Register("A", 0x10, 8));
  const TPlan plan = Make({{"KROSG_DCAPFile", kVoMemory}});
  EXPECT_EQ(plan.classes.at(0).path, EPath::kJfr);
  EXPECT_TRUE(plan.requests.at(0).turns.at(1).isReached);
}

TEST_F(Plan, ABaseClassIsIdle) {
  EXPECT_EQ(Planned(kMemoryBase).turn, ETurn::kIdle);
  EXPECT_EQ(WhyNot(kMemoryBase), "none of its subclasses serves this machine");
  Add(Class("KROSG_J", kMemoryBase).Record("A", 3));
  EXPECT_EQ(Planned(kMemoryBase).turn, ETurn::kIdle);
  EXPECT_EQ(WhyNot(kMemoryBase), "KROSG_J serves this machine");
}

TEST_F(Plan, AHiddenBlockClassIsIdle) {
  Add(Class("KROSG_First", kMemoryBase).Record("A", 3));
  Add(Class("KROSG_Second", kMemoryBase).Record("A", 3));
  Add(TClassBuilder("KROSG_Other", kMemoryBase).Machines({"4411", "4414"}).MaxInstances(1));
  EXPECT_EQ(Planned("KROSG_First").turn, ETurn::kPlanned);
  EXPECT_EQ(WhyNot("KROSG_First"), "");
  EXPECT_EQ(Planned("KROSG_Second").turn, ETurn::kIdle);
  EXPECT_EQ(WhyNot("KROSG_Second"), "KROSG_First serves this machine");
  EXPECT_EQ(WhyNot("KROSG_Other"), "its machine types are \"4411\", \"4414\"");
}

TEST_F(Plan, AnAddressedClassOfOtherMachinesIsIdle) {
  Add(TClassBuilder(kVoMemory, "Chipset").Machines({"4411"}).MaxInstances(2).Register("A", 0x10, 8));
  const TPlannedClass planned = Planned(kVoMemory);
  EXPECT_EQ(planned.turn, ETurn::kIdle);
  EXPECT_EQ(planned.path, EPath::kR8);
  EXPECT_EQ(planned.whyNotServed, "its machine types are \"4411\"");
  EXPECT_EQ(Make({{kVoMemory}}).Total(), 0U);
}

TEST_F(Plan, ALongListOfMachineTypesIsCut) {
  Add(TClassBuilder(kVoMemory, "Chipset").Machines({"1", "2", "3", "4", "5", "7", "8", "9", "10", "11"}));
  EXPECT_EQ(WhyNot(kVoMemory),
            "its machine types are \"1\", \"2\", \"3\", \"4\", \"5\", \"7\", \"8\", \"9\" and 2 more");
  Add(TClassBuilder(kVoBridge, "Chipset").Machines({}).MaxInstances(1));
  EXPECT_EQ(WhyNot(kVoBridge), "it lists no machine types");
}

TEST_F(Plan, AnyOtherClassIsIdle) {
  EXPECT_EQ(Planned("Chipset").turn, ETurn::kIdle);
  EXPECT_EQ(WhyNot("Chipset"), "the collector does not support this class");
}

TEST_F(Plan, AnAddressedClassWithoutMachineTypesIsUnknown) {
  Add(TClassBuilder(kVoMemory, "Chipset").MaxInstances(2));
  EXPECT_EQ(Planned(kVoMemory).turn, ETurn::kUnknown);
  Add(TClassBuilder(kVoBridge, "Chipset").With("SupportedMachineTypes", TCIMValue("6203")).MaxInstances(1));
  EXPECT_EQ(Planned(kVoBridge).turn, ETurn::kUnknown) << "not an array";
}

TEST_F(Plan, AClassWithAnErrorOfTheSchemaCheckIsUnknown) {
  Add(Class(kVoMemory).Bytes("A", {{"Offset", TCIMValue(1)}}));
  Add(Class("KROSG_J", kMemoryBase).Bytes("A"));
  Add(TClassBuilder("KROSG_DCAPFile").Text("FileName"));
  EXPECT_EQ(Planned(kVoMemory).turn, ETurn::kUnknown);
  EXPECT_EQ(WhyNot(kVoMemory), "") << "this machine is one of its machines";
  EXPECT_EQ(Planned("KROSG_J").turn, ETurn::kUnknown);
  EXPECT_EQ(Planned("KROSG_DCAPFile").turn, ETurn::kUnknown);
}

TEST_F(Plan, AClassWithARegisterOfAnotherTypeIsUnknown) {
  const TQualifiers qualifiers = {{"Offset", TCIMValue(1)}, {"MaxLen", TCIMValue(8)}, {"Index", TCIMValue(1)}};
  Add(Class(kVoMemory).Property(TType::kUint8, "A", false, qualifiers));
  Add(Class("KROSG_J", kMemoryBase).Property(TType::kUint16, "A", true, qualifiers));
  EXPECT_EQ(Planned(kVoMemory).turn, ETurn::kUnknown);
  EXPECT_EQ(Planned("KROSG_J").turn, ETurn::kUnknown);
}

TEST_F(Plan, NothingIsKnownOfAnotherPlugin) {
  Add(Class(kVoMemory).Register("A", 0x10, 8));
  isCollector = false;
  EXPECT_EQ(Planned(kVoMemory).turn, ETurn::kUnknown);
  EXPECT_EQ(Planned("Chipset").turn, ETurn::kUnknown);
  EXPECT_EQ(WhyNot("Chipset"), "");
}

TEST_F(Plan, AddressesKeep24Bits) {
  Add(Class(kVoMemory)
          .Register("Wide", 0x12ABCDEF, 8)
          .Register("Several", {0xFF000001, 0x000002}, 8)
          .Bytes("None", {{"Offset", Numbers({})}, {"MaxLen", TCIMValue(8)}}));
  const TPlannedClass planned = Planned(kVoMemory);
  EXPECT_EQ(planned.registers.at(0).addresses, (TAddresses{0xABCDEF}));
  EXPECT_EQ(planned.registers.at(1).addresses, (TAddresses{0x000001, 0x000002}));
  EXPECT_EQ(planned.registers.at(2).addresses, TAddresses{});
  EXPECT_EQ(planned.readsOfInstance, 3U);
}

TEST_F(Plan, ANullAddressIsZero) {
  const TCIMValue list(TType::kUint32, 0, {TCIMValue(0x10), TCIMValue()});
  Add(Class(kVoMemory).Bytes("A", {{"Offset", list}, {"MaxLen", TCIMValue(8)}}));
  EXPECT_EQ(Planned(kVoMemory).registers.at(0).addresses, (TAddresses{0x10, 0}));
}

TEST_F(Plan, OnlyALengthOfFourIsNarrow) {
  Add(Class(kVoMemory).Register("Four", 1, 4).Register("Eight", 2, 8).Register("Three", 3, 3));
  const auto& registers = Planned(kVoMemory).registers;
  EXPECT_TRUE(registers.at(0).isNarrow);
  EXPECT_FALSE(registers.at(1).isNarrow);
  EXPECT_FALSE(registers.at(2).isNarrow);
  EXPECT_FALSE(Planned(kVoMemory).isBridge);
}

TEST_F(Plan, RegistersAreNamedByTheirPlaceInTheClass) {
  Add(Class("KROSG_J", kMemoryBase).Record("A", 7).Text("InstanceID").Record("ElementName", 9));
  const TPlannedClass planned = Planned("KROSG_J");
  ASSERT_EQ(planned.registers.size(), 1U) << "Top declares ElementName first";
  EXPECT_EQ(planned.registers[0].property, 4U);
  EXPECT_EQ(planned.registers[0].index, 7);
}

TEST_F(Plan, TheNumberOfBlocksKeepsEightBits) {
  Add(Class("KROSG_J", kMemoryBase).Record("A", 7));
  EXPECT_EQ(Make({{"KROSG_J"}}, {1, true, true, true, 300}).DotCommands(), 44U);
  EXPECT_EQ(Make({{"KROSG_J"}}, {1, true, true, true, 300}).blocks, 44U);
  EXPECT_EQ(WhyNot("KROSG_J", {1, true, true, true, 256}), "no service processor was found");
}

TEST_F(Plan, WithoutCommunicationThereAreNoBlocks) {
  Add(Class("KROSG_J", kMemoryBase).Record("A", 7));
  const TPlan plan = Make({{"KROSG_J"}}, {1, true, true, false, 2});
  EXPECT_EQ(plan.DotCommands(), 0U);
  EXPECT_TRUE(plan.classes.at(0).hasWay) << "its blocks are unread";
  EXPECT_EQ(plan.classes.at(0).whyNotServed, "");
}

TEST_F(Plan, WithoutAWayAClassStaysPlanned) {
  Add(Class("KROSG_J", kMemoryBase).Record("A", 7));
  Add(Class(kVoMemory).Register("A", 0x10, 8));
  Add(TClassBuilder("KROSG_DCAPFile").CaptureProperties());
  const TPlanServer nothing = {0, true, false, false, 2};
  EXPECT_EQ(WhyNot("KROSG_J", nothing), "no service processor accepts dot commands");
  EXPECT_EQ(WhyNot(kVoMemory, nothing), "there is no BMC node");
  EXPECT_EQ(WhyNot("KROSG_DCAPFile", nothing), "there is no BMC node");
  const TPlan plan = Make({{"KROSG_J"}, {kVoMemory}}, nothing);
  EXPECT_EQ(plan.classes.at(1).turn, ETurn::kPlanned);
  EXPECT_FALSE(plan.classes.at(1).hasWay);
  EXPECT_EQ(plan.RegisterReads(), 2U) << "the collector sends them all the same";
  EXPECT_EQ(plan.DotCommands(), 0U);
}

}  // namespace
}  // namespace tests
