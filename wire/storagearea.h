// The OEM/Group storage-area commands of a BMC, as data in an IPMI command buffer.
// docs/wire-formats.md, "Storage areas", describes them.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "wire/commandbuffer.h"

namespace wire::StorageArea {

inline constexpr std::uint8_t kNetworkFunction = 0x2E;
inline constexpr std::uint8_t kCommand = 0x90;
/// The enterprise number of the BMC's firmware, least significant byte first. The data of every request and
/// every response start with it.
inline constexpr std::array<std::uint8_t, 3> kManufacturerId = {0x39, 0x30, 0x00};

inline constexpr std::uint8_t kOpen = 0x01;
inline constexpr std::uint8_t kRead = 0x02;
inline constexpr std::uint8_t kClose = 0x05;
inline constexpr std::uint8_t kQuerySize = 0x06;

inline constexpr std::size_t kManufacturer = TCommandBuffer::kData;
inline constexpr std::size_t kSubCommand = kManufacturer + kManufacturerId.size();
inline constexpr std::size_t kBody = kSubCommand + 1;

// Open: a mode byte, seven zero bytes, the name.
inline constexpr std::uint8_t kOpenMode = 0x01;
inline constexpr std::size_t kOpenReserved = 7;
inline constexpr std::size_t kOpenName = kBody + 1 + kOpenReserved;
// Query size: the name.
inline constexpr std::size_t kQueryName = kBody;
inline constexpr std::size_t kNameSize = 25;  // zero-padded or truncated; no terminator
// Read: the handle, the offset (4 bytes, little-endian), the count (2 bytes, little-endian).
inline constexpr std::size_t kHandle = kBody;
inline constexpr std::size_t kHandleSize = 4;
inline constexpr std::size_t kReadOffset = kHandle + kHandleSize;
inline constexpr std::size_t kReadCount = kReadOffset + 4;

// Request lengths, as stored in byte 5. Open and query count the whole name, even the part that does not fit
// into its field.
inline constexpr std::size_t kOpenLength = kOpenName - kManufacturer;    // + length of the name
inline constexpr std::size_t kQueryLength = kQueryName - kManufacturer;  // + length of the name
inline constexpr std::uint8_t kReadLength = kReadCount + 2 - kManufacturer;
inline constexpr std::uint8_t kCloseLength = kHandle + kHandleSize - kManufacturer;

// Responses: the manufacturer id, then the handle, or the size (4 bytes, little-endian), or the count
// (2 bytes, little-endian) followed by that many data bytes.
inline constexpr std::size_t kResponseBody = kManufacturer + kManufacturerId.size();
inline constexpr std::size_t kResponseHandle = kResponseBody;
inline constexpr std::size_t kResponseSize = kResponseBody;
inline constexpr std::size_t kResponseCount = kResponseBody;
inline constexpr std::size_t kResponseData = kResponseCount + 2;

static_assert(kSubCommand == 12 && kOpenName == 21 && kQueryName == 13 && kReadOffset == 17 && kReadCount == 21);
static_assert(kOpenLength == 12 && kQueryLength == 4 && kReadLength == 14 && kCloseLength == 8);
static_assert(kResponseHandle == 12 && kResponseData == 14);

}  // namespace wire::StorageArea
