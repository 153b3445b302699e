// Connects SPLibrary with a service processor. The host installs one before it loads a plugin.
#pragma once
#include "host/base/api.h"

#include <vector>

#include "host/bmc/exchange.h"
#include "host/bmc/iserviceprocessor.h"

namespace velhost {

/// Passes exchanges on, refuses them once the run is stopped, and tells observers of each.
class VELHOST_API TSupervisedServiceProcessor : public TForwardingServiceProcessor {
 public:
  using TForwardingServiceProcessor::TForwardingServiceProcessor;
  /// Not owned; told in the order of adding.
  void AddObserver(IExchangeObserver& observer) { observers_.push_back(&observer); }

  std::optional<TIpmiAnswer> SendIpmi(const TIpmiRequest& request, const TStopSignal& stop) override;
  std::optional<TDotAnswer> SendDot(const TDotRequest& request, const TStopSignal& stop) override;

 private:
  std::vector<IExchangeObserver*> observers_;
};

class VELHOST_API TServiceProcessorHub {
 public:
  /// Neither is owned; null takes the service processor away, and every exchange fails. Without a
  /// stop signal nothing stops.
  static void Install(IServiceProcessor* serviceProcessor, const TStopSignal* stop);
};

}  // namespace velhost
