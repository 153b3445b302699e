// A service processor that follows a script and fails the test where the collector does not.
#pragma once

#include <deque>
#include <string>
#include <vector>

#include "host/bmc/iserviceprocessor.h"
#include "tests/support/namespaces.h"
#include "tests/support/steps.h"

namespace tests {

/// Every exchange must be the script's next step, byte for byte; any other is reported and gets no
/// answer. Steps that are left at the end fail the test in the destructor.
class TScriptedServiceProcessor : public velhost::IServiceProcessor {
 public:
  TScriptedServiceProcessor() = default;
  ~TScriptedServiceProcessor() override;
  TScriptedServiceProcessor(const TScriptedServiceProcessor&) = delete;
  TScriptedServiceProcessor& operator=(const TScriptedServiceProcessor&) = delete;

  // What discovery finds: one BMC node with a driver and no dot commands, unless set otherwise.
  int nodes = 1;
  bool driverPresent = true;
  bool takesDotCommands = false;
  bool communicates = true;
  int serviceProcessors = 0;

  /// Adds steps to the script.
  void Expect(const TStep& step) { script_.push_back(step); }
  void Expect(const std::vector<TStep>& steps) { script_.insert(script_.end(), steps.begin(), steps.end()); }
  std::size_t StepsLeft() const { return script_.size(); }
  /// The names of the discovery operations in the order in which they were called.
  const std::vector<std::string>& Discoveries() const { return discoveries_; }
  /// What the length variable held when each IPMI request came.
  const std::vector<int>& PresetLengths() const { return presetLengths_; }

  int BmcNodeCount() override;
  bool IpmiDriverPresent() override;
  bool TakesDotCommands() override;
  bool CheckCommunication() override;
  int DiscoverServiceProcessors() override;
  bool SendIpmi(int node, wire::TCommandBuffer& buffer, int& length, const velhost::TStopSignal& stop) override;
  bool SendDot(int serviceProcessor, const NKROVEL20::dotCmd& command, std::span<std::uint8_t> response, int& length,
               const velhost::TStopSignal& stop) override;

 private:
  bool Advance(bool isDot, int target, const TBytes& request, TStep& step);

  std::deque<TStep> script_;
  std::vector<std::string> discoveries_;
  std::vector<int> presetLengths_;
};

}  // namespace tests
