// The OEM register and timestamp reads of a BMC, as data of an IPMI command buffer.
// docs/wire-formats.md, "Register read" and "Timestamp read", has them in prose.
#pragma once

#include <cstddef>
#include <cstdint>

#include "nkrovel20/ipmicommandbuffer.h"

namespace NKROVEL20::RegisterCommands {

inline constexpr std::uint8_t kNetworkFunction = 0x3A;
inline constexpr std::uint8_t kRegisterRead = 0x62;
inline constexpr std::uint8_t kTimestampRead = 0x6F;

// Request data of a register read: the chip selector, then the address, most significant byte first.
inline constexpr std::size_t kChipSelector = TIPMICommandBuffer::kData;
inline constexpr std::size_t kAddress = kChipSelector + 1;
inline constexpr std::size_t kAddressSize = 3;
inline constexpr std::uint8_t kRequestSize = 1 + kAddressSize;
inline constexpr std::uint32_t kAddressMask = 0x00FFFFFF;

// Response data of a register read: a header, then the value, least significant byte first.
inline constexpr std::size_t kHeaderSize = 6;
inline constexpr std::size_t kValueSize = 8;
inline constexpr std::size_t kResponseSize = kHeaderSize + kValueSize;
inline constexpr std::size_t kValue = TIPMICommandBuffer::kData + kHeaderSize;

// Response data of a timestamp read.
inline constexpr std::size_t kTimestamp = TIPMICommandBuffer::kData;
inline constexpr std::size_t kTimestampSize = 4;

static_assert(kRequestSize == 4 && kResponseSize == 14 && kValue == 15);

}  // namespace NKROVEL20::RegisterCommands
