// The dot command that reads a service processor's register block.
// docs/wire-formats.md, "Register block", has it in prose.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace NKROVEL20::RegisterBlockCommand {

inline constexpr std::uint8_t kCommand = 0x02;
inline constexpr std::array<std::uint8_t, 2> kIdentifier = {0x0E, 0x06};
// Parameters: two zero bytes, then the size of the caller's buffer, little-endian.
inline constexpr std::size_t kParameterSize = 4;
inline constexpr std::size_t kParameterBufferSize = 2;
/// The whole register block, and the buffer that collectors offer for it.
inline constexpr std::size_t kBlockSize = 4096;

}  // namespace NKROVEL20::RegisterBlockCommand
