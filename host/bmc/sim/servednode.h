// One BMC node of a server file, for requests that come over a wire.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "host/base/api.h"
#include "host/bmc/sim/faultinjector.h"
#include "host/bmc/sim/simulatedserver.h"

namespace velhost {

/// Answers as the simulator in the process does, faults included. One exchange at a time.
class VELHOST_API TServedNode {
 public:
  /// `node` exists in `server`, and ReasonNotToServe() gives none.
  TServedNode(TServerFile server, int node);
  TServedNode(const TServedNode&) = delete;
  TServedNode& operator=(const TServedNode&) = delete;

  /// The completion code, then the answer's data: at least one byte and at most `capacity`. Blocks
  /// for as long as a fault's delay. A request's data beyond a command buffer's are not looked at.
  std::vector<std::uint8_t> Answer(std::uint8_t networkFunction, std::uint8_t lun, std::uint8_t command,
                                   std::span<const std::uint8_t> data, std::size_t capacity);

 private:
  /// The simulator's answers, with the wire's limit on their size.
  class TNode : public TSimulatedServer {
   public:
    explicit TNode(TServerFile server) : TSimulatedServer(std::move(server)) {}
    void SetCapacity(std::size_t capacity) { capacity_ = capacity; }
    std::optional<TIpmiAnswer> SendIpmi(const TIpmiRequest& request, const TStopSignal& stop) override;

   private:
    std::size_t capacity_ = wire::TCommandBuffer::kMaxData;
  };

  TNode server_;
  TFaultInjector injector_;
  TStopSignal never_;
  int node_;
};

/// What keeps a server from being served, and where its file says so.
struct TNotServed {
  std::string reason;      ///< empty where nothing does
  std::uint32_t line = 0;  ///< 0 where it is no single place
  std::uint32_t column = 0;
};

/// "FILE:LINE:COLUMN: error: REASON", or "FILE: REASON" without a place.
VELHOST_API std::string DescribeNotServed(const TNotServed& refusal, const std::string& file);

/// Why `node` of a server cannot be served by ipmi_sim; empty where it can. ipmi_sim answers every
/// request, and puts the manufacturer id in every answer to a storage-area request.
VELHOST_API TNotServed ReasonNotToServe(const TServerFile& server, int node);

}  // namespace velhost
