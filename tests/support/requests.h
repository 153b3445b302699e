// A collector's requests as command buffers. Each byte is written out.
#pragma once

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "tests/support/namespaces.h"
#include "wire/commandbuffer.h"

namespace tests {

using TBytes = std::vector<std::uint8_t>;

inline TBytes operator+(TBytes left, const TBytes& right) {
  left.insert(left.end(), right.begin(), right.end());
  return left;
}

inline std::uint8_t ByteOf(std::uint32_t number, int place) { return static_cast<std::uint8_t>(number >> (8 * place)); }
inline TBytes LittleEndian(std::uint32_t number) {
  return {ByteOf(number, 0), ByteOf(number, 1), ByteOf(number, 2), ByteOf(number, 3)};
}

/// The command buffer of a request: network function, command, and data, whose size goes into byte 5.
inline wire::TCommandBuffer Request(std::uint8_t networkFunction, std::uint8_t command, const TBytes& data) {
  wire::TCommandBuffer buffer;
  buffer[0] = 0x01;
  buffer[1] = 0x20;
  buffer[2] = networkFunction;
  buffer[4] = command;
  buffer[5] = static_cast<std::uint8_t>(data.size());
  for (std::size_t i = 0; i < data.size(); ++i) buffer[9 + i] = data[i];
  return buffer;
}

inline wire::TCommandBuffer ReadRegister(std::uint8_t chip, std::uint32_t address) {
  return Request(0x3A, 0x62, {chip, ByteOf(address, 2), ByteOf(address, 1), ByteOf(address, 0)});
}
inline wire::TCommandBuffer ReadTimestamp() { return Request(0x3A, 0x6F, {}); }

/// A request whose last field is a name, of which only 25 bytes are sent; byte 5 counts all of it.
inline wire::TCommandBuffer NamedRequest(const TBytes& before, const std::string& name) {
  const std::string field = name.substr(0, 25);
  wire::TCommandBuffer buffer = Request(0x2E, 0x90, before + TBytes(field.begin(), field.end()));
  buffer[5] = static_cast<std::uint8_t>(before.size() + name.size());
  return buffer;
}
inline wire::TCommandBuffer OpenArea(const std::string& name) {
  return NamedRequest({0x39, 0x30, 0x00, 0x01, 0x01, 0, 0, 0, 0, 0, 0, 0}, name);
}
inline wire::TCommandBuffer QuerySize(const std::string& name) { return NamedRequest({0x39, 0x30, 0x00, 0x06}, name); }
inline wire::TCommandBuffer ReadArea(const TBytes& handle, std::uint32_t offset, std::uint16_t count) {
  return Request(
      0x2E, 0x90,
      TBytes{0x39, 0x30, 0x00, 0x02} + handle + LittleEndian(offset) + TBytes{ByteOf(count, 0), ByteOf(count, 1)});
}
inline wire::TCommandBuffer ReadArea(std::uint32_t handle, std::uint32_t offset, std::uint16_t count) {
  return ReadArea(LittleEndian(handle), offset, count);
}
inline wire::TCommandBuffer CloseArea(const TBytes& handle) {
  return Request(0x2E, 0x90, TBytes{0x39, 0x30, 0x00, 0x05} + handle);
}
inline wire::TCommandBuffer CloseArea(std::uint32_t handle) { return CloseArea(LittleEndian(handle)); }

}  // namespace tests
