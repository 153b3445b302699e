#include "host/bmc/supervision.h"

namespace velhost {

namespace {

using TClock = std::chrono::steady_clock;

std::chrono::microseconds Since(TClock::time_point start) {
  return std::chrono::duration_cast<std::chrono::microseconds>(TClock::now() - start);
}

}  // namespace

IExchangeObserver::~IExchangeObserver() = default;

std::optional<TIpmiAnswer> TSupervisedServiceProcessor::SendIpmi(const TIpmiRequest& request, const TStopSignal& stop) {
  const auto start = TClock::now();
  const bool attempted = !stop.IsStopped();
  std::optional<TIpmiAnswer> answer;
  if (attempted) answer = TForwardingServiceProcessor::SendIpmi(request, stop);
  const TIpmiExchange exchange = {request, attempted, answer ? &*answer : nullptr, Since(start)};
  for (IExchangeObserver* observer : observers_) observer->OnIpmi(exchange);
  return answer;
}

std::optional<TDotAnswer> TSupervisedServiceProcessor::SendDot(const TDotRequest& request, const TStopSignal& stop) {
  const auto start = TClock::now();
  const bool attempted = !stop.IsStopped();
  std::optional<TDotAnswer> answer;
  if (attempted) answer = TForwardingServiceProcessor::SendDot(request, stop);
  const TDotExchange exchange = {request, attempted, answer && !answer->failed ? &*answer : nullptr, Since(start)};
  for (IExchangeObserver* observer : observers_) observer->OnDot(exchange);
  return answer;
}

}  // namespace velhost
