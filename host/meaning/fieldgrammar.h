// The grammar of one element of "Fields":
//
//   BITS NAME            "16 Unexpected completion", "5:4 Link speed"
//   BITS/hex NAME        "47:32/hex Device"
//   BITS=VALUES TEXT     "5:4=1 2.5 GT/s", "3:0=8-15 reserved"
//
// BITS is a number of one or two digits, or two of them with a colon between. VALUES is a decimal or hexadecimal (0x1F)
// number, or two of them with a hyphen between. One or more blanks follow; all after them is name or text, which starts
// with a character other than white space and has no line end.
//
// What the numbers mean for a register is not known here; see fieldlist.h.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "host/meaning/classmeaning.h"

namespace velhost {

/// What is wrong with an element, and at which of its bytes; its size if something is missing at the end.
struct TFieldBreach {
  std::size_t offset = 0;
  std::string message;  ///< what was found and what was expected
};

/// Bits as they are written, in the register's own numbering.
struct TWrittenBits {
  unsigned first = 0;
  unsigned last = 0;  ///< the same for a single bit
  std::size_t firstAt = 0;
  std::size_t lastAt = 0;  ///< `firstAt` for a single bit
};

struct TWrittenValue {
  std::optional<std::uint64_t> value;  ///< empty if it takes more than 64 bits
  std::string_view text;
  std::size_t at = 0;
};

struct TWrittenValues {
  TWrittenValue first;
  TWrittenValue last;  ///< the same for a single value
};

struct TFieldElement {
  TWrittenBits bits;
  bool isHex = false;
  std::optional<TWrittenValues> values;  ///< if there are any, the element is the text of values
  std::string_view text;                 ///< the name of a field, or the text of values
  std::size_t textAt = 0;
};

/// The views of the result point into `element`.
std::variant<TFieldElement, TFieldBreach> ParseFieldElement(std::string_view element);

/// Reads "HI:LO" from the byte `at` to the end of the text.
std::variant<TWrittenBits, TFieldBreach> ParseBitRange(std::string_view text, std::size_t at);

/// The bits of a register of `width` bits. A breach if they are not in it, or if the less significant end comes first.
std::variant<TBits, TFieldBreach> BitsOf(const TWrittenBits& written, unsigned width, bool isMsb0);

}  // namespace velhost
