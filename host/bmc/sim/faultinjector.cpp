#include "host/bmc/sim/faultinjector.h"

#include <algorithm>

#include "host/bmc/commandframe.h"
#include "host/bmc/sim/simulatedserver.h"

namespace velhost {

namespace {

void Truncate(std::size_t size, wire::TCommandBuffer& buffer, int& length) {
  const std::size_t data = size - std::min(size, wire::TCommandBuffer::kData);
  if (data >= buffer.DataLength()) return;
  std::fill(buffer.Data() + wire::TCommandBuffer::kData + data, buffer.Data() + wire::TCommandBuffer::kSize,
            std::uint8_t{0});
  buffer[wire::TCommandBuffer::kDataLength] = static_cast<std::uint8_t>(data);
  length = static_cast<int>(wire::TCommandBuffer::kData + data);
}

}  // namespace

TFaultInjector::TFaultInjector(IServiceProcessor& inner, std::vector<TFault> faults)
    : inner_(inner), faults_(std::move(faults)) {
  for (std::size_t i = 0; i < faults_.size(); ++i) {
    TGroup& group = groups_[{faults_[i].on, faults_[i].node}];
    if (faults_[i].nth) {
      group.firstOf.emplace(*faults_[i].nth, i);
    } else {
      group.first = std::min(group.first, i);
    }
  }
}

// Faults after the one that is applied count as well.
const TFault* TFaultInjector::CountAndChoose(EExchangeKind kind, int node) {
  std::size_t chosen = kNone;
  std::vector<std::optional<EExchangeKind>> kinds = {kind};
  if (kind != EExchangeKind::kDot) kinds.emplace_back();
  for (const auto& on : kinds) {
    for (const std::optional<int> of : {std::optional(node), std::optional<int>()}) {
      const auto found = groups_.find({on, of});
      if (found == groups_.end()) continue;
      TGroup& group = found->second;
      ++group.count;
      chosen = std::min(chosen, group.first);
      const auto due = group.firstOf.find(group.count);
      if (due != group.firstOf.end()) chosen = std::min(chosen, due->second);
    }
  }
  return chosen == kNone ? nullptr : &faults_[chosen];
}

bool TFaultInjector::SendIpmi(int node, wire::TCommandBuffer& buffer, int& length, const TStopSignal& stop) {
  const bool takesPlace = inner_.IpmiDriverPresent() && node >= 0 && node < inner_.BmcNodeCount();
  const TFault* fault = takesPlace ? CountAndChoose(KindOfRequest(buffer), node) : nullptr;
  if (fault == nullptr) return inner_.SendIpmi(node, buffer, length, stop);
  if (!stop.WaitFor(fault->delay) || fault->lost) return false;
  if (fault->completionCode) {
    const std::uint8_t networkFunction = buffer[wire::TCommandBuffer::kNetworkFunction];
    const auto data = DataOfBareAnswer(networkFunction, CommandFrame::RequestData(buffer));
    CommandFrame::StoreResponse(buffer, length, *fault->completionCode, data);
    return true;
  }
  if (!inner_.SendIpmi(node, buffer, length, stop)) return false;
  if (fault->truncate) Truncate(*fault->truncate, buffer, length);
  return true;
}

bool TFaultInjector::SendDot(int serviceProcessor, const dotCmd& command, std::span<std::uint8_t> response, int& length,
                             const TStopSignal& stop) {
  const bool takesPlace =
      inner_.TakesDotCommands() && serviceProcessor >= 0 && serviceProcessor < inner_.DiscoverServiceProcessors();
  const TFault* fault = takesPlace ? CountAndChoose(EExchangeKind::kDot, serviceProcessor) : nullptr;
  if (fault == nullptr) return inner_.SendDot(serviceProcessor, command, response, length, stop);
  if (!stop.WaitFor(fault->delay) || fault->lost) return false;
  // Only what is left of the block reaches the caller's buffer.
  const std::size_t room = fault->truncate ? std::min(*fault->truncate, response.size()) : response.size();
  return inner_.SendDot(serviceProcessor, command, response.first(room), length, stop);
}

}  // namespace velhost
