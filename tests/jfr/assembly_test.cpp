// The instances of a JFR class, over all service processors.
#include <gtest/gtest.h>

#include "host/model/failures.h"
#include "nkrovel20/tvelexception.h"
#include "tests/jfr/blocktest.h"
#include "tests/support/namespaces.h"
#include "tests/support/tracefile.h"

namespace tests {
namespace {

using TMaps = std::vector<TPropertyMap>;

class BlockAssembly : public TBlockTest {
 protected:
  TMaps Collect(std::uint16_t count, const std::vector<TStep>& steps) {
    sp.serviceProcessors = static_cast<int>(steps.size());
    sp.Expect(steps);
    return Collector(Chip().MaxInstances(count).Record("R", 0)).getData();
  }
  TStep Block(int serviceProcessor) { return DotBlock(serviceProcessor).Returns(TBlock().Bytes()); }
};

const TLine kUnable = Debug("Unable to retrieve engineering information.");

TEST_F(BlockAssembly, OneInstance) {
  const TMaps maps = Collect(1, {Block(0)});
  ASSERT_EQ(maps.size(), 1U);
  EXPECT_EQ(maps[0].size(), 5U);
  EXPECT_EQ(TextOf(maps[0], "InstanceID"), "KROSG:KROSG_PCIIOBRIDGE_StatisticData:6203:0");
  EXPECT_EQ(TextOf(maps[0], "ElementName"), "PCI I/O bridge,0");
  EXPECT_EQ(TextOf(maps[0], "MachineType"), "6203");
  EXPECT_EQ(TextOf(maps[0], "StatisticTime"), "20241231235958.000000+000");
  EXPECT_EQ(TextOf(maps[0], "R"), "{7, 8, 9, 32, 61, 32, 10, 11, 12, 13, 14, 15, 16, 17}");
}

TEST_F(BlockAssembly, TwoServiceProcessorsWithThreeInstancesShareOneIdentity) {
  const TMaps maps = Collect(3, {Block(0), Block(1)});
  ASSERT_EQ(maps.size(), 6U);
  for (const TPropertyMap& map : maps) {
    EXPECT_EQ(TextOf(map, "InstanceID"), "KROSG:KROSG_PCIIOBRIDGE_StatisticData:6203:0");
    EXPECT_EQ(TextOf(map, "ElementName"), "PCI I/O bridge,0");
  }
  // Instance 1 starts at 7 + 2048 = 0x807; instance 2 is beyond the end of the block.
  EXPECT_EQ(NumbersOf(maps[1].at("R"))[0], 7U);
  EXPECT_EQ(NumbersOf(maps[2].at("R"))[0], 48U);
}

TEST_F(BlockAssembly, TheTraceAroundABlock) {
  Collect(0, {Block(0)});
  EXPECT_EQ(logger.Lines(),
            (std::vector<TLine>{Debug("Class supports 0 instances on this machine"), Debug("fSPInstances = 1."),
                                Verbose("sendCommand CmdStatus return 1with a returnDataLen of 4096"),
                                Debug("Returned Data:\n"), Debug(DumpText(TBlock().Bytes(), 4097))}));
}

TEST_F(BlockAssembly, NoServiceProcessorMeansTwoLines) {
  EXPECT_TRUE(Collect(3, {}).empty());
  EXPECT_EQ(logger.Lines(),
            (std::vector<TLine>{Debug("Class supports 3 instances on this machine"), Debug("fSPInstances = 0.")}));
}

TEST_F(BlockAssembly, ThreeHundredServiceProcessorsCountAsFortyFour) {
  for (int i = 0; i < 44; ++i) sp.Expect(Block(i));
  sp.serviceProcessors = 300;
  EXPECT_EQ(Collector(Chip().MaxInstances(2).Record("R", 0)).getData().size(), 88U);
  EXPECT_EQ(logger.Lines()[1], Debug("fSPInstances = 44."));
}

TEST_F(BlockAssembly, DiscoveryHappensOncePerCollector) {
  Collect(2, {Block(0), Block(1)});
  // Each command checks once more whether dot commands are supported.
  EXPECT_EQ(sp.Discoveries(), 5);
}

TEST_F(BlockAssembly, TheCountIsReadFromTheRequestedClass) {
  Collector(Chip().With("MaxInstanceCount", TCIMValue(65536 + 3)));
  EXPECT_EQ(collector->getInstanceCount(), 3);
}

TEST_F(BlockAssembly, AnEmptyAnswerSkipsTheServiceProcessor) {
  const TMaps maps = Collect(1, {DotBlock(0).Returns({}), DotBlock(1).Lost(), Block(2)});
  EXPECT_EQ(maps.size(), 1U);
  EXPECT_EQ(logger.Count(kUnable), 2U);
  EXPECT_EQ(logger.Count(Verbose("")), 0U) << "the empty verbose line is dropped";
  EXPECT_EQ(logger.StartingWith("Unable to communicate").size(), 1U) << "only the lost one says so";
}

TEST_F(BlockAssembly, AFailureWithALengthIsStillDecoded) {
  const TMaps maps = Collect(1, {DotBlock(0).Lost().WithLength(16)});
  // Nothing was written, so the whole block is fill, even the time.
  ASSERT_EQ(maps.size(), 1U);
  EXPECT_EQ(TextOf(maps[0], "StatisticTime"), "20484848484848.000000+000");
  EXPECT_EQ(TextOf(maps[0], "R"), "{48, 48, 48, 32, 61, 32, 48, 48, 48, 48, 48, 48, 48, 48}");
}

TEST_F(BlockAssembly, LengthsThatLie) {
  struct TCase {
    int lie;
    std::size_t dumped;  // 0: the service processor is skipped
  };
  // Only the low 16 bits count; the dump ends with the zero byte after the block.
  for (const TCase& one :
       {TCase{0, 0}, TCase{1, 2}, TCase{4095, 4096}, TCase{4096, 4097}, TCase{4097, 4097}, TCase{65535, 4097},
        TCase{65536, 0}, TCase{65537, 2}, TCase{70000, 4097}, TCase{-1, 4097}, TCase{-65536, 0}, TCase{-65535, 2}}) {
    StartAnew();
    const TMaps maps = Collect(1, {Block(0).WithLength(one.lie)});
    EXPECT_EQ(maps.size(), one.dumped == 0 ? 0U : 1U) << one.lie;
    EXPECT_EQ(logger.Count(kUnable), one.dumped == 0 ? 1U : 0U) << one.lie;
    EXPECT_EQ(logger.Count(Debug(DumpText(TBlock().Bytes(), one.dumped))), one.dumped == 0 ? 0U : 1U) << one.lie;
  }
}

TEST_F(BlockAssembly, BlocksOfEveryShortLength) {
  const TBlock block;
  for (std::size_t length = 1; length <= 40; ++length) {
    StartAnew();
    const TMaps maps = Collect(1, {DotBlock(0).Returns(block.First(length))});
    ASSERT_EQ(maps.size(), 1U);
    TBytes shown = block.First(length);
    shown.resize(4096, 48);
    EXPECT_EQ(logger.Lines().at(4), Debug(DumpText(shown, length + 1))) << length;
    std::vector<unsigned int> expected = {shown[7], shown[8], shown[9], 32, 61, 32};
    expected.insert(expected.end(), shown.begin() + 10, shown.begin() + 18);
    EXPECT_EQ(NumbersOf(maps[0].at("R")), expected) << length;
  }
}

TEST_F(BlockAssembly, EachServiceProcessorStartsWithAFreshBlock) {
  const TMaps maps = Collect(1, {Block(0), DotBlock(1).Returns({0, 1, 1, 1})});
  ASSERT_EQ(maps.size(), 2U);
  EXPECT_EQ(TextOf(maps[1], "StatisticTime"), "20010101484848.000000+000");
  EXPECT_EQ(NumbersOf(maps[1].at("R"))[0], 48U);
}

TEST_F(BlockAssembly, ABlockWithoutATimeEmptiesTheResult) {
  const TStep timeless = DotBlock(1).Returns(TBlock().WithoutTime().Bytes());
  const TMaps maps = Collect(3, {Block(0), timeless, Block(2)});
  EXPECT_EQ(maps.size(), 3U) << "those of the third service processor";
  EXPECT_EQ(logger.Count(Debug("Unable to create chip instance due to caught exception No valid timestamp header "
                               "(status 21).")),
            1U)
      << "the first instance ends the second service processor";
}

TEST_F(BlockAssembly, TheLastBlockWithoutATimeLeavesNothing) {
  EXPECT_TRUE(Collect(2, {Block(0), DotBlock(1).Returns(TBlock().WithoutTime().Bytes())}).empty());
}

TEST_F(BlockAssembly, TheFailureIsLoggedBeforeTheResultIsEmptied) {
  logger.FailAt("Unable to create chip instance due to caught exception No valid timestamp header (status 21).",
                [] { throw TVELException(1); });
  const TMaps maps = Collect(1, {Block(0), DotBlock(1).Returns(TBlock().WithoutTime().Bytes())});
  EXPECT_EQ(maps.size(), 1U) << "what could not be written emptied nothing";
}

TEST_F(BlockAssembly, AnyOtherStatusContinuesWithTheNextInstance) {
  int calls = 0;
  probe.DoAt("R.GetQualifier(Index) {}", [&calls] {
    if (++calls == 2) throw TVELException(13);
  });
  const TMaps maps = Collect(3, {Block(0)});
  EXPECT_EQ(maps.size(), 1U) << "the first is dropped, the second failed, the third stays";
  EXPECT_EQ(calls, 3);
  EXPECT_EQ(logger.Count(Debug("Unable to create chip instance due to caught exception Type mismatch (status 13).")),
            1U);
}

TEST_F(BlockAssembly, Status21FromTheHostEndsTheServiceProcessorToo) {
  int calls = 0;
  probe.DoAt("R.GetQualifier(Index) {}", [&calls] {
    if (++calls == 2) throw TVELException(21);
  });
  EXPECT_TRUE(Collect(3, {Block(0)}).empty());
  EXPECT_EQ(calls, 2);
}

TEST_F(BlockAssembly, AnExceptionOutsideTheInstancesReturnsTheMapsSoFar) {
  logger.FailAt(
      "Returned Data:\n", [] { throw TVELException(1); }, 2);
  const TMaps maps = Collect(2, {Block(0), Block(1)});
  EXPECT_EQ(maps.size(), 2U);
  EXPECT_EQ(logger.Lines().back(),
            Debug("Encountered exception The operation failed (status 1). during\t\t\t\t\t\t\t\tthe collection of "
                  "register data."));
}

TEST_F(BlockAssembly, AnExceptionWhileCountingGivesAnEmptyList) {
  EXPECT_TRUE(Collector(Chip().With("MaxInstanceCount", TCIMValue("many"))).getData().empty());
  EXPECT_EQ(logger.Lines(),
            std::vector<TLine>{Debug("Encountered exception Type mismatch (status 13). during\t\t\t\t\t\t\t\tthe "
                                     "collection of register data.")});
}

TEST_F(BlockAssembly, OtherExceptionsPropagate) {
  EXPECT_THROW(Collector(Chip()).getData(), TAssertionFailure) << "no MaxInstanceCount";
  StartAnew();
  sp.Expect(Block(0));
  EXPECT_THROW(Collector(Chip().MaxInstances(1).Bytes("R")).getData(), TAssertionFailure) << "no Index";
}

TEST_F(BlockAssembly, IdentificationOverridesARegisterOfTheSameName) {
  sp.Expect(Block(0));
  ns->AddClass(TClassBuilder("PARENT"));
  Collector(TClassBuilder("Bridge6203", "PARENT").MaxInstances(1).Record("ElementName", 0).Record("R", 1));
  const TMaps maps = collector->getData();
  EXPECT_EQ(TextOf(maps.at(0), "ElementName"), "PCI I/O bridge,0");
  EXPECT_NE(TextOf(maps.at(0), "R"), "(absent)");
}

TEST_F(BlockAssembly, TheBaseClassNamesAndTheRequestedOneCounts) {
  ns->AddClass(TClassBuilder("KROSG_VO_PCIIOBRIDGE_StatisticData").MaxInstances(9));
  sp.Expect(Block(0));
  const TMaps maps = Collector(Chip().MaxInstances(1), "KROSG_VO_PCIIOBRIDGE_StatisticData").getData();
  ASSERT_EQ(maps.size(), 1U);
  EXPECT_EQ(TextOf(maps[0], "ElementName"), ",0");
  EXPECT_EQ(TextOf(maps[0], "InstanceID"), "KROSG:KROSG_VO_PCIIOBRIDGE_StatisticData:6203:0");
}

class Identity : public TBlockTest {
 protected:
  Identity() { Collector(Chip()); }
};

TEST_F(Identity, FourClassesHaveADescription) {
  EXPECT_EQ(collector->getChipDescription("KROSG_PCIIOBRIDGE_StatisticData"), "PCI I/O bridge");
  EXPECT_EQ(collector->getChipDescription("KROSG_MEMCTL_StatisticData"), "Memory and I/O controller");
  EXPECT_EQ(collector->getChipDescription("KROSG_VO_MEMCTL_StatisticData"),
            "Memory controller with integrated L4 cache module");
  EXPECT_EQ(collector->getChipDescription("KROSG_L3Cache_StatisticData"), "Integrated L3 cache module");
  for (const char* const name : {"KROSG_VO_PCIIOBRIDGE_StatisticData", "KROSG_T4_PCIIOBRIDGE_StatisticData",
                                 "KROSG_T4_MEMCTL_StatisticData", "krosg_memctl_statisticdata", ""}) {
    EXPECT_EQ(collector->getChipDescription(name), "") << name;
  }
}

TEST_F(Identity, AnyInstanceNumberIsAccepted) {
  const TPropertyMap info = collector->getCIMInstanceInfo(Class(kBridgeBase), 7);
  EXPECT_EQ(info.size(), 3U);
  EXPECT_EQ(TextOf(info, "InstanceID"), "KROSG:KROSG_PCIIOBRIDGE_StatisticData:6203:7");
  EXPECT_EQ(TextOf(info, "ElementName"), "PCI I/O bridge,7");
  EXPECT_EQ(TextOf(info, "MachineType"), "6203");
  EXPECT_EQ(logger.Lines(), (std::vector<TLine>{Verbose("In getCIMInstanceInfo()"),
                                                Verbose("chipDesc | instancdID = PCI I/O bridge,7 | "
                                                        "KROSG:KROSG_PCIIOBRIDGE_StatisticData:6203:7"),
                                                Verbose("Completed getCIMInstanceInfo()")}));
}

TEST_F(Identity, TheMachineTypeIsTheNamespacesOfTheRequestedClass) {
  ns->SetMachineType("4411");
  EXPECT_EQ(collector->getMachineType(), "4411");
  TJFRErrorData none({}, {});
  EXPECT_EQ(none.getMachineType(), "");
  EXPECT_THROW(none.getData(), TAssertionFailure);
}

TEST_F(Identity, BothClassesLiveAsLongAsTheCollector) {
  const boost::shared_ptr<TCIMClass> base = Class(kBridgeBase);
  const auto before = base.use_count();
  {
    const TJFRErrorData holder(base, base);
    EXPECT_EQ(base.use_count(), before + 2);
  }
  EXPECT_EQ(base.use_count(), before);
}

}  // namespace
}  // namespace tests
