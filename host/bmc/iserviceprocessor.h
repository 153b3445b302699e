// The abstract service processor that answers for SPLibrary: simulated, recorded, reached through the operating
// system's driver, or on the network; and what connects the two.
#pragma once

#include <optional>

#include "host/base/api.h"
#include "host/bmc/exchange.h"
#include "host/bmc/stopsignal.h"

namespace velhost {

/// What discovery finds; the operations of SPLibrary report it.
struct TDiscovery {
  int bmcNodes = 0;
  bool ipmiDriver = false;    ///< the operating system's IPMI driver is present
  bool dotCommands = false;   ///< it takes dot commands instead of plain IPMI
  bool communicates = false;  ///< its service processors can be reached by dot commands
  int serviceProcessors = 0;  ///< the number that answer dot commands
};

class VELHOST_API IServiceProcessor {
 public:
  virtual ~IServiceProcessor();

  virtual TDiscovery Discover() = 0;

  /// One IPMI exchange with a BMC node. Empty if there is no answer: no such node, no driver, lost, or stopped.
  virtual std::optional<TIpmiAnswer> SendIpmi(const TIpmiRequest& request, const TStopSignal& stop) = 0;

  /// One dot command. Empty if there is no answer; this default never has one.
  virtual std::optional<TDotAnswer> SendDot(const TDotRequest& request, const TStopSignal& stop);

  /// Why the latest exchange has no answer; without meaning if it has one. This default always says that it was lost.
  virtual ENoAnswer WhyNoAnswer() const;
};

/// Passes everything on to another service processor. A decorator overrides what it changes.
class VELHOST_API TForwardingServiceProcessor : public IServiceProcessor {
 public:
  /// `inner` is not owned.
  explicit TForwardingServiceProcessor(IServiceProcessor& inner) : inner_(inner) {}

  TDiscovery Discover() override { return inner_.Discover(); }
  std::optional<TIpmiAnswer> SendIpmi(const TIpmiRequest& request, const TStopSignal& stop) override {
    return inner_.SendIpmi(request, stop);
  }
  std::optional<TDotAnswer> SendDot(const TDotRequest& request, const TStopSignal& stop) override {
    return inner_.SendDot(request, stop);
  }
  ENoAnswer WhyNoAnswer() const override { return inner_.WhyNoAnswer(); }

 private:
  IServiceProcessor& inner_;
};

/// Connects SPLibrary to a service processor. The host installs one before it loads a plugin.
class VELHOST_API TServiceProcessorHub {
 public:
  /// Does not take ownership. If the service processor is null, every exchange fails; if the stop signal is null,
  /// exchanges are never refused.
  static void Install(IServiceProcessor* serviceProcessor, const TStopSignal* stop);
};

}  // namespace velhost
