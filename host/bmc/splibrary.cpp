// The contract's SPLibrary and dotCmd, and the service processor that answers for them.
#include "nkrovel20/splibrary.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <vector>

#include "host/bmc/iserviceprocessor.h"
#include "nkrovel20/dotcmd.h"
#include "wire/commandbuffer.h"

namespace velhost {

IServiceProcessor::~IServiceProcessor() = default;

std::optional<TDotAnswer> IServiceProcessor::SendDot(const TDotRequest& /*request*/, const TStopSignal& /*stop*/) {
  return std::nullopt;
}

ENoAnswer IServiceProcessor::WhyNoAnswer() const { return ENoAnswer::kLost; }

namespace {

IServiceProcessor* installed = nullptr;
const TStopSignal* installedStop = nullptr;

const TStopSignal& Stop() {
  static const auto* const never = new TStopSignal();
  return installedStop ? *installedStop : *never;
}

TDiscovery Discovered() { return installed ? installed->Discover() : TDiscovery(); }

}  // namespace

void TServiceProcessorHub::Install(IServiceProcessor* serviceProcessor, const TStopSignal* stop) {
  installed = serviceProcessor;
  installedStop = stop;
}

}  // namespace velhost

namespace NKROVEL20 {

using namespace velhost;

SPLibrary::SPLibrary() : node_(0) {}
SPLibrary::SPLibrary(int node) : node_(node) {}
SPLibrary::~SPLibrary() = default;

SPLibrary* SPLibrary::GetSplibraryInstance(int node) {
  static auto* const instances = new std::map<int, std::unique_ptr<SPLibrary>>();
  std::unique_ptr<SPLibrary>& instance = (*instances)[node];
  if (!instance) instance.reset(new SPLibrary(node));
  return instance.get();
}

int SPLibrary::GetNumberBMCNode() { return Discovered().bmcNodes; }
bool SPLibrary::IsIPMIDriversPresent() { return Discovered().ipmiDriver; }
bool SPLibrary::checkSPComm() { return Discovered().communicates; }
int SPLibrary::discoverSPs() { return Discovered().serviceProcessors; }
bool SPLibrary::isDotcommand() { return Discovered().dotCommands; }

bool SPLibrary::sendIPMICommand(unsigned char* buffer, int* length, int capacity, bool /*flag*/) {
  constexpr auto kData = wire::TCommandBuffer::kData;
  if (!installed || buffer == nullptr || length == nullptr || capacity < static_cast<int>(kData)) return false;
  const std::size_t size = std::min(static_cast<std::size_t>(capacity), wire::TCommandBuffer::kSize);
  wire::TCommandBuffer taken;
  std::copy_n(buffer, size, taken.Data());
  const TIpmiRequest request(node_, taken);
  const auto answer = installed->SendIpmi(request, Stop());
  if (!answer) return false;
  wire::TCommandBuffer given = answer->InBufferOf(request);
  // Callers may use the length as the end of their own buffer.
  given[wire::TCommandBuffer::kDataLength] =
      static_cast<std::uint8_t>(std::min<std::size_t>(answer->DataLength(), size - kData));
  std::copy_n(given.Data(), size, buffer);
  *length = std::min(answer->Length(), static_cast<int>(size));
  return true;
}

bool SPLibrary::sendDotCommand(dotCmd* command, unsigned char* response, int* responseLength, int spIndex,
                               int bufferSize) {
  if (!installed || command == nullptr || response == nullptr || responseLength == nullptr || bufferSize < 0) {
    return false;
  }
  const auto answer = installed->SendDot({spIndex, *command, static_cast<std::size_t>(bufferSize)}, Stop());
  if (!answer) return false;
  const std::size_t size = std::min(answer->data.size(), static_cast<std::size_t>(bufferSize));
  std::copy_n(answer->data.begin(), size, response);
  *responseLength = answer->claimedLength.value_or(static_cast<int>(size));
  return !answer->failed;
}

namespace {

std::vector<std::uint8_t> Copy(const unsigned char* bytes, int length) {
  if (bytes == nullptr || length <= 0) return {};
  return std::vector<std::uint8_t>(bytes, bytes + length);
}

}  // namespace

dotCmd::dotCmd(unsigned char command, int identifierLength, int parameterLength, const unsigned char* identifier,
               const unsigned char* parameters)
    : command_(command),
      identifier_(Copy(identifier, identifierLength)),
      parameters_(Copy(parameters, parameterLength)) {}

dotCmd::~dotCmd() = default;

}  // namespace NKROVEL20
