// The OEM storage-area commands of a BMC: open, query size, read, close.
#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <string>

#include "plugin/registerdump.h"
#include "plugin/torgaplugin.h"
#include "wire/commandbuffer.h"
#include "wire/storagearea.h"

namespace torgareg {

using namespace NKROVEL20;
namespace Wire = wire::StorageArea;

namespace {

constexpr int kChunkSize = 10;
// What is subtracted from the length of a response to get the size of its data. The true overhead is 14
// bytes; this is what users of the protocol have always subtracted. The nine surplus bytes never show,
// because the copy is limited to the chunk.
constexpr int kReadLengthOverhead = 5;
// The trace of a close shows as many bytes as a read request has; the last six are zero.
constexpr std::size_t kTracedCloseSize = wire::TCommandBuffer::kData + Wire::kReadLength;
constexpr std::size_t kReadRequestSize = wire::TCommandBuffer::kData + Wire::kReadLength;
static_assert(kReadRequestSize == 23 && kTracedCloseSize == 23);

wire::TCommandBuffer makeRequest(std::uint8_t subCommand, std::size_t dataLength) {
  wire::TCommandBuffer buffer(Wire::kNetworkFunction, Wire::kCommand, static_cast<std::uint8_t>(dataLength));
  std::copy(Wire::kManufacturerId.begin(), Wire::kManufacturerId.end(), buffer.Data() + Wire::kManufacturer);
  buffer[Wire::kSubCommand] = subCommand;
  return buffer;
}

// A longer name is truncated, without a terminator.
void putName(wire::TCommandBuffer& buffer, std::size_t offset, const std::string& name) {
  const std::string field = name.substr(0, Wire::kNameSize);
  std::copy(field.begin(), field.end(), buffer.Data() + offset);
}

void putHandle(wire::TCommandBuffer& buffer, const unsigned char* handle) {
  std::copy_n(handle, Wire::kHandleSize, buffer.Data() + Wire::kHandle);
}

std::uint32_t getLittleEndian32(const wire::TCommandBuffer& buffer, std::size_t offset) {
  std::uint32_t value = 0;
  for (std::size_t i = 0; i < 4; ++i) value |= static_cast<std::uint32_t>(buffer[offset + i]) << (8 * i);
  return value;
}

void putLittleEndian32(wire::TCommandBuffer& buffer, std::size_t offset, std::uint32_t value) {
  for (std::size_t i = 0; i < 4; ++i) buffer[offset + i] = static_cast<std::uint8_t>(value >> (8 * i));
}

// `size` counts the whole name, which may be longer than the request that carries it.
std::string traceOf(const std::string& command, std::size_t size, const wire::TCommandBuffer& request) {
  std::string text = command + " IPMI command data:" + std::to_string(size) + "bits\n";
  appendHexPairs(text, request.Data(), std::min(size, wire::TCommandBuffer::kSize));
  return text;
}

// The request is copied to `response`; the library gets that buffer and overwrites it.
bool send(SPLibrary* sp, const wire::TCommandBuffer& request, wire::TCommandBuffer& response, int& length) {
  length = static_cast<int>(wire::TCommandBuffer::kSize);
  response = request;
  return sp->sendIPMICommand(response.Data(), &length, static_cast<int>(wire::TCommandBuffer::kSize), true);
}

std::string toHex(std::uint8_t value) {
  std::array<char, 2> digits;
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value, 16).ptr;
  return std::string(digits.data(), end);
}

wire::TCommandBuffer makeReadRequest(const unsigned char* handle, int offset, int chunk) {
  wire::TCommandBuffer request = makeRequest(Wire::kRead, Wire::kReadLength);
  putHandle(request, handle);
  putLittleEndian32(request, Wire::kReadOffset, static_cast<std::uint32_t>(offset));
  request[Wire::kReadCount] = static_cast<std::uint8_t>(chunk);  // the high byte of the field stays zero
  return request;
}

// A BMC must not return more than was requested; any surplus is dropped.
int copiedSize(int responseLength, int chunk) {
  const std::int64_t offered = std::int64_t{responseLength} - kReadLengthOverhead;
  return static_cast<int>(std::clamp<std::int64_t>(offered, 0, std::max(chunk, 0)));
}

// Wraps around if a negative size from the caller keeps the loop running that long.
int advanced(int offset, int chunk) {
  return static_cast<int>(static_cast<unsigned int>(offset) + static_cast<unsigned int>(chunk));
}

}  // namespace

