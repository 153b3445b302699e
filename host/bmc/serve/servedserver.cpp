#include "host/bmc/serve/servedserver.h"

#include <array>
#include <string>
#include <vector>

#include "wire/storagearea.h"

namespace velhost {

namespace {

/// Whether the fault can apply to a storage-area request.
bool MeetsStorageAreas(const TFault& fault) {
  return !fault.on || (*fault.on != EExchangeKind::kRegister && *fault.on != EExchangeKind::kTimestamp);
}

}  // namespace

TServedServer::TServedServer(TServerFile server, int node)
    : TServedNode(node), server_(std::move(server)), injector_(server_, server_.Server().faults) {}

std::optional<TIpmiAnswer> TServedServer::TNode::SendIpmi(const TIpmiRequest& request, const TStopSignal& /*stop*/) {
  return AnswerIpmi(Server(), request, capacity_);
}

std::optional<TIpmiAnswer> TServedServer::Send(const TIpmiRequest& request, std::size_t capacity) {
  server_.SetCapacity(capacity);
  return injector_.SendIpmi(request, never_);
}

TNotServed ReasonNotToServe(const TServerFile& server, int node) {
  TNotServed missing = ReasonOfNode(node, server.nodes.size());
  if (!missing.reason.empty()) return missing;
  if (!server.driverPresent) return {"with driver_present = false, no IPMI exchange takes place"};
  constexpr std::size_t kShortest = wire::TCommandBuffer::kData + wire::StorageArea::kManufacturerId.size();
  for (const TFault& fault : server.faults) {
    if (fault.lost) {
      return {
          "found lost = true, but ipmi_sim answers every request; expected another fault, such as completion_code = "
          "0xC3 (timeout)",
          fault.line, fault.column};
    }
    if (fault.on == EExchangeKind::kDot) continue;
    if (fault.truncate && *fault.truncate < kShortest && MeetsStorageAreas(fault)) {
      return {"found truncate = " + std::to_string(*fault.truncate) +
                  ", but ipmi_sim puts the manufacturer id in every answer to a storage-area request; expected " +
                  std::to_string(kShortest) + " or more, or on = \"register\" or \"timestamp\"",
              fault.line, fault.column};
    }
  }
  return {};
}

}  // namespace velhost
