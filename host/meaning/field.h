// A register's value, split into its fields.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/meaning/classmeaning.h"

namespace velhost {

constexpr unsigned WidthOf(TBits bits) { return bits.high - bits.low + 1; }
/// The bits, set, in place.
constexpr std::uint64_t MaskOf(TBits bits) { return ~std::uint64_t{0} >> (64 - WidthOf(bits)) << bits.low; }

/// A field with its value. The views point into the TRegisterMeaning that it was decoded with.
struct TField {
  TBits bits;
  std::optional<std::string_view> name;  ///< empty for a bit that no field describes
  std::uint64_t value = 0;
  std::optional<std::string_view> text;  ///< where the schema gives this value a text
  bool isHex = false;
};

/// The described fields that are not zero or whose zero has a text, and, in registers that have fields or one of the
/// roles kErrors, kMask and kSeverity, each set bit that no field describes. From the least significant.
/// `value` must not be wider than the register. Does not allocate memory if there are none.
std::vector<TField> DecodeFields(const TRegisterMeaning& meaning, std::uint64_t value);

/// "16" or "5:4", in the numbering of a register of `width` bits: the first number is the more significant end.
std::string BitsText(TBits bits, unsigned width, bool isMsb0);

}  // namespace velhost