bool TTORGARegPluginCallbacks::OpenStorageArea(unsigned char* handle, const std::string& name, SPLibrary* sp) {
  logger->writeDebug("Enter OpenStorageArea funtion");
  wire::TCommandBuffer request = makeRequest(Wire::kOpen, name.size() + Wire::kOpenLength);
  request[Wire::kBody] = Wire::kOpenMode;
  putName(request, Wire::kOpenName, name);
  // The prefix appears twice.
  logger->writeDebug("OpenStorageArea IPMI command data:" +
                     traceOf("OpenStorageArea", name.size() + Wire::kOpenName, request));
  wire::TCommandBuffer response;
  int length = 0;
  if (!send(sp, request, response, length) || response.CompletionCode() != wire::TCommandBuffer::kSuccess) return false;
  std::copy_n(response.Data() + Wire::kResponseHandle, Wire::kHandleSize, handle);
  logger->writeDebug("Exit OpenStorageArea funtion");
  return true;
}

bool TTORGARegPluginCallbacks::QueryStorageAreaSize(int& size, const std::string& name, SPLibrary* sp) {
  logger->writeDebug("Enter QueryStorageAreaSize funtion");
  wire::TCommandBuffer request = makeRequest(Wire::kQuerySize, name.size() + Wire::kQueryLength);
  putName(request, Wire::kQueryName, name);
  // The two prefixes differ.
  logger->writeDebug("QueryStorageArea IPMI command data:" +
                     traceOf("QueryStorageAreaSize", name.size() + Wire::kQueryName, request));
  wire::TCommandBuffer response;
  int length = 0;
  if (!send(sp, request, response, length) || response.CompletionCode() != wire::TCommandBuffer::kSuccess) return false;
  size = static_cast<std::int32_t>(getLittleEndian32(response, Wire::kResponseSize));
  logger->writeDebug("total storage area size:" + dataToString<int>(size) + "\n");
  logger->writeDebug("Exit QueryStorageAreaSize funtion");
  return true;
}

int TTORGARegPluginCallbacks::ReadStorageArea(int size, unsigned char* handle, unsigned char* out, SPLibrary* sp) {
  logger->writeDebug("Enter ReadStorageArea funtion");
  const int capacity = std::max(size, kChunkSize);
  const int full = size / kChunkSize;
  const int rest = size - full * kChunkSize;
  int offset = 0;
  int count = 0;
  int chunk = kChunkSize;
  wire::TCommandBuffer response;
  while (true) {
    const wire::TCommandBuffer request = makeReadRequest(handle, offset, chunk);
    std::string line = "ReadStorageArea IPMI command data:";
    appendHexPairs(line, request.Data(), kReadRequestSize);
    logger->writeDebug(line);
    int length = 0;
    send(sp, request, response, length);  // without an answer, the completion code is the request's command byte
    logger->writeDebug("completeCode:" + toHex(response.CompletionCode()) + "\n");
    if (response.CompletionCode() != wire::TCommandBuffer::kSuccess) break;

    const int copied = copiedSize(length, chunk);
    line = "Response raw data size:" + dataToString<int>(copied) + ", loopoffset:" + dataToString<int>(count) +
           ", raw data info:";
    appendHexPairs(line, response.Data() + Wire::kResponseData, static_cast<std::size_t>(copied));
    logger->writeDebug(line);
    if (offset >= 0 && offset < capacity) {
      std::copy_n(response.Data() + Wire::kResponseData, std::min(copied, capacity - offset), out + offset);
    }

    offset = advanced(offset, chunk);  // what was asked for, also where less came
    count = advanced(count, 1);
    if (count == full) {
      if (rest == 0) break;
      chunk = rest;
    }
    // Deliberately unsigned: with a negative size, reading continues until a completion code ends it.
    if (static_cast<unsigned int>(full) < static_cast<unsigned int>(count)) break;
  }
  logger->writeDebug("returned smbioslen:" + dataToString<int>(offset) + "\n");
  logger->writeDebug("Exit ReadStorageArea funtion");
  return offset;
}

void TTORGARegPluginCallbacks::CloseStorageArea(unsigned char* handle, SPLibrary* sp) {
  logger->writeDebug("Enter CloseStorageArea funtion");
  wire::TCommandBuffer request = makeRequest(Wire::kClose, Wire::kCloseLength);
  putHandle(request, handle);
  std::string line = "CloseStorageArea IPMI command data:";
  appendHexPairs(line, request.Data(), kTracedCloseSize);
  logger->writeDebug(line);
  wire::TCommandBuffer response;
  int length = 0;
  send(sp, request, response, length);
  if (response.CompletionCode() == wire::TCommandBuffer::kSuccess) logger->writeDebug("close file successfully");
  logger->writeDebug("Exit ReadStorageArea funtion");  // deliberately the text of the read
}

}  // namespace torgareg
