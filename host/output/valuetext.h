// Values as text, for the forms that machines read.
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

/// The letter of the short escape that JSON and MOF have for the character; NUL for any other character.
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

/// How a form writes what is not a scalar.
struct TListSigns {
  std::string_view null;
  char open;
  std::string_view separator = "";
  char close;
};

/// Writes a null, an array element by element, or, with `scalar`, a scalar. Bytes, of which registers and
/// raw data are made, are numbers in every form and come out of a table.
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
