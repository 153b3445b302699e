#include "host/bmc/serve/servednode.h"

#include <algorithm>

#include "host/base/text.h"

namespace velhost {

namespace {

constexpr std::size_t kCompletionCodeSize = 1;
constexpr std::uint8_t kUnspecifiedError = 0xFF;

std::string Named(std::size_t nodes) {
  switch (nodes) {
    case 0: return "none";
    case 1: return "node 0 alone";
    case 2: return "nodes 0 and 1";
    default: return "nodes 0 to " + std::to_string(nodes - 1);
  }
}

}  // namespace

TServedNode::~TServedNode() = default;

std::vector<std::uint8_t> TServedNode::Answer(std::uint8_t networkFunction, std::uint8_t lun, std::uint8_t command,
                                              std::span<const std::uint8_t> data, std::size_t capacity) {
  const std::size_t room = std::max(capacity, kCompletionCodeSize) - kCompletionCodeSize;
  const auto answer = Send(TIpmiRequest(node_, networkFunction, lun, command, data), room);
  if (!answer) return {kUnspecifiedError};
  std::vector<std::uint8_t> bytes = {answer->completionCode};
  bytes.insert(bytes.end(), answer->data.begin(), answer->data.end());
  return bytes;
}

TNotServed ReasonOfNode(int node, std::size_t nodes) {
  if (node >= 0 && static_cast<std::size_t>(node) < nodes) return {};
  TNotServed refusal;
  refusal.reason = "there is no BMC node " + std::to_string(node) + "; the server has " + Named(nodes);
  refusal.kind = EFailure::kInvalidArgument;
  return refusal;
}

void RefuseNotServed(const TNotServed& refusal, const std::string& file) {
  if (refusal.reason.empty()) return;
  if (refusal.line == 0) throw THostError(refusal.kind, SafeText(file) + ": " + refusal.reason);
  throw THostError(refusal.kind, SafeText(file) + ":" + std::to_string(refusal.line) + ":" +
                                     std::to_string(refusal.column) + ": error: " + refusal.reason);
}

}  // namespace velhost
