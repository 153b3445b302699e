#include "host/output/tablevalue.h"

#include <algorithm>

#include "host/base/hex.h"
#include "host/base/utf8.h"
#include "host/output/scalartext.h"
#include "host/output/tablelayout.h"

namespace velhost {

namespace {

using CollectorProfile::EPath;
using TType = TCIMValue::TCIMType;

template <typename TNames>
bool Contains(const TNames& names, std::string_view name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

template <typename TBytes>
std::string HexNumber(const TBytes& bytes) {
  std::string text = "0x";
  for (const std::uint8_t byte : bytes) text += UpperHexPair(byte);
  return text;
}

std::string ScalarText(const TCIMValue& value) {
  if (value.IsNull()) return "(null)";
  switch (value.GetType().GetCode()) {
    case TType::kDateTime: return value.ToDateTime().ToIso8601();
    case TType::kChar16: {
      std::string character;
      AppendUtf8(character, static_cast<char32_t>(value.ToInteger()));
      return SafeText(character);
    }
    default: return SafeText(value.ToString(10));
  }
}

std::string ElementText(const TCIMValue& element) {
  const bool quoted = element.GetType() == TType::kString && !element.IsNull();
  return quoted ? '"' + ScalarText(element) + '"' : ScalarText(element);
}

}  // namespace

EPath RegisterPathOf(const TCIMClass& cimClass) {
  for (const TCIMClass* above = cimClass.SuperClass().get(); above != nullptr; above = above->SuperClass().get()) {
    if (Contains(CollectorProfile::kJfrBaseClasses, above->Name())) return EPath::kJfr;
  }
  return Contains(CollectorProfile::kR8Classes, cimClass.Name()) ? EPath::kR8 : EPath::kNone;
}

std::string TableText(const TCIMValue& value, EPath path) {
  if (value.IsNull() || !value.IsArray()) return ScalarText(value);
  if (const auto parts = CollectorProfile::SplitRegisterValue(path, value)) {
    return HexNumber(parts->identification) + "  " + HexNumber(parts->value);
  }
  std::string text;
  for (const TCIMValue& element : static_cast<const std::vector<TCIMValue>&>(value)) {
    if (!text.empty()) text += ", ";
    text += ElementText(element);
  }
  return text.empty() ? "(empty)" : text;
}

}  // namespace velhost
