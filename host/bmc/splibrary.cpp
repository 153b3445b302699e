#include "nkrovel20/splibrary.h"

#include <algorithm>
#include <map>
#include <memory>

#include "host/bmc/serviceprocessorhub.h"
#include "wire/commandbuffer.h"

namespace velhost {

namespace {

IServiceProcessor* installed = nullptr;
const TStopSignal* installedStop = nullptr;

const TStopSignal& Stop() {
  static const auto* const never = new TStopSignal();
  return installedStop ? *installedStop : *never;
}

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

int SPLibrary::GetNumberBMCNode() { return installed ? installed->BmcNodeCount() : 0; }
bool SPLibrary::IsIPMIDriversPresent() { return installed && installed->IpmiDriverPresent(); }
bool SPLibrary::checkSPComm() { return installed && installed->CheckCommunication(); }
int SPLibrary::discoverSPs() { return installed ? installed->DiscoverServiceProcessors() : 0; }
bool SPLibrary::isDotcommand() { return installed && installed->TakesDotCommands(); }

bool SPLibrary::sendIPMICommand(unsigned char* buffer, int* length, int capacity, bool /*flag*/) {
  constexpr auto kData = wire::TCommandBuffer::kData;
  if (!installed || buffer == nullptr || length == nullptr || capacity < static_cast<int>(kData)) return false;
  const std::size_t size = std::min(static_cast<std::size_t>(capacity), wire::TCommandBuffer::kSize);
  wire::TCommandBuffer exchange;
  std::copy_n(buffer, size, exchange.Data());
  int responseLength = *length;
  if (!installed->SendIpmi(node_, exchange, responseLength, Stop())) return false;
  // A caller may use the length as the end of its own buffer.
  const std::size_t dataLength = std::min<std::size_t>(exchange.DataLength(), size - kData);
  exchange[wire::TCommandBuffer::kDataLength] = static_cast<std::uint8_t>(dataLength);
  std::copy_n(exchange.Data(), size, buffer);
  *length = std::min(responseLength, static_cast<int>(size));
  return true;
}

bool SPLibrary::sendDotCommand(dotCmd* command, unsigned char* response, int* responseLength, int spIndex,
                               int bufferSize) {
  if (!installed || command == nullptr || response == nullptr || responseLength == nullptr || bufferSize < 0) {
    return false;
  }
  return installed->SendDot(spIndex, *command, {response, static_cast<std::size_t>(bufferSize)}, *responseLength,
                            Stop());
}

}  // namespace NKROVEL20
