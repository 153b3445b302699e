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
  attempted_ = !stop.IsStopped();
  std::optional<TIpmiAnswer> answer;
  if (attempted_) answer = TForwardingServiceProcessor::SendIpmi(request, stop);
  const TIpmiExchange exchange = {request, attempted_, answer ? &*answer : nullptr, Since(start), WhyNoAnswer()};
  for (IExchangeObserver* observer : observers_) observer->OnIpmi(exchange);
  return answer;
}

std::optional<TDotAnswer> TSupervisedServiceProcessor::SendDot(const TDotRequest& request, const TStopSignal& stop) {
  const auto start = TClock::now();
  attempted_ = !stop.IsStopped();
  std::optional<TDotAnswer> answer;
  if (attempted_) answer = TForwardingServiceProcessor::SendDot(request, stop);
  const TDotExchange exchange = {request, attempted_, answer && !answer->failed ? &*answer : nullptr, Since(start),
                                 WhyNoAnswer()};
  for (IExchangeObserver* observer : observers_) observer->OnDot(exchange);
  return answer;
}

ENoAnswer TSupervisedServiceProcessor::WhyNoAnswer() const {
  return attempted_ ? TForwardingServiceProcessor::WhyNoAnswer() : ENoAnswer::kNotSent;
}

}  // namespace velhost
