// The 256-byte IPMI command buffer: it carries the request in and the response back out.
// docs/wire-formats.md, "IPMI command buffer", describes the layout.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace wire {

// Completion codes, apart from TCommandBuffer::kSuccess: what a BMC answers if it does not know the command, or does
// not have what was asked for.
inline constexpr std::uint8_t kInvalidCommand = 0xC1;
inline constexpr std::uint8_t kNotPresent = 0xCB;

/// One IPMI command buffer, zero-filled. It owns one extra zero byte after the 256, because the register
/// dumps also print the byte after the end of the buffer.
class TCommandBuffer {
 public:
  static constexpr std::size_t kSize = 256;
  static constexpr std::size_t kSpareBytes = 1;

  // Field offsets.
  static constexpr std::size_t kFormat = 0;
  static constexpr std::size_t kResponderAddress = 1;
  static constexpr std::size_t kNetworkFunction = 2;
  static constexpr std::size_t kLun = 3;
  static constexpr std::size_t kCommand = 4;         // in a request
  static constexpr std::size_t kCompletionCode = 4;  // in a response
  static constexpr std::size_t kDataLength = 5;
  static constexpr std::size_t kReserved = 6;  // three zero bytes
  static constexpr std::size_t kData = 9;
  static constexpr std::size_t kMaxData = kSize - kData;

  // Field values.
  static constexpr std::uint8_t kFormatByte = 0x01;
  static constexpr std::uint8_t kBmcAddress = 0x20;
  static constexpr std::uint8_t kSuccess = 0x00;

  TCommandBuffer() = default;

  /// A request to LUN 0 of the BMC. The caller fills in the data, starting at kData.
  TCommandBuffer(std::uint8_t networkFunction, std::uint8_t command, std::uint8_t dataLength) {
    bytes_[kFormat] = kFormatByte;
    bytes_[kResponderAddress] = kBmcAddress;
    bytes_[kNetworkFunction] = networkFunction;
    bytes_[kCommand] = command;
    bytes_[kDataLength] = dataLength;
  }

  unsigned char* Data() noexcept { return bytes_.data(); }
  const unsigned char* Data() const noexcept { return bytes_.data(); }
  std::uint8_t& operator[](std::size_t offset) { return bytes_.at(offset); }
  std::uint8_t operator[](std::size_t offset) const { return bytes_.at(offset); }

  std::uint8_t CompletionCode() const noexcept { return bytes_[kCompletionCode]; }
  std::uint8_t DataLength() const noexcept { return bytes_[kDataLength]; }

  friend bool operator==(const TCommandBuffer&, const TCommandBuffer&) = default;

 private:
  std::array<std::uint8_t, kSize + kSpareBytes> bytes_{};
};

static_assert(TCommandBuffer::kMaxData == 247);

}  // namespace wire
