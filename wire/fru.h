// The FRU inventory of a BMC, as far as the product area: the commands that read it, its common header, the product
// area's layout and its type/length fields. Offsets of the commands count from the start of their data.
// docs/wire-formats.md, "FRU inventory", describes them.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace wire::Fru {

inline constexpr std::uint8_t kNetworkFunction = 0x0A;
inline constexpr std::uint8_t kGetInventoryInfo = 0x10;
inline constexpr std::uint8_t kReadData = 0x11;
inline constexpr std::uint8_t kDevice = 0;

// Get FRU Inventory Area Info. Request: the device. Response: the inventory's size in bytes (little-endian), then
// whether it is accessed by bytes or by words.
inline constexpr std::size_t kInfoSize = 3;
inline constexpr std::size_t kInfoAccess = 2;
inline constexpr std::uint8_t kAccessByWords = 0x01;

// Read FRU Data. Request: the device, the offset (2 bytes, little-endian), the count. Response: the count, the data.
// Offset and counts are in bytes or words.
inline constexpr std::size_t kReadResponseData = 1;

// The common header: the format version, then the offset of each area in multiples of 8 bytes, 0 for none; its bytes
// add up to zero.
inline constexpr std::size_t kHeaderSize = 8;
inline constexpr std::size_t kProductAreaOffset = 4;
inline constexpr std::size_t kAreaUnit = 8;
inline constexpr std::uint8_t kVersionMask = 0x0F;
inline constexpr std::uint8_t kVersion = 0x01;

// The product area: version, length in multiples of 8 bytes, language, fields, end mark, padding, checksum; its bytes
// add up to zero. The first seven fields are always present: manufacturer, product name, part or model number, version,
// serial number, asset tag, FRU file.
inline constexpr std::size_t kAreaLength = 1;
inline constexpr std::size_t kAreaLanguage = 2;
inline constexpr std::size_t kAreaFields = 3;
inline constexpr std::uint8_t kEnglish = 25;  // as is 0
inline constexpr std::uint8_t kEndOfFields = 0xC1;

// A field: a byte with type and length, then the content.
inline constexpr unsigned kTypeShift = 6;
inline constexpr std::uint8_t kLengthMask = 0x3F;
enum EFieldType { kBinary, kBcdPlus, kSixBitAscii, kText };
/// The characters of BCD plus, by digit; the last three are reserved.
inline constexpr std::array<char, 16> kBcdPlusDigits = {'0', '1', '2', '3', '4', '5', '6', '7',
                                                        '8', '9', ' ', '-', '.', '?', '?', '?'};

static_assert(kAreaUnit == kHeaderSize && (kEndOfFields >> kTypeShift) == kText && (kEndOfFields & kLengthMask) == 1);

}  // namespace wire::Fru
