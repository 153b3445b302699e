// One BMC node of a server file, answering requests that come over a wire.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "host/base/api.h"
#include "host/bmc/sim/faults.h"
#include "host/bmc/sim/simulatedserver.h"

namespace velhost {

/// Answers like the in-process simulator, faults included. One exchange at a time.
class VELHOST_API TServedNode {
 public:
  /// `node` must exist in `server`, and ReasonNotToServe() must return no reason.
  TServedNode(TServerFile server, int node);
  TServedNode(const TServedNode&) = delete;
  TServedNode& operator=(const TServedNode&) = delete;

  /// Returns the completion code, then the answer's data: at least one byte and at most `capacity` in all. Blocks
  /// during a fault's delay. Request data beyond the size of a command buffer is ignored.
  std::vector<std::uint8_t> Answer(std::uint8_t networkFunction, std::uint8_t lun, std::uint8_t command,
                                   std::span<const std::uint8_t> data, std::size_t capacity);

 private:
  /// The simulator, with the wire's limit on the size of answers.
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

/// Why a server cannot be served, and where its file says so.
struct TNotServed {
  std::string reason;      ///< empty if it can be served
  std::uint32_t line = 0;  ///< 0 if no single place is to blame
  std::uint32_t column = 0;
};

/// "FILE:LINE:COLUMN: error: REASON", or "FILE: REASON" without a place.
VELHOST_API std::string DescribeNotServed(const TNotServed& refusal, const std::string& file);

/// Why ipmi_sim cannot serve `node` of a server; empty if it can. ipmi_sim answers every request, and puts the
/// manufacturer id into every answer to a storage-area request.
VELHOST_API TNotServed ReasonNotToServe(const TServerFile& server, int node);

}  // namespace velhost
