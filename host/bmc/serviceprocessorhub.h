// Connects SPLibrary to a service processor. The host installs one before it loads a plugin.
#pragma once

#include "host/base/api.h"
#include "host/bmc/iserviceprocessor.h"

namespace velhost {

class VELHOST_API TServiceProcessorHub {
 public:
  /// Neither is owned. With null, there is no service processor and every exchange fails. Without a stop signal,
  /// nothing stops.
  static void Install(IServiceProcessor* serviceProcessor, const TStopSignal* stop);
};

}  // namespace velhost
