#include "host/output/jsonwriter.h"

#include <cstddef>
#include <cstdint>
#include <optional>

#include "host/base/decimal.h"
#include "host/base/hex.h"
#include "host/base/unsafetext.h"
#include "host/output/valuetext.h"

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

void TJsonText::Instance(const TInstance& instance, bool incomplete) {
  out_.Append(R"({"kind":"instance","class":)");
  String(instance.Class().Name());
  out_.Append(incomplete ? R"(,"incomplete":true,"properties":{)" : R"(,"properties":{)");
  bool first = true;
  const auto& properties = instance.Class().Properties();
  for (std::size_t i = 0; i < properties.size(); ++i) {
    if (!instance.IsSet(i)) continue;
    if (!first) out_.Append(',');
    first = false;
    Name(properties[i]->Definition().name);
    Value(instance.Value(i));
  }
  out_.Append("}}");
}

void TJsonText::HeaderMembers(const TCollectionHeader& header) {
  out_.Append(R"("format_version":1,)");
  Member("machine_type", header.machineType);
  out_.Append(R"(,"plugin":{)");
  Member("name", header.pluginName);
  out_.Append(',');
  Member("version", header.pluginVersion);
  out_.Append(',');
  Member("interface_version", header.pluginInterfaceVersion);
  out_.Append("},");
}

void TJsonText::Failures(const std::vector<TRequestFailure>& failures) {
  Name("failures");
  out_.Append('[');
  bool first = true;
  for (const TRequestFailure& failure : failures) {
    out_.Append(first ? "{" : ",{");
    first = false;
    Member("class", failure.className);
    out_.Append(',');
    Member("message", failure.message);
    out_.Append('}');
  }
  out_.Append(']');
}

void TJsonText::FailedExchange(const TFailedExchange& exchange) {
  out_.Append('{');
  Member("class", exchange.className);
  out_.Append(R"(,"node":)");
  out_.Append(numbers_.Signed(exchange.node));
  out_.Append(',');
  Member("kind", exchange.kind);
  if (exchange.completionCode) {
    out_.Append(R"(,"completion_code":)");
    out_.Append(ByteText(*exchange.completionCode));
  } else {
    out_.Append(R"(,"lost":true)");
  }
  out_.Append('}');
}

void TJsonText::SummaryMembers(const TCollectionSummary& summary) {
  Member("status", summary.partial ? "partial" : "complete");
  out_.Append(',');
  Failures(summary.failures);
  out_.Append(R"(,"exchanges":{"total":)");
  out_.Append(numbers_.Unsigned(summary.exchanges));
  out_.Append(R"(,"failed":[)");
  bool first = true;
  for (const TFailedExchange& exchange : summary.failedExchanges) {
    if (!first) out_.Append(',');
    first = false;
    FailedExchange(exchange);
  }
  out_.Append(R"(]},"elapsed_ms":)");
  out_.Append(numbers_.Signed(summary.elapsedMs));
}

void TJsonWriter::Begin(const TCollectionHeader& header) {
  json_.Raw(R"({"kind":"instancecollection",)");
  json_.HeaderMembers(header);
  json_.Raw("\n\"instances\":[");
}

void TJsonWriter::Instance(const TInstance& instance, bool incomplete) {
  json_.Raw(first_ ? "\n" : ",\n");
  first_ = false;
  json_.Instance(instance, incomplete);
}

void TJsonWriter::End(const TCollectionSummary& summary) {
  json_.Raw("\n],\n");
  json_.SummaryMembers(summary);
  json_.Raw("}\n");
  json_.Flush();
}

void TJsonLinesWriter::Instance(const TInstance& instance, bool incomplete) {
  json_.Instance(instance, incomplete);
  json_.Raw("\n");
  json_.Flush();
}

void TJsonLinesWriter::End(const TCollectionSummary& summary) {
  json_.Raw(R"({"kind":"summary",)");
  json_.HeaderMembers(header_);
  json_.SummaryMembers(summary);
  json_.Raw("}\n");
  json_.Flush();
}

}  // namespace velhost
