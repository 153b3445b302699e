// The 14 bytes of a register read, raw and decoded. docs/wire-formats.md, "R8 register value".
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "nkrovel20/registercommands.h"

namespace torgareg::RegisterRecord {

inline constexpr std::size_t kIdentificationSize = 3;
inline constexpr std::size_t kValueSize = NKROVEL20::RegisterCommands::kValueSize;
inline constexpr std::array<unsigned char, 3> kEqualsSign = {' ', '=', ' '};

// The labelled record as the transport hands it over. It is cut out of the response one byte late,
// so that its label's last byte is the value's first; decoding makes up for it.
inline constexpr std::size_t kLabel = 0;
inline constexpr std::size_t kLabelEquals = kLabel + kIdentificationSize;
inline constexpr std::size_t kLabelledValue = kLabelEquals + kEqualsSign.size();
inline constexpr std::size_t kSize = kLabelledValue + kValueSize;
inline constexpr std::size_t kResponseLabel = NKROVEL20::RegisterCommands::kValue - 2;
inline constexpr std::size_t kResponseLabelledValue = NKROVEL20::RegisterCommands::kValue + 1;

// The decoded value: the address, the value most significant byte first, then zeros or the marker.
inline constexpr std::size_t kDecodedValue = kIdentificationSize;
inline constexpr std::array<std::uint8_t, 4> kMarker = {0xEF, 0xFE, 0xFE, 0xEF};
inline constexpr std::size_t kMarkerOffset = kSize - kMarker.size();

static_assert(kSize == 14 && kLabelledValue == 6 && kMarkerOffset == 10);
static_assert(kResponseLabel == 13 && kResponseLabelledValue == 16);

}  // namespace torgareg::RegisterRecord
