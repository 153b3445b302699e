// One BMC node of a server file, served over a wire.
#pragma once

#include <cstddef>
#include <optional>
#include <utility>

#include "host/base/api.h"
#include "host/bmc/serve/servednode.h"
#include "host/bmc/sim/faults.h"
#include "host/bmc/sim/simulatedserver.h"

namespace velhost {

/// Answers like the in-process simulator, faults included. Blocks during a fault's delay.
class VELHOST_API TServedServer : public TServedNode {
 public:
  /// `node` must exist in `server`, and ReasonNotToServe() must return no reason.
  TServedServer(TServerFile server, int node);

 private:
  std::optional<TIpmiAnswer> Send(const TIpmiRequest& request, std::size_t capacity) override;

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
};

/// Why ipmi_sim cannot serve `node` of a server. ipmi_sim answers every request, and puts the manufacturer id into
/// every answer to a storage-area request.
VELHOST_API TNotServed ReasonNotToServe(const TServerFile& server, int node);

}  // namespace velhost
