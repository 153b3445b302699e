// Connects SPLibrary with a service processor. The host installs one before it loads a plugin.
#pragma once
#include "host/base/api.h"

#include <chrono>
#include <vector>

#include "host/bmc/exchange.h"
#include "host/bmc/iserviceprocessor.h"

namespace velhost {

/// Passes exchanges on, refuses them once the run is stopped, and tells observers of each.
class VELHOST_API TSupervisedServiceProcessor : public IServiceProcessor {
 public:
  /// `inner` is not owned.
  explicit TSupervisedServiceProcessor(IServiceProcessor& inner) : inner_(inner) {}
  /// Not owned; told in the order of adding.
  void AddObserver(IExchangeObserver& observer) { observers_.push_back(&observer); }

  int BmcNodeCount() override { return inner_.BmcNodeCount(); }
  bool IpmiDriverPresent() override { return inner_.IpmiDriverPresent(); }
  bool TakesDotCommands() override { return inner_.TakesDotCommands(); }
  bool CheckCommunication() override { return inner_.CheckCommunication(); }
  int DiscoverServiceProcessors() override { return inner_.DiscoverServiceProcessors(); }
  bool SendIpmi(int node, wire::TCommandBuffer& buffer, int& length, const TStopSignal& stop) override;
  bool SendDot(int serviceProcessor, const dotCmd& command, std::span<std::uint8_t> response, int& length,
               const TStopSignal& stop) override;

 private:
  IServiceProcessor& inner_;
  std::vector<IExchangeObserver*> observers_;
};

class VELHOST_API TServiceProcessorHub {
 public:
  /// Neither is owned; null takes the service processor away, and every exchange fails. Without a
  /// stop signal nothing stops.
  static void Install(IServiceProcessor* serviceProcessor, const TStopSignal* stop);
};

}  // namespace velhost
