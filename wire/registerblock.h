// The register block of a service processor, and the dot command that reads it.
// docs/wire-formats.md, "Register block", describes both.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace wire::RegisterBlockCommand {

inline constexpr std::uint8_t kCommand = 0x02;
inline constexpr std::array<std::uint8_t, 2> kIdentifier = {0x0E, 0x06};
// Parameters: two zero bytes, then the size of the caller's buffer, little-endian.
inline constexpr std::size_t kParameterSize = 4;
inline constexpr std::size_t kParameterBufferSize = 2;
/// Size of the whole register block, and of the buffer that collectors offer for it.
inline constexpr std::size_t kBlockSize = 4096;

}  // namespace wire::RegisterBlockCommand

namespace wire::RegisterBlock {

inline constexpr std::size_t kSize = RegisterBlockCommand::kBlockSize;
/// What the block is filled with before the response arrives: the character '0', not a zero byte.
inline constexpr unsigned char kFill = '0';
static_assert(kFill == 48);

// The two candidate copies of the timestamp header.
inline constexpr std::size_t kFirstCopy = 0;
inline constexpr std::size_t kSecondCopy = 2040;
inline constexpr std::size_t kYear = 1;  // since 2000
inline constexpr std::size_t kMonth = 2;
inline constexpr std::size_t kDay = 3;
inline constexpr std::size_t kHour = 4;
inline constexpr std::size_t kMinute = 5;
inline constexpr std::size_t kSecond = 6;
inline constexpr int kHeaderSize = 7;

// Records start every eight bytes but are eleven bytes long, so neighbours overlap.
inline constexpr int kRecordStride = 8;
inline constexpr int kRecordsPerInstance = 256;
inline constexpr int kIdentificationSize = 3;
inline constexpr int kValueSize = 8;
inline constexpr int kRecordSize = kIdentificationSize + kValueSize;
inline constexpr std::array<int, 3> kEqualsSign = {' ', '=', ' '};
inline constexpr int kDecodedSize = kIdentificationSize + static_cast<int>(kEqualsSign.size()) + kValueSize;
static_assert(kRecordSize == 11 && kDecodedSize == 14 && kSecondCopy + kHeaderSize < kSize);

}  // namespace wire::RegisterBlock
