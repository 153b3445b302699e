// Which classes words on the command line stand for.
#include "host/velhost/classchoice.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "host/base/hosterror.h"
#include "tests/support/classbuilder.h"
#include "tests/support/namespaces.h"

namespace tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr TPlanServer kBmcAlone = {1, true, false, false, 0};
constexpr TPlanServer kBlocksAlone = {0, false, true, true, 2};

const std::string kMemory = "KROSG_A_MEMCTL";
const std::string kOtherMemory = "KROSG_B_MEMCTL";
const std::string kCache = "KROSG_A_L3Cache";
const std::string kVoMemory = "KROSG_VO_MEMCTL_StatisticData";
const std::string kVoBridge = "KROSG_VO_PCIIOBRIDGE_StatisticData";
const std::string kCapture = "KROSG_DCAPFile";
const std::string kMemoryBase = "KROSG_MEMCTL_StatisticData";

// Declared in this order: the capture class before all others.
class ClassChoice : public testing::Test {
 protected:
  ClassChoice() : schema_(TNamespace::Create()) {
    schema_->AddClass(TClassBuilder("Top").Identification());
    schema_->AddClass(TClassBuilder(kCapture));
    for (const char* const base :
         {"KROSG_PCIIOBRIDGE_StatisticData", "KROSG_MEMCTL_StatisticData", "KROSG_L3Cache_StatisticData"}) {
      schema_->AddClass(TClassBuilder(base, "Top"));
    }
    schema_->AddClass(TClassBuilder(kMemory, kMemoryBase).Machines({"6203", "6204"}).MaxInstances(1));
    schema_->AddClass(TClassBuilder(kOtherMemory, kMemoryBase).Machines({"6101,6106"}).MaxInstances(1));
    schema_->AddClass(TClassBuilder(kVoMemory, "Top").Machines({"6203"}).MaxInstances(1));
    schema_->AddClass(TClassBuilder(kCache, "KROSG_L3Cache_StatisticData").Machines({"6203"}).MaxInstances(1));
    schema_->AddClass(TClassBuilder(kVoBridge, "Top").Machines({"4411"}).MaxInstances(1));
  }

  /// The classes in order; those that were named have a '!'.
  std::vector<std::string> Choose(const std::vector<std::string>& words, const std::string& machineType = "6203",
                                  const TPlanServer& server = kServerWithEveryWay) const {
    std::vector<std::string> chosen;
    for (const TAskedClass& asked : ChooseClasses(*schema_, words, machineType, server)) {
      chosen.push_back(asked.cimClass->Name() + (asked.isNamed ? "!" : ""));
    }
    return chosen;
  }
  std::string Refusal(const std::vector<std::string>& words) const {
    try {
      Choose(words);
    } catch (const THostError& error) {
      EXPECT_EQ(error.Kind(), EFailure::kInvalidArgument);
      return error.what();
    }
    return "not refused";
  }

  boost::shared_ptr<TNamespace> schema_;
};

TEST_F(ClassChoice, WithoutWordsIsWhatThisMachineServes) {
  EXPECT_THAT(Choose({}), ElementsAre(kMemory, kVoMemory, kCache, kCapture));
  EXPECT_THAT(Choose({}, "4411"), ElementsAre(kVoBridge, kCapture));
  EXPECT_THAT(Choose({}, "9999"), ElementsAre(kCapture));
}

TEST_F(ClassChoice, TheWayDecidesToo) {
  EXPECT_THAT(Choose({}, "6203", kBmcAlone), ElementsAre(kVoMemory, kCapture));
  EXPECT_THAT(Choose({}, "6203", kBlocksAlone), ElementsAre(kMemory, kCache));
  EXPECT_THAT(Choose({}, "6203", {0, false, true, true, 0}), IsEmpty()) << "no service processor";
  EXPECT_THAT(Choose({}, "6203", {0, false, true, true, 256}), IsEmpty()) << "the collector keeps eight bits";
  EXPECT_THAT(Choose({}, "6203", {0, false, true, false, 1}), ElementsAre(kMemory, kCache))
      << "a failed communication check is no lack of a way";
}

TEST_F(ClassChoice, ANameStandsForItselfServedOrNot) {
  EXPECT_THAT(Choose({kVoBridge, kMemory}, "6203", kBmcAlone), ElementsAre(kVoBridge + "!", kMemory + "!"));
  EXPECT_THAT(Choose({"krosg_a_memctl", "Top"}), ElementsAre(kMemory + "!", "Top!"));
}

