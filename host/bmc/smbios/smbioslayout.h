// Offsets, sizes and types of the SMBIOS entry points and structures (DMTF DSP0134). Numbers are little-endian. Every
// structure is a formatted area, whose size its length byte gives, followed by a set of NUL-terminated strings that
// ends with one more NUL.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace velhost::SmbiosLayout {

// Structure header.
inline constexpr std::size_t kType = 0;
inline constexpr std::size_t kLength = 1;
inline constexpr std::size_t kHandle = 2;
inline constexpr std::size_t kHeaderSize = kHandle + 2;
inline constexpr std::size_t kStringsEndSize = 2;  // an empty set is two NULs

// Structure types.
inline constexpr std::uint8_t kSystemInformation = 1;
inline constexpr std::uint8_t kIpmiDevice = 38;
inline constexpr std::uint8_t kEndOfTable = 127;

// System information: product name and serial number by their numbers, from 1, in the string set, 0 for none; and the
// UUID's 16 bytes.
inline constexpr std::size_t kProductName = 5;
inline constexpr std::size_t kSerialNumber = 7;
inline constexpr std::size_t kUuid = 8;

// Entry points, 32-bit and 64-bit: the anchor text, the version (major, minor) and the size of the structure table.
inline constexpr std::string_view kAnchor32 = "_SM_";
inline constexpr std::size_t kVersion32 = 0x06;
inline constexpr std::size_t kTableSize32 = 0x16;  // two bytes
inline constexpr std::string_view kAnchor64 = "_SM3_";
inline constexpr std::size_t kVersion64 = 0x07;
inline constexpr std::size_t kTableSize64 = 0x0C;  // four bytes, an upper limit
inline constexpr std::uint16_t kVersion26 = 0x0206;

static_assert(kHeaderSize == 4 && kProductName >= kHeaderSize);

}  // namespace velhost::SmbiosLayout
