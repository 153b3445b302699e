// A service processor made of BMC nodes on the network, reached through the LAN module.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/base/api.h"
#include "host/bmc/iserviceprocessor.h"
#include "host/bmc/lan/blockingcalls.h"
#include "host/bmc/lan/lanmodule.h"
#include "host/bmc/lan/lanspec.h"

namespace velhost {

enum class ELanNotice {
  kDetail,   ///< which session has been opened
  kWarning,  ///< what a session does not protect, or an answer that a BMC should not have sent
  kLost      ///< a node has been given up
};
/// Receives a message for the user, one line without its newline, on the thread that makes the exchange or opens the
/// sessions.
using TLanNotice = std::function<void(ELanNotice, const std::string&)>;

/// One node per entry of `options`, each with one session for the whole run. The driver counts as present; there are
/// no dot commands. Stopping the run ends every wait at once.
class VELHOST_API TLanServiceProcessor : public IServiceProcessor {
 public:
  /// Opens all sessions. `stop` must outlive this object, already have its deadline, and be the one passed to every
  /// exchange. `module` must stay valid as long as the process may use it, since a stopped run abandons calls. Throws
  /// THostError as TLanLink::Open does, kUnreachable if the deadline passes first, and kStopped if the run is
  /// interrupted first.
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

/// The LAN module's file name.
inline constexpr const char* kLanModuleFile = "velhost-lan.so";

/// Opens one node per entry, in order; there must be at least one. Loads the module from the first of `folders` that
/// has it, for good. Throws THostError as TLanServiceProcessor does, and kUnreachable if the module does not exist,
/// cannot be loaded, or has another version.
VELHOST_API std::unique_ptr<IServiceProcessor> OpenLan(const std::vector<TLanOptions>& options, const TStopSignal& stop,
                                                       const std::vector<std::string>& folders,
                                                       TLanNotice notice = nullptr);

}  // namespace velhost
