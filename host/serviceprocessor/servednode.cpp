#include "host/serviceprocessor/servednode.h"

#include <algorithm>

#include "host/serviceprocessor/commandframe.h"
#include "nkrovel20/storageareacommands.h"

namespace NKROVEL20 {

namespace {

constexpr std::size_t kCompletionCodeSize = 1;
constexpr std::uint8_t kUnspecifiedError = 0xFF;

TIPMICommandBuffer BufferOf(std::uint8_t networkFunction, std::uint8_t lun, std::uint8_t command,
                            std::span<const std::uint8_t> data) {
  const std::size_t size = std::min(data.size(), TIPMICommandBuffer::kMaxData);
  TIPMICommandBuffer buffer(networkFunction, command, static_cast<std::uint8_t>(size));
  buffer[TIPMICommandBuffer::kLun] = lun;
  std::copy_n(data.begin(), size, buffer.Data() + TIPMICommandBuffer::kData);
  return buffer;
}

/// Whether the fault may be applied to a storage-area request.
bool MeetsStorageAreas(const TFault& fault) {
  return !fault.on || (*fault.on != EExchangeKind::kRegister && *fault.on != EExchangeKind::kTimestamp);
}

}  // namespace

TServedNode::TServedNode(TServerFile server, int node)
    : server_(std::move(server)), injector_(server_, server_.Server().faults), node_(node) {}

bool TServedNode::TNode::SendIpmi(int node, TIPMICommandBuffer& buffer, int& length, const TStopSignal& /*stop*/) {
  const auto answer = AnswerIpmi(Server(), node, buffer[TIPMICommandBuffer::kNetworkFunction],
                                 buffer[TIPMICommandBuffer::kCommand], CommandFrame::RequestData(buffer), capacity_);
  if (!answer) return false;
  CommandFrame::StoreResponse(buffer, length, answer->completionCode, answer->data);
  return true;
}

std::vector<std::uint8_t> TServedNode::Answer(std::uint8_t networkFunction, std::uint8_t lun, std::uint8_t command,
                                              std::span<const std::uint8_t> data, std::size_t capacity) {
  TIPMICommandBuffer buffer = BufferOf(networkFunction, lun, command, data);
  server_.SetCapacity(std::max(capacity, kCompletionCodeSize) - kCompletionCodeSize);
  int length = 0;
  if (!injector_.SendIpmi(node_, buffer, length, never_)) return {kUnspecifiedError};
  const unsigned char* const answered = buffer.Data() + TIPMICommandBuffer::kData;
  std::vector<std::uint8_t> answer = {buffer.CompletionCode()};
  answer.insert(answer.end(), answered, answered + buffer.DataLength());
  return answer;
}

std::string ReasonNotToServe(const TServerFile& server, int node) {
  if (node < 0 || static_cast<std::size_t>(node) >= server.nodes.size()) {
    return "there is no BMC node " + std::to_string(node) + "; it has " + std::to_string(server.nodes.size());
  }
  if (!server.driverPresent) return "with driver_present = false no IPMI exchange takes place";
  constexpr std::size_t kShortest = TIPMICommandBuffer::kData + StorageAreaCommands::kManufacturerId.size();
  for (const TFault& fault : server.faults) {
    if (fault.lost) return "a fault has lost = true, and ipmi_sim answers every request";
    if (fault.on == EExchangeKind::kDot) continue;
    if (fault.truncate && *fault.truncate < kShortest && MeetsStorageAreas(fault)) {
      return "a fault has truncate = " + std::to_string(*fault.truncate) +
             ", and ipmi_sim puts the manufacturer id in every answer to a storage-area request; expected " +
             std::to_string(kShortest) + " or more, or on = \"register\" or \"timestamp\"";
    }
  }
  return {};
}

}  // namespace NKROVEL20
