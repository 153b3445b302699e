// A service processor that follows a script, and fails the test if the collector does not.
#pragma once

#include <deque>
#include <string>
#include <vector>

#include "host/bmc/iserviceprocessor.h"
#include "tests/support/namespaces.h"
#include "tests/support/steps.h"

namespace tests {

/// Every exchange must be the script's next step, byte for byte; any other is reported and gets no answer. Steps left
/// over at the end fail the test in the destructor.
class TScriptedServiceProcessor : public velhost::IServiceProcessor {
 public:
  TScriptedServiceProcessor() = default;
  ~TScriptedServiceProcessor() override;
  TScriptedServiceProcessor(const TScriptedServiceProcessor&) = delete;
  TScriptedServiceProcessor& operator=(const TScriptedServiceProcessor&) = delete;

  // Discovery finds one BMC node with a driver and no dot commands, unless set otherwise.
  int nodes = 1;
  bool driverPresent = true;
  bool takesDotCommands = false;
  bool communicates = true;
  int serviceProcessors = 0;

  /// Adds steps to the script.
  void Expect(const TStep& step) { script_.push_back(step); }
  void Expect(const std::vector<TStep>& steps) { script_.insert(script_.end(), steps.begin(), steps.end()); }
  std::size_t StepsLeft() const { return script_.size(); }
  /// How many times discovery was requested: once by each such operation of SPLibrary.
  int Discoveries() const { return discoveries_; }

  velhost::TDiscovery Discover() override;
  std::optional<velhost::TIpmiAnswer> SendIpmi(const velhost::TIpmiRequest& request,
                                               const velhost::TStopSignal& stop) override;
  std::optional<velhost::TDotAnswer> SendDot(const velhost::TDotRequest& request,
                                             const velhost::TStopSignal& stop) override;

 private:
  std::optional<TStep> Advance(bool isDot, int target, const TBytes& request);

  std::deque<TStep> script_;
  int discoveries_ = 0;
};

}  // namespace tests
