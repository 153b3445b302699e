// The OEM register and timestamp reads of a BMC, as data in an IPMI command buffer, and the 14-byte value of
// a register. docs/wire-formats.md, "Register read", "Timestamp read" and "R8 register value".
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "wire/commandbuffer.h"

namespace wire::RegisterRead {

inline constexpr std::uint8_t kNetworkFunction = 0x3A;
inline constexpr std::uint8_t kRegisterRead = 0x62;
inline constexpr std::uint8_t kTimestampRead = 0x6F;

// Request data of a register read: the chip selector, then the address, most significant byte first.
inline constexpr std::size_t kChipSelector = TCommandBuffer::kData;
inline constexpr std::size_t kAddress = kChipSelector + 1;
inline constexpr std::size_t kAddressSize = 3;
inline constexpr std::uint8_t kRequestSize = 1 + kAddressSize;
inline constexpr std::uint32_t kAddressMask = 0x00FFFFFF;

// Response data of a register read: a header, then the value, least significant byte first.
inline constexpr std::size_t kHeaderSize = 6;
inline constexpr std::size_t kValueSize = 8;
inline constexpr std::size_t kResponseSize = kHeaderSize + kValueSize;
inline constexpr std::size_t kValue = TCommandBuffer::kData + kHeaderSize;

// Response data of a timestamp read.
inline constexpr std::size_t kTimestamp = TCommandBuffer::kData;
inline constexpr std::size_t kTimestampSize = 4;

static_assert(kRequestSize == 4 && kResponseSize == 14 && kValue == 15);

}  // namespace wire::RegisterRead

/// The 14 bytes of a register value, raw and decoded.
namespace wire::RegisterRecord {

inline constexpr std::size_t kIdentificationSize = 3;
inline constexpr std::size_t kValueSize = RegisterRead::kValueSize;
inline constexpr std::array<unsigned char, 3> kEqualsSign = {' ', '=', ' '};

// The labelled record, as the transport returns it. It is cut out of the response one byte too late, so the
// last byte of the label is the first byte of the value; decoding corrects this.
inline constexpr std::size_t kLabel = 0;
inline constexpr std::size_t kLabelEquals = kLabel + kIdentificationSize;
inline constexpr std::size_t kLabelledValue = kLabelEquals + kEqualsSign.size();
inline constexpr std::size_t kSize = kLabelledValue + kValueSize;
inline constexpr std::size_t kResponseLabel = RegisterRead::kValue - 2;
inline constexpr std::size_t kResponseLabelledValue = RegisterRead::kValue + 1;

// The decoded value: the address, the value (most significant byte first), then zeros or the marker.
inline constexpr std::size_t kDecodedValue = kIdentificationSize;
inline constexpr std::array<std::uint8_t, 4> kMarker = {0xEF, 0xFE, 0xFE, 0xEF};
inline constexpr std::size_t kMarkerOffset = kSize - kMarker.size();

static_assert(kSize == 14 && kLabelledValue == 6 && kMarkerOffset == 10);
static_assert(kResponseLabel == 13 && kResponseLabelledValue == 16);

}  // namespace wire::RegisterRecord
