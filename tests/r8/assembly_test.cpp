// The instances of an R8 class.
#include <gtest/gtest.h>

#include "host/model/failures.h"
#include "tests/r8/registertest.h"
#include "tests/support/namespaces.h"

namespace tests {
namespace {

class Assembly : public TRegisterTest {
 protected:
  void ExpectInstance(std::uint8_t chipSelector) {
    sp.Expect(Register(chipSelector, 0x10).Answers(OneToEight()));
    sp.Expect({Timestamp().Answers({0, 0, 0, 1}), Timestamp().Answers({0, 0, 0, 2})});
  }
};

TEST_F(Assembly, TwoBridges) {
  ExpectInstance(1);
  ExpectInstance(2);
  const auto maps = Collector(Chip(kVoBridge).MaxInstances(2).Register("R", 0x10, 8)).getData();
  ASSERT_EQ(maps.size(), 2U);
  EXPECT_EQ(TextOf(maps[0], "InstanceID"), "KROSG:KROSG_VO_PCIIOBRIDGE_StatisticData:6203:0");
  EXPECT_EQ(TextOf(maps[1], "InstanceID"), "KROSG:KROSG_VO_PCIIOBRIDGE_StatisticData:6203:1");
  EXPECT_EQ(TextOf(maps[0], "ElementName"), "PCI I/O bridge,0");
  EXPECT_EQ(TextOf(maps[1], "ElementName"), "PCI I/O bridge,1");
  EXPECT_EQ(TextOf(maps[1], "MachineType"), "6203");
  EXPECT_EQ(TextOf(maps[1], "R"), "{0, 0, 16, 8, 7, 6, 5, 4, 3, 2, 1, 0, 0, 0}");
  EXPECT_EQ(maps[1].size(), 5U);
}

TEST_F(Assembly, WithoutARegisterNeitherMachineTypeNorTimeIsQueried) {
  EXPECT_TRUE(Collector(Chip()).getInstanceData("any", 0).empty());
  EXPECT_TRUE(probe.CallsWith("GetMachineType").empty());
}

TEST_F(Assembly, ElementNamesByClass) {
  struct TCase {
    const char* name;
    const char* description;
  };
  for (const TCase& one :
       {TCase{kVoMemory, "Memory controller with integrated L4 cache module,0"},
        TCase{kT4Memory, "Memory controller with integrated L4 cache module,0"}, TCase{kVoBridge, "PCI I/O bridge,0"},
        TCase{kT4Bridge, "PCI I/O bridge,0"}, TCase{"KROSG_L3Cache_StatisticData", "PCI I/O bridge,0"},
        TCase{"KROSG_MEMCTL_StatisticData", "PCI I/O bridge,0"}}) {
    StartAnew();
    ExpectInstance(std::string(one.name).find("_PCIIO") != std::string::npos ? 1 : 0);
    const auto maps = Collector(Chip(one.name).MaxInstances(1).Register("R", 0x10, 8)).getData();
    EXPECT_EQ(TextOf(maps.at(0), "ElementName"), one.description) << one.name;
  }
}

TEST_F(Assembly, AnyMachineTypeIsUsedUnchanged) {
  for (const char* const type : {"", "4411", "a:b"}) {
    StartAnew();
    ns->SetMachineType(type);
    ExpectInstance(0);
    const auto maps = Collector(Chip().MaxInstances(1).Register("R", 0x10, 8)).getData();
    EXPECT_EQ(TextOf(maps.at(0), "InstanceID"), std::string("KROSG:KROSG_VO_MEMCTL_StatisticData:") + type + ":0");
    EXPECT_EQ(TextOf(maps.at(0), "MachineType"), type);
  }
}

TEST_F(Assembly, NoInstancesMeansNoTraffic) {
  EXPECT_TRUE(Collector(Chip().MaxInstances(0).Register("R", 0x10, 8)).getData().empty());
  EXPECT_EQ(logger.Lines(), std::vector<TLine>{Debug("Class supports 0 instances on this machine")});
}

TEST_F(Assembly, TheCountIsAnUnsigned16BitNumber) {
  EXPECT_EQ(Collector(Chip().With("MaxInstanceCount", TCIMValue(65535 + 1))).getInstanceCount(), 0);
  EXPECT_EQ(Collector(Chip(kVoBridge).With("MaxInstanceCount", TCIMValue(-1))).getInstanceCount(), 65535);
  EXPECT_EQ(Collector(Chip(kT4Memory).With("MaxInstanceCount", TCIMValue("0x10"))).getInstanceCount(), 16);
  EXPECT_EQ(Collector(Chip(kT4Bridge).With("MaxInstanceCount", TCIMValue())).getInstanceCount(), 0);
}

TEST_F(Assembly, AChipThatAnswersNothingHasAnEmptyMap) {
  sp.Expect(Register(1, 0x10).Fails(0xCB));
  ExpectInstance(2);
  sp.Expect(Register(3, 0x10).Lost());
  const auto maps = Collector(Chip(kT4Bridge).MaxInstances(3).Register("R", 0x10, 8)).getData();
  ASSERT_EQ(maps.size(), 3U);
  EXPECT_TRUE(maps[0].empty());
  EXPECT_EQ(TextOf(maps[1], "ElementName"), "PCI I/O bridge,1");
  EXPECT_TRUE(maps[2].empty()) << "and no time was asked for";
}

TEST_F(Assembly, OnlyTheFailedRegisterIsMissing) {
  sp.Expect(Register(0, 0x10).Fails(0xCB));
  sp.Expect(Register(0, 0x20).Answers(OneToEight()));
  sp.Expect(Timestamp().Lost());
  const auto maps = Collector(Chip().MaxInstances(1).Register("A", 0x10, 8).Register("B", 0x20, 8)).getData();
  EXPECT_EQ(TextOf(maps.at(0), "A"), "(absent)");
  EXPECT_NE(TextOf(maps.at(0), "B"), "(absent)");
}

TEST_F(Assembly, ALineForTheClassAndOneForEachInstance) {
  for (std::uint8_t i = 1; i <= 2; ++i) sp.Expect(Register(i, 0x10).Lost());
  Collector(Chip(kVoBridge).MaxInstances(2).Register("R", 0x10, 8)).getData();
  EXPECT_EQ(logger.Lines().front(), Debug("Class supports 2 instances on this machine"));
  EXPECT_EQ(logger.StartingWith("Current instance index "),
            (std::vector<TLine>{Debug("Current instance index 0"), Debug("Current instance index 1")}));
}

TEST_F(Assembly, TheSecondTimeIsStored) {
  ExpectInstance(0);
  const auto maps = Collector(Chip().MaxInstances(1).Register("R", 0x10, 8)).getData();
  EXPECT_TRUE(TextOf(maps.at(0), "StatisticTime").starts_with("19700101000002."));
}

TEST_F(Assembly, WithoutATimeOnlyTheTimeIsMissing) {
  sp.Expect({Register(0, 0x10).Answers(OneToEight()), Timestamp().Fails(0xCB)});
  const auto maps = Collector(Chip().MaxInstances(1).Register("R", 0x10, 8)).getData();
  EXPECT_EQ(TextOf(maps.at(0), "StatisticTime"), "(absent)");
  EXPECT_EQ(TextOf(maps.at(0), "InstanceID"), "KROSG:KROSG_VO_MEMCTL_StatisticData:6203:0");
  EXPECT_EQ(maps.at(0).size(), 4U);
}

TEST_F(Assembly, ATimeThatFailsOnTheSecondReadIsNull) {
  sp.Expect({Register(0, 0x10).Answers(OneToEight()), Timestamp().Answers({0, 0, 0, 1}), Timestamp().Lost()});
  const auto maps = Collector(Chip().MaxInstances(1).Register("R", 0x10, 8)).getData();
  ASSERT_TRUE(maps.at(0).contains("StatisticTime"));
  EXPECT_TRUE(maps.at(0).at("StatisticTime").IsNull());
}

TEST_F(Assembly, AnExceptionOnTheSecondInstanceKeepsTheFirst) {
  probe.FailAt("R.GetQualifier(MaxLen) {}", 13, 2);
  ExpectInstance(1);
  const auto maps = Collector(Chip(kVoBridge).MaxInstances(3).Register("R", 0x10, 8)).getData();
  ASSERT_EQ(maps.size(), 1U);
  EXPECT_EQ(TextOf(maps[0], "ElementName"), "PCI I/O bridge,0");
  EXPECT_EQ(logger.Lines().back(),
            Debug("Encountered exception Type mismatch (status 13). during\t\t\t\t\t\t\t\tthe collection of register "
                  "data."));
}

TEST_F(Assembly, AnExceptionWhileCountingGivesAnEmptyList) {
  EXPECT_TRUE(Collector(Chip().With("MaxInstanceCount", TCIMValue("many"))).getData().empty());
  EXPECT_EQ(logger.Lines(),
            std::vector<TLine>{Debug("Encountered exception Type mismatch (status 13). during\t\t\t\t\t\t\t\tthe "
                                     "collection of register data.")});
}

TEST_F(Assembly, OtherExceptionsPropagate) {
  EXPECT_THROW(Collector(Chip().Register("R", 0x10, 8)).getData(), TAssertionFailure) << "no MaxInstanceCount";
  probe.DoAt(std::string(kVoBridge) + ".EnumeratePropertyDecls() {}", [] { throw std::runtime_error("other"); });
  EXPECT_THROW(Collector(Chip(kVoBridge).MaxInstances(1)).getData(), std::runtime_error);
}

TEST_F(Assembly, NothingIsCachedBetweenInstances) {
  ExpectInstance(1);
  ExpectInstance(2);
  Collector(Chip(kVoBridge).MaxInstances(2).Register("R", 0x10, 8)).getData();
  EXPECT_EQ(probe.CallsWith("R.GetQualifier(Offset)").size(), 2U);
  EXPECT_EQ(probe.CallsWith("R.GetQualifier(MaxLen)").size(), 2U);
  EXPECT_EQ(probe.CallsWith("GetQualifier(MaxInstanceCount)").size(), 1U);
  // Per instance: for the property, its conversion, and the identity.
  EXPECT_EQ(probe.CallsWith("namespace.GetMachineType").size(), 6U);
  for (const std::string& call : probe.CallsWith(" {")) EXPECT_TRUE(call.ends_with(" {}")) << call;
}

TEST_F(Assembly, WithoutAClassThereIsNoMachineType) {
  R8ErrorData none((boost::shared_ptr<ICIMClass>()));
  EXPECT_EQ(none.getMachineType(), "");
  EXPECT_THROW(none.getData(), TAssertionFailure);
}

TEST_F(Assembly, TheClassLivesAsLongAsTheCollector) {
  const auto cimClass = ns->AddClass(Chip().MaxInstances(0));
  const auto before = cimClass.use_count();
  {
    const R8ErrorData holder(cimClass);
    EXPECT_EQ(cimClass.use_count(), before + 1);
  }
  EXPECT_EQ(cimClass.use_count(), before);
}

}  // namespace
}  // namespace tests
