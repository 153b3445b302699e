#include "tests/support/scriptedserviceprocessor.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

#include "host/bmc/commandframe.h"

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

int TScriptedServiceProcessor::BmcNodeCount() {
  discoveries_.emplace_back("nodes");
  return nodes;
}

bool TScriptedServiceProcessor::IpmiDriverPresent() {
  discoveries_.emplace_back("driver");
  return driverPresent;
}

bool TScriptedServiceProcessor::TakesDotCommands() {
  discoveries_.emplace_back("dot");
  return takesDotCommands;
}

bool TScriptedServiceProcessor::CheckCommunication() {
  discoveries_.emplace_back("check");
  return communicates;
}

int TScriptedServiceProcessor::DiscoverServiceProcessors() {
  discoveries_.emplace_back("discover");
  return serviceProcessors;
}

bool TScriptedServiceProcessor::Advance(bool isDot, int target, const TBytes& request, TStep& step) {
  if (script_.empty()) {
    ADD_FAILURE() << "sent beyond the script: " << Text(isDot, target, request);
    return false;
  }
  step = script_.front();
  script_.pop_front();
  const TBytes expected = isDot ? step.request : WithoutTrailingZeros(step.request);
  if (step.isDot != isDot || step.target != target || expected != request) {
    ADD_FAILURE() << "expected " << Text(step.isDot, step.target, expected) << "\n  but got "
                  << Text(isDot, target, request);
    return false;
  }
  if (step.action) step.action();
  return true;
}

bool TScriptedServiceProcessor::SendIpmi(int node, wire::TCommandBuffer& buffer, int& length, const TStopSignal& stop) {
  presetLengths_.push_back(length);
  TStep step;
  if (!Advance(false, node, WithoutTrailingZeros(BytesOf(buffer)), step)) return false;
  if (!stop.WaitFor(step.delay) || !step.answered) return false;
  CommandFrame::StoreResponse(buffer, length, step.completionCode, step.data);
  if (step.dataLength) buffer[wire::TCommandBuffer::kDataLength] = *step.dataLength;
  if (step.length) length = *step.length;
  return true;
}

bool TScriptedServiceProcessor::SendDot(int serviceProcessor, const dotCmd& command, std::span<std::uint8_t> response,
                                        int& length, const TStopSignal& stop) {
  TStep step;
  if (!Advance(true, serviceProcessor, BytesOf(command), step)) return false;
  const bool answered = stop.WaitFor(step.delay) && step.answered;
  if (answered) {
    const std::size_t size = std::min(step.data.size(), response.size());
    std::copy_n(step.data.begin(), size, response.begin());
    length = static_cast<int>(size);
  }
  if (step.length) length = *step.length;
  return answered;
}

}  // namespace tests
