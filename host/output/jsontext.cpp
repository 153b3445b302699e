#include "host/output/jsontext.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "host/base/digits.h"
#include "host/base/text.h"
#include "host/meaning/field.h"
#include "host/meaning/words.h"
#include "host/output/planturns.h"

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
  out_.Append('"');
  out_.Append(HexNumber(number, bytes));
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

namespace {

using CollectorProfile::EPath;

constexpr int kAddressBytes = 3;

constexpr int BytesOf(bool isNarrow) { return isNarrow ? 4 : 8; }

// With a trailing comma.
void AppendWhere(TJsonText& json, const TWhere& where) {
  if (where.address) {
    json.Raw(R"("address":)");
    AppendAddress(json, *where.address);
  } else if (where.addresses) {
    json.Raw(R"("addresses":[)");
    AppendSeparated(json, *where.addresses, [&json](std::uint32_t address) { AppendAddress(json, address); });
    json.Raw(']');
  } else if (where.index) {
    json.Raw(R"("index":)");
    json.Unsigned(*where.index);
  } else if (where.offset) {
    json.Raw(R"("offset":)");
    json.Unsigned(*where.offset);
  } else {
    return;
  }
  json.Raw(',');
}

// From `"bits"` on: what fields and findings have in common. A number of JSON is only exact up to 53 bits.
void AppendBits(TJsonText& json, std::string_view bits, unsigned width, std::optional<std::string_view> name,
                std::uint64_t value, std::optional<std::string_view> text) {
  json.Member("bits", bits);
  json.Raw(R"(,"name":)");
  if (name) {
    json.String(*name);
  } else {
    json.Raw("null");
  }
  json.Raw(R"(,"value":)");
  if (width <= 32) {
    json.Unsigned(value);
  } else {
    json.Hex(value, 8);
  }
  if (!text) return;
  json.Raw(',');
  json.Member("text", *text);
}

// With a comma before each member.
void AppendMeaning(TJsonText& json, const TRegisterMeaning& meaning) {
  if (meaning.role != ERole::kState) {
    json.Raw(',');
    json.Member("role", RoleName(meaning.role));
  }
  if (!meaning.unit.empty()) {
    json.Raw(',');
    json.Member("unit", meaning.unit);
  }
  if (meaning.isMsb0) json.Raw(R"(,"numbering":"msb0")");
}

void AppendFields(TJsonText& json, const TRegisterFacts& facts) {
  const bool isMsb0 = facts.meaning != nullptr && facts.meaning->isMsb0;
  json.Raw(R"(,"fields":[)");
  AppendSeparated(json, facts.fields, [&](const TField& field) {
    json.Raw('{');
    const std::string bits = BitsText(field.bits, facts.isNarrow ? 32 : 64, isMsb0);
    AppendBits(json, bits, WidthOf(field.bits), field.name, field.value, field.text);
    json.Raw('}');
  });
  json.Raw(']');
}

void AppendBoolean(TJsonText& json, std::string_view name, bool value) {
  json.Raw(',');
  json.Name(name);
  json.Raw(value ? "true" : "false");
}

void AppendEvidence(TJsonText& json, const TFinding& finding) {
  json.Raw(R"(,"evidence":{)");
  const std::span<const TEvidence> shown(finding.place->evidence);
  AppendSeparated(json, finding.showsEvidence ? shown : shown.first(0), [&json](const TEvidence& one) {
    json.Name(one.registerName);
    if (one.value) {
      json.Hex(*one.value, BytesOf(one.isNarrow));
    } else {
      json.Raw("null");
    }
  });
  json.Raw('}');
}

void AppendIdentification(TJsonText& json, const std::array<std::uint8_t, 3>& bytes) {
  json.Raw(R"(,"identification":")");
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    if (i > 0) json.Raw(' ');
    json.Raw(UpperHexPair(bytes.at(i)));
  }
  json.Raw('"');
}

}  // namespace

void AppendAddress(TJsonText& json, std::uint32_t address) { json.Hex(address, kAddressBytes); }

