#include "r8/ipmirequesttorgareg.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include "wire/commandbuffer.h"
#include "wire/registerread.h"

namespace torgareg {

using namespace NKROVEL20;
namespace Wire = wire::RegisterRead;

namespace {

constexpr int kCapacity = static_cast<int>(wire::TCommandBuffer::kSize);
// The dump is inclusive: it also shows the extra zero byte that the buffer owns.
constexpr unsigned long kLastDumped = wire::TCommandBuffer::kSize;
// Two dumps that are mostly zeros, and the words between them.
constexpr std::size_t kUsualTranscript = 1400;
// A timestamp read checks the length of the whole response, a register read that of its data.
constexpr int kTimestampEnd = static_cast<int>(Wire::kTimestamp + Wire::kTimestampSize);
static_assert(kTimestampEnd == 13);

wire::TCommandBuffer makeRegisterRead(unsigned char chipSelector, unsigned int address) {
  wire::TCommandBuffer buffer(Wire::kNetworkFunction, Wire::kRegisterRead, Wire::kRequestSize);
  buffer[Wire::kChipSelector] = chipSelector;
  buffer[Wire::kAddress] = static_cast<std::uint8_t>(address >> 16U);
  buffer[Wire::kAddress + 1] = static_cast<std::uint8_t>(address >> 8U);
  buffer[Wire::kAddress + 2] = static_cast<std::uint8_t>(address);
  return buffer;
}

void copyPayload(const wire::TCommandBuffer& response, unsigned char* out, bool rawValue) {
  namespace Record = wire::RegisterRecord;
  if (rawValue) {
    std::copy_n(response.Data() + Wire::kValue, Record::kValueSize, out);
    return;
  }
  // Deliberately one byte late: the decoder takes the first byte of the value from the label.
  std::copy_n(response.Data() + Record::kResponseLabel, Record::kIdentificationSize, out + Record::kLabel);
  std::copy(Record::kEqualsSign.begin(), Record::kEqualsSign.end(), out + Record::kLabelEquals);
  std::copy_n(response.Data() + Record::kResponseLabelledValue, Record::kValueSize, out + Record::kLabelledValue);
}

}  // namespace

// The logger is fetched before the library, although it is declared after it.
IPMIRequestTorgaReg::IPMIRequestTorgaReg() : library(nullptr), logger(LogMessage::getInstance()) {
  library = SPLibrary::GetSplibraryInstance(0);
}

bool IPMIRequestTorgaReg::getData(unsigned char chipSelector, unsigned int address, unsigned char* out,
                                  unsigned short* length, bool rawValue) {
  logger->writeDebug("Entered torgareg request.");
  wire::TCommandBuffer buffer = makeRegisterRead(chipSelector, address);
  std::string transcript;
  transcript.reserve(kUsualTranscript);
  transcript += "Contents of buffer to send (rspBuf):\n";
  transcript += printArray(buffer.Data(), kLastDumped);
  int responseLength = kCapacity;
  bool succeeded = library->sendIPMICommand(buffer.Data(), &responseLength, kCapacity, true);
  if (succeeded) {
    transcript += "command completed checking success...\n";
    responseLength = buffer.DataLength();
    transcript += "\nThe response length is " + dataToString<int>(responseLength) + "\n\nContents of (rspBuf):\n";
    transcript += printArray(buffer.Data(), kLastDumped);
    succeeded = responseLength >= static_cast<int>(Wire::kResponseSize) &&
                buffer.CompletionCode() == wire::TCommandBuffer::kSuccess;
    if (succeeded) {
      copyPayload(buffer, out, rawValue);
    } else {
      transcript += "Bad RC from ipmi cmd.";
    }
  }
  *length = static_cast<unsigned short>(responseLength);
  logger->writeVerbose(transcript);
  return succeeded;
}

bool IPMIRequestTorgaReg::getTimeStamp(unsigned char* out, unsigned short* length) {
  logger->writeDebug("Entered get time stamp request");
  wire::TCommandBuffer buffer(Wire::kNetworkFunction, Wire::kTimestampRead, 0);
  int responseLength = kCapacity;
  std::string transcript;
  bool succeeded = library->sendIPMICommand(buffer.Data(), &responseLength, kCapacity, true);
  if (succeeded) {
    transcript += "Command completed checking success...\n";
    succeeded = responseLength >= kTimestampEnd && buffer.CompletionCode() == wire::TCommandBuffer::kSuccess;
  }
  if (succeeded) {
    responseLength = buffer.DataLength();
    transcript += "\nThe response length is " + dataToString<int>(responseLength);
    std::copy_n(buffer.Data() + Wire::kTimestamp, Wire::kTimestampSize, out);
  }
  *length = static_cast<unsigned short>(responseLength);
  logger->writeVerbose(transcript);
  return succeeded;
}

}  // namespace torgareg
