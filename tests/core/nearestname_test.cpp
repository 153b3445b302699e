#include "host/core/nearestname.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

namespace NKROVEL20 {
namespace {

constexpr std::array<std::string_view, 4> kNames = {"machine_type", "bmc_node", "dot", "data"};

TEST(NearestName, ForgivesOneSlipInAShortName) {
  EXPECT_EQ(NearestName("dto", kNames), "dot");
  EXPECT_EQ(NearestName("dat", kNames), "dot") << "the first of two as near";
  EXPECT_EQ(NearestName("datta", kNames), "data");
  EXPECT_EQ(NearestName("dxx", kNames), "");
}

TEST(NearestName, ForgivesASlipInEveryThreeLetters) {
  EXPECT_EQ(NearestName("machinetyp", kNames), "machine_type");
  EXPECT_EQ(NearestName("mahcien_tpye", kNames), "machine_type");
  EXPECT_EQ(NearestName("mxxxxxe_type", kNames), "");
}

TEST(NearestName, ComparesLettersWithoutCase) {
  EXPECT_EQ(NearestName("BMC_NODE", kNames), "bmc_node");
  EXPECT_EQ(NearestName("Dot", kNames), "dot");
}

TEST(NearestName, FindsTheOneNameThatGoesOn) {
  constexpr std::array<std::string_view, 3> kLong = {"machine_type", "delta_one_and_more", "delta_two_and_more"};
  EXPECT_EQ(NearestName("mach", kLong), "machine_type");
  EXPECT_EQ(NearestName("DELTA_T", kLong), "delta_two_and_more");
  EXPECT_EQ(NearestName("delta_", kLong), "") << "two go on from there";
  EXPECT_EQ(NearestName("mac", kLong), "") << "too short to tell";
}

TEST(NearestName, FindsNothingForNothingOrForALongText) {
  EXPECT_EQ(NearestName("", kNames), "");
  EXPECT_EQ(NearestName("dot", {}), "");
  EXPECT_EQ(NearestName(std::string(1'000'000, 'd'), kNames), "");
}

}  // namespace
}  // namespace NKROVEL20
