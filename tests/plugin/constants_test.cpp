// The 32 shared constants.
#include "plugin/constants.h"

#include <gtest/gtest.h>

#include "tests/plugin/constantslist.h"
#include "tests/support/namespaces.h"

namespace tests {
namespace {

TEST(Constants, HaveTheirValues) {
  const std::vector<std::string> values = {
      "KROSG_ZYNChipsetErrorData",
      "KROSG_PCIIOBRIDGE_StatisticData",
      "KROSG_MEMCTL_StatisticData",
      "KROSG_VO_MEMCTL_StatisticData",
      "KROSG_VO_PCIIOBRIDGE_StatisticData",
      "KROSG_L3Cache_StatisticData",
      "KROSG_T4_PCIIOBRIDGE_StatisticData",
      "KROSG_T4_MEMCTL_StatisticData",
      "KRO_SG:",
      "ZYNChipRegisterData",
      "InstanceID",
      "ElementName",
      "StatisticTime",
      "RegisterData",
      "RegisterNumber",
      "SignalName",
      "ChipDescription",
      "StartStatisticTime",
      "SampleInterval",
      "MachineType",
      "6101",
      "6102",
      "6203",
      "6204",
      "6205",
      "6106",
      "6203",
      "PCI I/O bridge",
      "PCI I/O bridge",
      "Memory and I/O controller",
      "Memory controller with integrated L4 cache module",
      "Integrated L3 cache module",
  };
  const auto constants = Constants();
  ASSERT_EQ(constants.size(), 32U);
  for (std::size_t i = 0; i < values.size(); ++i) EXPECT_EQ(*constants[i], values[i]) << "number " << i + 1;
}

TEST(Constants, EverySourceFileHasItsOwnCopies) {
  const auto here = Constants();
  const auto there = ConstantsSeenElsewhere();
  ASSERT_EQ(there.size(), here.size());
  for (std::size_t i = 0; i < here.size(); ++i) EXPECT_NE(here[i], there[i]) << *here[i];
}

}  // namespace
}  // namespace tests
