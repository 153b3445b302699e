#include "host/bmc/serviceprocessorhub.h"

#include <algorithm>

namespace velhost {

namespace {

using TClock = std::chrono::steady_clock;

std::chrono::microseconds Since(TClock::time_point start) {
  return std::chrono::duration_cast<std::chrono::microseconds>(TClock::now() - start);
}

}  // namespace

IServiceProcessor::~IServiceProcessor() = default;
IExchangeObserver::~IExchangeObserver() = default;

bool TSupervisedServiceProcessor::SendIpmi(int node, wire::TCommandBuffer& buffer, int& length,
                                           const TStopSignal& stop) {
  const wire::TCommandBuffer request = buffer;
  const auto start = TClock::now();
  const bool attempted = !stop.IsStopped();
  const bool answered = attempted && inner_.SendIpmi(node, buffer, length, stop);
  const TIpmiExchange exchange = {node, attempted, request, answered, buffer, length, Since(start)};
  for (IExchangeObserver* observer : observers_) observer->OnIpmi(exchange);
  return answered;
}

bool TSupervisedServiceProcessor::SendDot(int serviceProcessor, const dotCmd& command, std::span<std::uint8_t> response,
                                          int& length, const TStopSignal& stop) {
  const auto start = TClock::now();
  const bool attempted = !stop.IsStopped();
  const bool answered = attempted && inner_.SendDot(serviceProcessor, command, response, length, stop);
  const std::size_t size = answered && length > 0 ? std::min(static_cast<std::size_t>(length), response.size()) : 0;
  const TDotExchange exchange = {serviceProcessor,     attempted, command,     answered,
                                 response.first(size), length,    Since(start)};
  for (IExchangeObserver* observer : observers_) observer->OnDot(exchange);
  return answered;
}

}  // namespace velhost