void AppendOrigin(TJsonText& json, const TOrigin& origin) {
  json.Raw(R"("origin":{)");
  json.Member("path", NameOfOriginPath(origin.path));
  json.Raw(origin.path == EPath::kJfr ? R"(,"service_processor":)" : R"(,"node":)");
  json.Signed(origin.owner);
  if (origin.chip) {
    json.Raw(R"(,"chip":)");
    json.Signed(*origin.chip);
  }
  if (origin.instance) {
    json.Raw(R"(,"instance":)");
    json.Signed(*origin.instance);
  }
  if (!origin.timeRaw.empty()) {
    json.Raw(',');
    json.Member("time_raw", origin.timeRaw);
  }
  json.Raw('}');
}

void AppendFile(TJsonText& json, const TFileFacts& file) {
  json.Raw(R"("file":{)");
  json.Member("area", file.area);
  json.Raw(R"(,"reported_size":)");
  json.Signed(file.reportedSize);
  json.Raw(R"(,"received":)");
  json.Unsigned(file.received);
  json.Raw('}');
}

void AppendHow(TJsonText& json, THow how) {
  switch (how.how) {
    case EHow::kLost: return json.Raw(R"("lost":true)");
    case EHow::kNotSent: return json.Raw(R"("not_sent":true)");
    case EHow::kNotRecorded: return json.Raw(R"("not_recorded":true)");
    case EHow::kCompletionCode: json.Raw(R"("completion_code":)"); break;
    case EHow::kShort: json.Raw(R"("short":)"); break;
    case EHow::kAnswered: json.Raw(R"("answered":)"); break;
  }
  json.Unsigned(how.number);
}

void AppendMissing(TJsonText& json, const TMissing& missing) {
  json.Raw('{');
  json.Member("property", missing.property);
  json.Raw(',');
  AppendWhere(json, missing.where);
  AppendHow(json, missing.how);
  json.Raw('}');
}

void AppendRegister(TJsonText& json, const TRegisterFacts& facts) {
  if (facts.isIndex) {
    json.Raw(R"({"index":)");
    json.Unsigned(facts.place);
  } else {
    json.Raw(R"({"address":)");
    AppendAddress(json, facts.place);
  }
  json.Raw(facts.isNarrow ? R"(,"width":32,"value":)" : R"(,"width":64,"value":)");
  json.Hex(facts.value, BytesOf(facts.isNarrow));
  if (facts.meaning != nullptr) AppendMeaning(json, *facts.meaning);
  if (facts.identification) AppendIdentification(json, *facts.identification);
  if (facts.upper) {
    json.Raw(R"(,"upper":)");
    json.Hex(*facts.upper, 4);
  }
  if (facts.folded) {
    json.Raw(R"(,"folded":)");
    json.Hex(*facts.folded, 4);
  }
  AppendFields(json, facts);
  json.Raw('}');
}

void AppendFinding(TJsonText& json, const TFinding& finding) {
  const TErrorRegister& place = *finding.place;
  json.Raw('{');
  json.Member("key", place.key);
  json.Raw(',');
  json.Member("class", place.className);
  json.Raw(',');
  AppendOrigin(json, place.origin);
  json.Raw(',');
  json.Member("register", place.name);
  json.Raw(',');
  AppendBits(json, finding.bits, finding.width, finding.name, finding.value, finding.text);
  json.Raw(R"(,"register_value":)");
  json.Hex(place.value, BytesOf(place.isNarrow));
  json.Raw(',');
  json.Member("severity", SeverityName(finding.severity));
  AppendBoolean(json, "masked", finding.isMasked);
  AppendBoolean(json, "first", finding.isFirst);
  AppendBoolean(json, "known", finding.isKnown);
  AppendEvidence(json, finding);
  json.Raw(R"(,"unknown":[)");
  AppendSeparated(json, place.unknown, [&json](const std::string& name) { json.String(name); });
  json.Raw("]}");
}

}  // namespace velhost
