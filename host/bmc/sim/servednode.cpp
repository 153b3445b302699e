#include "host/bmc/sim/servednode.h"

#include <algorithm>
#include <array>

#include "host/base/text.h"
#include "wire/storagearea.h"

namespace velhost {

namespace {

constexpr std::size_t kCompletionCodeSize = 1;
constexpr std::uint8_t kUnspecifiedError = 0xFF;

std::string NodesOf(const TServerFile& server) {
  switch (server.nodes.size()) {
    case 0: return "none";
    case 1: return "node 0 alone";
    case 2: return "nodes 0 and 1";
    default: return "nodes 0 to " + std::to_string(server.nodes.size() - 1);
  }
}

/// Whether the fault can apply to a storage-area request.
bool MeetsStorageAreas(const TFault& fault) {
  return !fault.on || (*fault.on != EExchangeKind::kRegister && *fault.on != EExchangeKind::kTimestamp);
}

}  // namespace

TServedNode::TServedNode(TServerFile server, int node)
    : server_(std::move(server)), injector_(server_, server_.Server().faults), node_(node) {}

std::optional<TIpmiAnswer> TServedNode::TNode::SendIpmi(const TIpmiRequest& request, const TStopSignal& /*stop*/) {
  return AnswerIpmi(Server(), request, capacity_);
}

std::vector<std::uint8_t> TServedNode::Answer(std::uint8_t networkFunction, std::uint8_t lun, std::uint8_t command,
                                              std::span<const std::uint8_t> data, std::size_t capacity) {
  server_.SetCapacity(std::max(capacity, kCompletionCodeSize) - kCompletionCodeSize);
  const auto answer = injector_.SendIpmi(TIpmiRequest(node_, networkFunction, lun, command, data), never_);
  if (!answer) return {kUnspecifiedError};
  std::vector<std::uint8_t> bytes = {answer->completionCode};
  bytes.insert(bytes.end(), answer->data.begin(), answer->data.end());
  return bytes;
}

TNotServed ReasonNotToServe(const TServerFile& server, int node) {
  if (node < 0 || static_cast<std::size_t>(node) >= server.nodes.size()) {
    return {"there is no BMC node " + std::to_string(node) + "; the server has " + NodesOf(server)};
  }
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

std::string DescribeNotServed(const TNotServed& refusal, const std::string& file) {
  if (refusal.line == 0) return SafeText(file) + ": " + refusal.reason;
  return SafeText(file) + ":" + std::to_string(refusal.line) + ":" + std::to_string(refusal.column) +
         ": error: " + refusal.reason;
}

}  // namespace velhost
