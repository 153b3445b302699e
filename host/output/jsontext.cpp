#include "host/output/jsontext.h"

#include <vector>

#include "host/base/digits.h"
#include "host/base/text.h"

namespace velhost {

namespace {

using TType = TCIMValue::TCIMType;

constexpr TListSigns kSigns = {"null", '[', ",", ']'};
constexpr TPlainCharacters kPlain = PlainBut("\"\\\x7f");

}  // namespace

void TJsonText::String(std::string_view text) {
  out_.Append('"');
  const auto plain = [this](std::string_view run) { out_.Append(run); };
  SplitText(text, kPlain, plain, [this](char32_t character, std::string_view bytes) {
    if (character >= 0x80 && !IsUnsafe(character)) return out_.Append(bytes);
    out_.Append('\\');
    if (const char escape = ShortEscape(character)) return out_.Append(escape);
    out_.Append('u');
    out_.Append(HexPair(static_cast<std::uint8_t>(character >> 8)));
    out_.Append(HexPair(static_cast<std::uint8_t>(character)));
  });
  out_.Append('"');
}

void TJsonText::Name(std::string_view name) {
  String(name);
  out_.Append(':');
}

void TJsonText::Member(std::string_view name, std::string_view text) {
  Name(name);
  String(text);
}

void TJsonText::Hex(std::uint64_t number, int bytes) {
  out_.Append("\"0x");
  for (int shift = (bytes - 1) * 8; shift >= 0; shift -= 8) {
    out_.Append(UpperHexPair(static_cast<std::uint8_t>(number >> shift)));
  }
  out_.Append('"');
}

void TJsonText::Value(const TCIMValue& value) {
  AppendValue(out_, value, kSigns, [this](const TCIMValue& one) { Scalar(one); });
}

void TJsonText::Scalar(const TCIMValue& value) {
  scratch_.clear();
  switch (value.GetType().GetCode()) {
    case TType::kNone: return out_.Append("null");
    case TType::kBoolean: return out_.Append(value.ToInteger() != 0 ? "true" : "false");
    case TType::kReal32:
    case TType::kReal64: {
      const std::string_view text = numbers_.Real(value);
      return out_.Append(text.empty() ? "null" : text);
    }
    case TType::kChar16: AppendUtf8(scratch_, static_cast<char32_t>(value.ToInteger())); return String(scratch_);
    case TType::kString:
    case TType::kReference:
    case TType::kDateTime: value.AppendTo(scratch_, 10); return String(scratch_);
    default: return out_.Append(numbers_.Integer(value));
  }
}

}  // namespace velhost
