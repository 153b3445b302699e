// Values as text, for the formats that machines read.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>
#include <vector>

#include "host/base/api.h"
#include "host/base/decimal.h"
#include "host/output/textbuffer.h"
#include "nkrovel20/tcimvalue.h"

namespace velhost {

/// Converts numbers to text; each result is valid until the next call.
class TNumberText {
 public:
  /// Any integer type except boolean and char16, in decimal.
  std::string_view Integer(const TCIMValue& value);
  std::string_view Unsigned(std::uint64_t number);
  std::string_view Signed(std::int64_t number);
  /// The shortest text that reads back as the same real32 or real64. It always contains a point followed by a digit
  /// ("1.0", "-2.5", "1.0e+300"): MOF requires that and the other formats accept it. Empty for infinities and NaN.
  std::string_view Real(const TCIMValue& value);

 private:
  std::array<char, 40> digits_{};  // a sign, 17 digits, a point, ".0", an exponent of 5
};

/// The letter of the short escape that JSON and MOF use for the character; NUL if there is none.
constexpr char ShortEscape(char32_t character) {
  switch (character) {
    case '"': return '"';
    case '\\': return '\\';
    case '\b': return 'b';
    case '\f': return 'f';
    case '\n': return 'n';
    case '\r': return 'r';
    case '\t': return 't';
    default: return '\0';
  }
}

/// How a format writes null and arrays.
struct TListSigns {
  std::string_view null;
  char open;
  std::string_view separator = "";
  char close;
};

/// Writes a null, an array element by element, or a scalar with `scalar`. Bytes, which registers and raw data consist
/// of, are numbers in every format and are written from a table.
template <typename TScalar>
void AppendValue(TTextBuffer& out, const TCIMValue& value, const TListSigns& signs, const TScalar& scalar) {
  if (value.IsNull()) return out.Append(signs.null);
  if (!value.IsArray()) return scalar(value);
  out.Append(signs.open);
  std::string_view separator = "";
  for (const TCIMValue& element : static_cast<const std::vector<TCIMValue>&>(value)) {
    out.Append(separator);
    separator = signs.separator;
    if (element.GetType() == TCIMValue::TCIMType::kUint8 && !element.IsNull()) {
      out.Append(ByteText(static_cast<std::uint8_t>(element.ToInteger())));
    } else {
      AppendValue(out, element, signs, scalar);
    }
  }
  out.Append(signs.close);
}

}  // namespace velhost
