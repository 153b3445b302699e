#include "host/bmc/iserviceprocessor.h"

namespace velhost {

IServiceProcessor::~IServiceProcessor() = default;

std::optional<TDotAnswer> IServiceProcessor::SendDot(const TDotRequest& /*request*/, const TStopSignal& /*stop*/) {
  return std::nullopt;
}

ENoAnswer IServiceProcessor::WhyNoAnswer() const { return ENoAnswer::kLost; }

}  // namespace velhost
