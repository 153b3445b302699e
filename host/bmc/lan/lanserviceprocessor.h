// BMC nodes on the network as a service processor, by way of the LAN module.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/base/api.h"
#include "host/bmc/iserviceprocessor.h"
#include "host/bmc/lan/laninterrupter.h"
#include "host/bmc/lan/lanmodule.h"
#include "host/bmc/lan/lanspec.h"

namespace velhost {

enum class ELanNotice {
  kWarning,  ///< what a session does not protect, or what a BMC should not have sent
  kLost      ///< a node is given up
};
/// Gets what a user should be told, one line without its end, on the thread that makes the exchange or
/// opens the sessions.
using TLanNotice = std::function<void(ELanNotice, const std::string&)>;

/// One node per entry of `options`, one session each for the whole run. The driver counts as
/// present; no dot commands. Stopping the run ends every wait at once.
class VELHOST_API TLanServiceProcessor : public IServiceProcessor {
 public:
  /// Opens all sessions. `stop` outlives it, has its deadline already, and is the one that every
  /// exchange is called with. `module` outlives the process's use of it, since a stopped run leaves
  /// calls behind. Throws THostError as TLanLink::Open does, kUnreachable when the deadline passes first,
  /// and kStopped when the run is interrupted first.
  TLanServiceProcessor(const VelLanModule& module, const std::vector<TLanOptions>& options, const TStopSignal& stop,
                       TLanNotice notice);
  ~TLanServiceProcessor() override;

  TDiscovery Discover() override;
  std::optional<TIpmiAnswer> SendIpmi(const TIpmiRequest& request, const TStopSignal& stop) override;

 private:
  class TNode;
  void Tell(ELanNotice kind, const std::string& text) const;

  TLanInterrupter interrupter_;
  std::vector<std::unique_ptr<TNode>> nodes_;
  TLanNotice notice_;
};

/// The file name of the LAN module.
inline constexpr const char* kLanModuleFile = "velhost-lan.so";

/// Opens one node per entry, in order; at least one. The module is taken from the first of `folders`
/// that has it, and stays loaded. Throws THostError as TLanServiceProcessor does, and kUnreachable
/// when the module is not there, cannot be loaded, or is of another version.
VELHOST_API std::unique_ptr<IServiceProcessor> OpenLan(const std::vector<TLanOptions>& options, const TStopSignal& stop,
                                                       const std::vector<std::string>& folders,
                                                       TLanNotice notice = nullptr);

}  // namespace velhost
