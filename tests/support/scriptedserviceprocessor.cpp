#include "tests/support/scriptedserviceprocessor.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

namespace tests {

namespace {

TBytes WithoutTrailingZeros(TBytes bytes) {
  while (!bytes.empty() && bytes.back() == 0) bytes.pop_back();
  return bytes;
}

std::string Text(bool isDot, int target, const TBytes& request) {
  std::ostringstream text;
  text << (isDot ? "dot command to service processor " : "IPMI request to node ") << target << ": "
       << ::testing::PrintToString(request);
  return text.str();
}

TBytes BytesOf(const wire::TCommandBuffer& buffer) {
  return TBytes(buffer.Data(), buffer.Data() + wire::TCommandBuffer::kSize);
}

TBytes BytesOf(const dotCmd& command) {
  TBytes bytes = {command.GetCommand()};
  bytes.insert(bytes.end(), command.GetIdentifier().begin(), command.GetIdentifier().end());
  bytes.insert(bytes.end(), command.GetParameters().begin(), command.GetParameters().end());
  return bytes;
}

}  // namespace

TScriptedServiceProcessor::~TScriptedServiceProcessor() {
  for (const TStep& step : script_) ADD_FAILURE() << "not sent: " << Text(step.isDot, step.target, step.request);
}

TDiscovery TScriptedServiceProcessor::Discover() {
  ++discoveries_;
  return {nodes, driverPresent, takesDotCommands, communicates, serviceProcessors};
}

/// The script's next step; empty if the request is not that step.
std::optional<TStep> TScriptedServiceProcessor::Advance(bool isDot, int target, const TBytes& request) {
  if (script_.empty()) {
    ADD_FAILURE() << "sent beyond the script: " << Text(isDot, target, request);
    return std::nullopt;
  }
  const TStep step = script_.front();
  script_.pop_front();
  const TBytes expected = isDot ? step.request : WithoutTrailingZeros(step.request);
  if (step.isDot != isDot || step.target != target || expected != request) {
    ADD_FAILURE() << "expected " << Text(step.isDot, step.target, expected) << "\n  but got "
                  << Text(isDot, target, request);
    return std::nullopt;
  }
  if (step.action) step.action();
  return step;
}

std::optional<TIpmiAnswer> TScriptedServiceProcessor::SendIpmi(const TIpmiRequest& request, const TStopSignal& stop) {
  const auto step = Advance(false, request.Node(), WithoutTrailingZeros(BytesOf(request.Buffer())));
  if (!step || !stop.WaitFor(step->delay) || !step->answered) return std::nullopt;
  return TIpmiAnswer{step->completionCode, step->data, step->dataLength, step->length};
}

std::optional<TDotAnswer> TScriptedServiceProcessor::SendDot(const TDotRequest& request, const TStopSignal& stop) {
  const auto step = Advance(true, request.serviceProcessor, BytesOf(request.command));
  if (!step) return std::nullopt;
  const bool answered = stop.WaitFor(step->delay) && step->answered;
  if (!answered && !step->length) return std::nullopt;
  TDotAnswer answer = {answered ? step->data : TBytes(), step->length, !answered};
  answer.data.resize(std::min(answer.data.size(), request.capacity));
  return answer;
}

}  // namespace tests
