// Scalars as text, for the forms that machines read.
#pragma once
#include "host/base/api.h"

#include <array>
#include <cstdint>
#include <string_view>

#include "nkrovel20/tcimvalue.h"

namespace velhost {

/// Makes the text of one number after another; each stays valid until the next is asked for.
class TNumberText {
 public:
  /// Any integer type but boolean and char16, in decimal.
  std::string_view Integer(const TCIMValue& value);
  std::string_view Unsigned(std::uint64_t number);
  std::string_view Signed(std::int64_t number);
  /// The shortest text that reads back as the same real32 or real64, always with a point and a digit
  /// behind it ("1.0", "-2.5", "1.0e+300"), as MOF wants it and the other forms take it. Empty for an
  /// infinity and for what is not a number.
  std::string_view Real(const TCIMValue& value);

 private:
  std::array<char, 40> digits_{};  // a sign, 17 digits, a point, ".0", an exponent of 5
};

}  // namespace velhost