TEST_F(ClassChoice, APatternStandsForDefaultClassesInTheirOrder) {
  EXPECT_THAT(Choose({"*"}), ElementsAre(kMemory, kVoMemory, kCache, kCapture));
  EXPECT_THAT(Choose({"*_memctl*"}), ElementsAre(kMemory, kVoMemory)) << "the other serves another machine";
  EXPECT_THAT(Choose({"KROSG_?_*", "*DCAP*"}), ElementsAre(kMemory, kCache, kCapture));
  EXPECT_THAT(Choose({"*DCAP*", "*"}), ElementsAre(kCapture, kMemory, kVoMemory, kCache));
}

TEST_F(ClassChoice, APatternThatMatchesNothingIsRefused) {
  EXPECT_EQ(Refusal({kMemory, "KROSG_B*"}),
            "\"KROSG_B*\" matches no class that this machine serves; \"velhost classes\" shows what it serves");
}

TEST_F(ClassChoice, ABaseClassStandsForItsDelegate) {
  EXPECT_THAT(Choose({kMemoryBase}), ElementsAre(kMemory + "!"));
  EXPECT_THAT(Choose({"krosg_memctl_statisticdata"}, "6106"), ElementsAre(kOtherMemory + "!"));
  EXPECT_THAT(Choose({kMemoryBase}, "4411"), ElementsAre(kMemoryBase + "!"))
      << "nothing serves it, and the result says so";
  EXPECT_THAT(Choose({kMemoryBase}, "6203", kBmcAlone), ElementsAre(kMemory + "!"));
}

TEST_F(ClassChoice, NamedTwiceIsThereTwice) {
  EXPECT_THAT(Choose({kMemory, kCache, kMemory}), ElementsAre(kMemory + "!", kCache + "!", kMemory + "!"));
}

TEST_F(ClassChoice, WhatAPatternOrBaseClassYieldsAgainIsNot) {
  EXPECT_THAT(Choose({"*", "*"}), ElementsAre(kMemory, kVoMemory, kCache, kCapture));
  EXPECT_THAT(Choose({kCache, "KROSG_A*"}), ElementsAre(kCache + "!", kMemory));
  EXPECT_THAT(Choose({kMemory, kMemoryBase}), ElementsAre(kMemory + "!"));
  EXPECT_THAT(Choose({kMemoryBase, kMemoryBase}), ElementsAre(kMemory + "!"));
  EXPECT_THAT(Choose({"*_MEMCTL*", kMemoryBase}), ElementsAre(kMemory + "!", kVoMemory));
  EXPECT_THAT(Choose({kMemory, kMemory, "*MEMCTL*"}), ElementsAre(kMemory + "!", kMemory + "!", kVoMemory));
}

TEST_F(ClassChoice, ANameTakesThePlaceOfWhatAPatternGave) {
  EXPECT_THAT(Choose({"*MEMCTL*", kMemory}), ElementsAre(kMemory + "!", kVoMemory));
  EXPECT_THAT(Choose({kMemoryBase, kMemory}), ElementsAre(kMemory + "!"));
  EXPECT_THAT(Choose({"*MEMCTL*", kMemory, kMemory}), ElementsAre(kMemory + "!", kVoMemory, kMemory + "!"));
}

TEST_F(ClassChoice, UnknownNamesAreRefusedBeforeTheServerIsKnown) {
  EXPECT_NO_THROW(CheckClassNames(*schema_, {kMemory, "no*such"}));
  EXPECT_THROW(CheckClassNames(*schema_, {kMemory, "KROSG_A_MEMCTI"}), THostError);
  EXPECT_EQ(Refusal({"KROSG_A_MEMCTI"}), "the schema has no class \"KROSG_A_MEMCTI\"; did you mean KROSG_A_MEMCTL?");
  EXPECT_EQ(Refusal({"?", ""}),
            "\"?\" matches no class that this machine serves; \"velhost classes\" shows what it serves");
  EXPECT_EQ(Refusal({""}), "the schema has no class \"\"; \"velhost classes\" lists those that can be collected");
}

TEST_F(ClassChoice, AMachineTypeThatNoRegisterClassServesIsWarnedOf) {
  EXPECT_EQ(MachineTypeWarning(*schema_, "6203"), "");
  EXPECT_EQ(MachineTypeWarning(*schema_, "6106"), "");
  EXPECT_EQ(MachineTypeWarning(*schema_, "6230"), "no register class serves the machine type 6230; did you mean 6203?");
  EXPECT_EQ(MachineTypeWarning(*schema_, "6016"), "no register class serves the machine type 6016; did you mean 6106?");
  EXPECT_EQ(MachineTypeWarning(*schema_, "9999"), "no register class serves the machine type 9999");
  EXPECT_EQ(MachineTypeWarning(*schema_, "\x1b"), "no register class serves the machine type \\x1b");
  EXPECT_EQ(MachineTypeWarning(*TNamespace::Create(), "9999"), "") << "there is none that could";
}

}  // namespace
}  // namespace tests
