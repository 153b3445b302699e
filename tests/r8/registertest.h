// A collector for one R8 class, whose registers are defined by the test.
#pragma once

#include <memory>
#include <string>

#include "r8/r8errordata.h"
#include "tests/support/namespaces.h"
#include "tests/support/plugintest.h"

namespace tests {

inline constexpr const char* kVoMemory = "KROSG_VO_MEMCTL_StatisticData";
inline constexpr const char* kVoBridge = "KROSG_VO_PCIIOBRIDGE_StatisticData";
inline constexpr const char* kT4Memory = "KROSG_T4_MEMCTL_StatisticData";
inline constexpr const char* kT4Bridge = "KROSG_T4_PCIIOBRIDGE_StatisticData";

// The value bytes 01 to 08 after a header of zeros.
inline TBytes OneToEight() { return RegisterData({1, 2, 3, 4, 5, 6, 7, 8}); }

class TRegisterTest : public TProbedPartTest {
 protected:
  TRegisterTest() { AddStatisticBase(); }

  /// Starts with another namespace, for a second class of the same name.
  void StartAnew() {
    collector.reset();
    RenewNamespace();
    AddStatisticBase();
  }
  /// A class derived from the one with the identification properties.
  static TClassBuilder Chip(const std::string& name = kVoMemory) { return TClassBuilder(name, "KROSG_StatisticBase"); }
  /// Adds the class and creates its collector, which sees the host through `probe`.
  torgareg::R8ErrorData& Collector(const TClassBuilder& definition) {
    chip = probe.Wrap(boost::shared_ptr<NKROVEL20::ICIMClass>(ns->AddClass(definition)));
    collector = std::make_unique<torgareg::R8ErrorData>(chip);
    return *collector;
  }

  boost::shared_ptr<NKROVEL20::ICIMClass> chip;
  std::unique_ptr<torgareg::R8ErrorData> collector;
};

}  // namespace tests
