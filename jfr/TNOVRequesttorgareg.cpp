#include "jfr/TNOVRequesttorgareg.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "nkrovel20/dotcmd.h"
#include "wire/commandbuffer.h"
#include "wire/registerblock.h"
#include "wire/registerread.h"

namespace torgareg {

using namespace NKROVEL20;
namespace Wire = wire::RegisterRead;

namespace {

constexpr int kCapacity = static_cast<int>(wire::TCommandBuffer::kSize);
const char* const kUnableToCommunicate =
    "Unable to communicate with system management hardware. Could not collect register data.";

// Both checks apply to the whole response: it must include the last byte that is used.
constexpr int kValueEnd = static_cast<int>(Wire::kValue + Wire::kValueSize);
constexpr int kTimestampEnd = static_cast<int>(Wire::kTimestamp + Wire::kTimestampSize);
static_assert(kValueEnd == 23 && kTimestampEnd == 13);

}  // namespace

// The logger is fetched before the library, although it is declared after it. The number of service
// processors is logged by the collector.
TNOVRequestTorgaReg::TNOVRequestTorgaReg() : spLibrary(nullptr), log(LogMessage::getInstance()), SPInstances(0) {
  spLibrary = SPLibrary::GetSplibraryInstance(0);
  if (!spLibrary->isDotcommand()) {
    log->writeDebug("TNOVRequestTorgaReg()::Is not Dotcommand.");
    return;
  }
  log->writeDebug("TNOVRequestTorgaReg()::Is Dotcommand.");
  if (!spLibrary->checkSPComm()) {
    log->writeDebug("TNOVRequestTorgaReg()::SPComm check failed.");
    return;
  }
  SPInstances = static_cast<std::uint8_t>(spLibrary->discoverSPs());  // deliberately eight bits
}

unsigned char TNOVRequestTorgaReg::GetSPInstances() { return SPInstances; }

int TNOVRequestTorgaReg::sendCommand(unsigned char* buffer, int bufferSize, int spIndex) {
  namespace Block = wire::RegisterBlockCommand;
  int responseLength = 0;
  const auto size = static_cast<unsigned int>(bufferSize);
  std::array<unsigned char, Block::kParameterSize> parameters{};
  parameters[Block::kParameterBufferSize] = static_cast<unsigned char>(size);
  parameters[Block::kParameterBufferSize + 1] = static_cast<unsigned char>(size >> 8U);
  dotCmd command(Block::kCommand, static_cast<int>(Block::kIdentifier.size()), static_cast<int>(parameters.size()),
                 Block::kIdentifier.data(), parameters.data());
  if (!spLibrary->isDotcommand()) {
    log->writeDebug(kUnableToCommunicate);
    return 0;
  }
  const bool ok = spLibrary->sendDotCommand(&command, buffer, &responseLength, spIndex, bufferSize);
  log->writeVerbose(std::string("sendCommand CmdStatus return ") + (ok ? "1" : "0") + "with a returnDataLen of " +
                    dataToString<int>(responseLength));
  if (!ok) log->writeDebug(kUnableToCommunicate);
  return responseLength;
}

bool TNOVRequestTorgaReg::getData(unsigned char registerSelector, unsigned int address, unsigned char* value,
                                  unsigned short* length) {
  log->writeDebug("Entered torgareg request.");
  wire::TCommandBuffer buffer(Wire::kNetworkFunction, Wire::kRegisterRead, Wire::kRequestSize);
  buffer[Wire::kChipSelector] = registerSelector;
  buffer[Wire::kAddress] = static_cast<std::uint8_t>(address >> 16U);
  buffer[Wire::kAddress + 1] = static_cast<std::uint8_t>(address >> 8U);
  buffer[Wire::kAddress + 2] = static_cast<std::uint8_t>(address);
  int responseLength = 0;
  std::string transcript;
  const bool ok = spLibrary->sendIPMICommand(buffer.Data(), &responseLength, kCapacity, true);
  if (ok) {
    transcript = "command completed checking success...\n\nThe response length is " + dataToString<int>(responseLength);
  }
  const bool succeeded = ok && responseLength >= kValueEnd && buffer.CompletionCode() == wire::TCommandBuffer::kSuccess;
  if (succeeded) {
    responseLength = buffer.DataLength();
    std::copy_n(buffer.Data() + Wire::kValue, Wire::kValueSize, value);
  }
  *length = static_cast<unsigned short>(responseLength);
  log->writeVerbose(transcript);
  return succeeded;
}

bool TNOVRequestTorgaReg::getTimeStamp(unsigned char* timeStamp, unsigned short* length) {
  log->writeDebug("Entered get time stamp request");
  wire::TCommandBuffer buffer(Wire::kNetworkFunction, Wire::kTimestampRead, 0);
  int responseLength = 0;
  std::string transcript;
  const bool ok = spLibrary->sendIPMICommand(buffer.Data(), &responseLength, kCapacity, true);
  if (ok) transcript = "Command completed checking success...\n";
  const bool succeeded =
      ok && responseLength >= kTimestampEnd && buffer.CompletionCode() == wire::TCommandBuffer::kSuccess;
  if (succeeded) {
    responseLength = buffer.DataLength();
    transcript += "\nThe response length is " + dataToString<int>(responseLength);
    std::copy_n(buffer.Data() + Wire::kTimestamp, Wire::kTimestampSize, timeStamp);
  }
  *length = static_cast<unsigned short>(responseLength);
  log->writeVerbose(transcript);
  return succeeded;
}

}  // namespace torgareg
