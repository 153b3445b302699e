// A schema with every class that a request can name, and the lines that a request logs.
#pragma once

#include <string>
#include <vector>

#include "tests/support/namespaces.h"
#include "tests/support/plugintest.h"

namespace tests {

class TDispatchTest : public TPluginTest {
 protected:
  TDispatchTest() {
    AddStatisticBase();
    AddJfrBases(*ns, "KROSG_StatisticBase");
    for (const char* const name : {"KROSG_T4_MEMCTL_StatisticData", "KROSG_T4_PCIIOBRIDGE_StatisticData",
                                   "KROSG_VO_MEMCTL_StatisticData", "KROSG_VO_PCIIOBRIDGE_StatisticData"}) {
      ns->AddClass(
          TClassBuilder(name, "KROSG_StatisticBase").Machines({"6101"}).MaxInstances(1).Register("R", 0x10, 8));
    }
    AddCaptureClass();
    ns->AddClass(TClassBuilder("KROSG_Other"));
    SetMachineType("6101");
    sp.nodes = 0;  // nothing to read: one status line per capture file
  }

  void AddDelegate(const std::string& name, const std::string& base) {
    ns->AddClass(TClassBuilder(name, base).Machines({"6101"}).MaxInstances(0));
  }

  /// The three lines logged when the search finds no delegates.
  static std::vector<TLine> Preparation() {
    return {Debug("Collecting delegates for class KROSG_PCIIOBRIDGE_StatisticData"),
            Debug("Collecting delegates for class KROSG_MEMCTL_StatisticData"),
            Debug("Collecting delegates for class KROSG_L3Cache_StatisticData")};
  }
  static std::vector<TLine> Together(std::vector<TLine> first, const std::vector<TLine>& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
  }
  /// The lines of a request for the capture files on a server without a BMC.
  static std::vector<TLine> CaptureWithoutBmc() {
    std::vector<TLine> lines = {Debug("Entering collection for requested class KROSG_DCAPFile"),
                                Debug("Collector received an invalid collection request.KROSG_DCAPFile"),
                                Debug("begin to collect KROSG_DCAPFile")};
    for (int i = 0; i < 3; ++i) {
      lines.push_back(Debug("Enter ReadErrFFDC funtion"));
      lines.push_back(Status("No eQT/BMC on the system. TORGA log is not available."));
    }
    lines.push_back(Debug("Complete to collect KROSG_DCAPFile"));
    return lines;
  }
};

}  // namespace tests
