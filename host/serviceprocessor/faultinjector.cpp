#include "host/serviceprocessor/faultinjector.h"

#include <algorithm>

#include "host/serviceprocessor/commandframe.h"
#include "host/serviceprocessor/simulatedserver.h"

namespace NKROVEL20 {

namespace {

bool Matches(const TFault& fault, EExchangeKind kind, int node) {
  if (fault.node && *fault.node != node) return false;
  return fault.on ? *fault.on == kind : kind != EExchangeKind::kDot;
}

void Truncate(std::size_t size, TIPMICommandBuffer& buffer, int& length) {
  const std::size_t data = size - std::min(size, TIPMICommandBuffer::kData);
  if (data >= buffer.DataLength()) return;
  std::fill(buffer.Data() + TIPMICommandBuffer::kData + data, buffer.Data() + TIPMICommandBuffer::kSize,
            std::uint8_t{0});
  buffer[TIPMICommandBuffer::kDataLength] = static_cast<std::uint8_t>(data);
  length = static_cast<int>(TIPMICommandBuffer::kData + data);
}

}  // namespace

TFaultInjector::TFaultInjector(IServiceProcessor& inner, std::vector<TFault> faults) : inner_(inner) {
  for (TFault& fault : faults) faults_.push_back({fault});
}

// Faults behind the one that is applied count as well.
const TFault* TFaultInjector::CountAndChoose(EExchangeKind kind, int node) {
  const TFault* chosen = nullptr;
  for (TCountedFault& entry : faults_) {
    if (!Matches(entry.fault, kind, node)) continue;
    ++entry.count;
    const bool isDue = !entry.fault.nth || *entry.fault.nth == entry.count;
    if (isDue && chosen == nullptr) chosen = &entry.fault;
  }
  return chosen;
}

bool TFaultInjector::SendIpmi(int node, TIPMICommandBuffer& buffer, int& length, const TStopSignal& stop) {
  const bool takesPlace = inner_.IpmiDriverPresent() && node >= 0 && node < inner_.BmcNodeCount();
  const TFault* fault = takesPlace ? CountAndChoose(KindOfRequest(buffer), node) : nullptr;
  if (fault == nullptr) return inner_.SendIpmi(node, buffer, length, stop);
  if (!stop.WaitFor(fault->delay) || fault->lost) return false;
  if (fault->completionCode) {
    const std::uint8_t networkFunction = buffer[TIPMICommandBuffer::kNetworkFunction];
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

}  // namespace NKROVEL20
