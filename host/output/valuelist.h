// A value with its elements, for the forms that differ in little but the signs around them.
#pragma once
#include "host/base/api.h"

#include <cstdint>
#include <string_view>
#include <vector>

#include "host/base/decimal.h"
#include "host/output/scalartext.h"
#include "host/output/textbuffer.h"
#include "nkrovel20/tcimvalue.h"

namespace velhost {

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
