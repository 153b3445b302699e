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
  isRefused_ = stop.IsStopped();
  std::optional<TIpmiAnswer> answer;
  if (!isRefused_) answer = TForwardingServiceProcessor::SendIpmi(request, stop);
  const TIpmiExchange exchange = {request, answer ? &*answer : nullptr, Since(start), WhyNoAnswer()};
  for (IExchangeObserver* observer : observers_) observer->OnIpmi(exchange);
  return answer;
}

std::optional<TDotAnswer> TSupervisedServiceProcessor::SendDot(const TDotRequest& request, const TStopSignal& stop) {
  const auto start = TClock::now();
  isRefused_ = stop.IsStopped();
  std::optional<TDotAnswer> answer;
  if (!isRefused_) answer = TForwardingServiceProcessor::SendDot(request, stop);
  const TDotExchange exchange = {request, answer && !answer->failed ? &*answer : nullptr, Since(start), WhyNoAnswer()};
  for (IExchangeObserver* observer : observers_) observer->OnDot(exchange);
  return answer;
}

ENoAnswer TSupervisedServiceProcessor::WhyNoAnswer() const {
  return isRefused_ ? ENoAnswer::kNotSent : TForwardingServiceProcessor::WhyNoAnswer();
}

namespace {

std::string MiB(std::int64_t bytes) { return std::to_string(bytes >> 20) + " MiB"; }

}  // namespace

std::optional<TIpmiAnswer> TSizeLimit::SendIpmi(const TIpmiRequest& request, const TStopSignal& stop) {
  std::optional<TIpmiAnswer> answer = TForwardingServiceProcessor::SendIpmi(request, stop);
  const bool tellsASize = answer && answer->completionCode == wire::TCommandBuffer::kSuccess &&
                          KindOfRequest(request) == EExchangeKind::kSize;
  if (tellsASize && !Accept(request, SizeInAnswer(*answer))) return std::nullopt;
  return answer;
}

bool TSizeLimit::Accept(const TIpmiRequest& request, std::int64_t size) {
  if (size <= 0) return true;
  std::string limit;
  if (size > kLargestArea) {
    limit = "over the limit of " + MiB(kLargestArea);
  } else if (size > kLargestAreasOfRequest - accepted_) {
    limit = "which with those before it exceeds the limit of " + MiB(kLargestAreasOfRequest) + " for one request";
  } else {
    accepted_ += size;
    return true;
  }
  if (!onRefusal_) return false;
  onRefusal_("node " + std::to_string(request.Node()) + ", storage area " + AreaInSizeRequest(request) + " reports " +
             std::to_string(size) + " bytes, " + limit + ": not read");
  return false;
}

}  // namespace velhost
