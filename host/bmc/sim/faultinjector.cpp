#include "host/bmc/sim/faultinjector.h"

#include <algorithm>
#include <memory>

#include "host/bmc/sim/simulatedserver.h"

namespace velhost {

namespace {

/// Cuts the answer to a command buffer of `size` bytes; leaves it alone if it claims no more.
void Truncate(std::size_t size, TIpmiAnswer& answer) {
  const std::size_t data = size - std::min(size, wire::TCommandBuffer::kData);
  if (data >= answer.DataLength()) return;
  answer.data.resize(data);
  answer.claimedDataLength.reset();
  answer.claimedLength.reset();
}

}  // namespace

TFaultInjector::TFaultInjector(IServiceProcessor& inner, std::vector<TFault> faults)
    : TForwardingServiceProcessor(inner), faults_(std::move(faults)) {
  for (std::size_t i = 0; i < faults_.size(); ++i) {
    TGroup& group = groups_[{faults_[i].on, faults_[i].node}];
    if (faults_[i].nth) {
      group.firstOf.emplace(*faults_[i].nth, i);
    } else {
      group.first = std::min(group.first, i);
    }
  }
}

// Faults after the one that is applied count the exchange as well.
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

std::optional<TIpmiAnswer> TFaultInjector::SendIpmi(const TIpmiRequest& request, const TStopSignal& stop) {
  const TDiscovery found = Discover();
  const bool takesPlace = found.ipmiDriver && request.Node() >= 0 && request.Node() < found.bmcNodes;
  const TFault* fault = takesPlace ? CountAndChoose(KindOfRequest(request), request.Node()) : nullptr;
  if (fault == nullptr) return TForwardingServiceProcessor::SendIpmi(request, stop);
  if (!stop.WaitFor(fault->delay) || fault->lost) return std::nullopt;
  if (fault->completionCode) return TIpmiAnswer{*fault->completionCode, DataOfBareAnswer(request)};
  std::optional<TIpmiAnswer> answer = TForwardingServiceProcessor::SendIpmi(request, stop);
  if (answer && fault->truncate) Truncate(*fault->truncate, *answer);
  return answer;
}

std::optional<TDotAnswer> TFaultInjector::SendDot(const TDotRequest& request, const TStopSignal& stop) {
  const TDiscovery found = Discover();
  const int target = request.serviceProcessor;
  const bool takesPlace = found.dotCommands && target >= 0 && target < found.serviceProcessors;
  const TFault* fault = takesPlace ? CountAndChoose(EExchangeKind::kDot, target) : nullptr;
  if (fault == nullptr) return TForwardingServiceProcessor::SendDot(request, stop);
  if (!stop.WaitFor(fault->delay) || fault->lost) return std::nullopt;
  TDotRequest shorter = request;
  if (fault->truncate) shorter.capacity = std::min(*fault->truncate, request.capacity);
  return TForwardingServiceProcessor::SendDot(shorter, stop);
}

}  // namespace velhost
