#include "host/output/fieldtext.h"

#include <fmt/format.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>

#include "host/base/digits.h"
#include "host/base/text.h"
#include "host/base/utf8.h"
#include "host/meaning/field.h"
#include "host/meaning/words.h"

namespace velhost {

namespace {

std::string NumberText(std::uint64_t value, unsigned width, bool isHex) {
  return isHex ? HexNumber(value, static_cast<int>((width + 7) / 8)) : std::to_string(value);
}

std::string PlaceText(const std::string& bits) {
  return (bits.find(':') == std::string::npos ? "bit " : "bits ") + SafeText(bits);
}

// A single bit that is set needs no number.
std::string NamedText(std::string_view name, std::uint64_t value, unsigned width, bool isHex,
                      const std::optional<std::string_view>& text) {
  const std::string shown = SafeText(name);
  if (text) return shown + ": " + SafeText(*text);
  return width == 1 && value == 1 ? shown : shown + ": " + NumberText(value, width, isHex);
}

std::string WithUnit(const std::string& number, const std::string& unit) {
  return unit.empty() ? number : number + " " + SafeText(unit);
}

}  // namespace

std::string FieldText(const TField& field, const std::string& bits, const TRegisterMeaning& meaning) {
  if (!field.name) return PlaceText(bits) + " (not described)";
  const unsigned width = WidthOf(field.bits);
  if (meaning.role != ERole::kCounter || field.text) {
    return NamedText(*field.name, field.value, width, field.isHex, field.text);
  }
  return SafeText(*field.name) + ": " + WithUnit(NumberText(field.value, width, field.isHex), meaning.unit);
}

std::vector<std::string> FieldTexts(const TRegisterFacts& facts) {
  std::vector<std::string> texts;
  if (facts.meaning == nullptr) return texts;
  const TRegisterMeaning& meaning = *facts.meaning;
  for (const TField& field : facts.fields) {
    texts.push_back(FieldText(field, BitsText(field.bits, facts.isNarrow ? 32 : 64, meaning.isMsb0), meaning));
  }
  const bool isSetting = meaning.role == ERole::kMask || meaning.role == ERole::kSeverity;
  if (!texts.empty() && isSetting) texts[0].insert(0, std::string(RoleName(meaning.role)) + ": ");
  const bool isPlainCount = meaning.role == ERole::kCounter && meaning.fields.empty() && facts.value != 0;
  if (isPlainCount) texts.push_back(WithUnit(std::to_string(facts.value), meaning.unit));
  return texts;
}

std::vector<std::string> LinesOf(const std::string& value, const std::vector<std::string>& fields, std::size_t width) {
  std::vector<std::string> lines = {value};
  for (std::size_t i = 0; i < fields.size(); ++i) {
    const std::string field = fields[i] + (i + 1 < fields.size() ? ";" : "");
    const std::string longer = lines.back() + (i == 0 ? "  " : " ") + field;
    if (StartThatFits(longer, width).size() == longer.size()) {
      lines.back() = longer;
    } else {
      lines.push_back(field);
    }
  }
  return lines;
}

std::string FindingText(const TFinding& finding) {
  if (finding.name) return NamedText(*finding.name, finding.value, finding.width, finding.isHex, finding.text);
  const std::string number = finding.width == 1 ? "" : fmt::format(" = 0x{:X}", finding.value);
  return PlaceText(finding.bits) + number + " (not described)";
}

std::string_view LabelOf(const TFinding& finding) {
  constexpr std::array<std::string_view, 3> kLabels = {"CORRECTED", "ERROR", "FATAL"};
  return finding.isMasked ? "MASKED" : kLabels.at(static_cast<std::size_t>(finding.severity));
}

std::string CountsText(const std::vector<TFinding>& findings) {
  std::array<std::size_t, 3> counts{};
  std::size_t masked = 0;
  std::size_t known = 0;
  for (const TFinding& finding : findings) {
    ++(finding.isMasked ? masked : counts.at(static_cast<std::size_t>(finding.severity)));
    if (finding.isKnown && !finding.isMasked) ++known;
  }
  const auto [corrected, errors, fatal] = counts;
  std::vector<std::string> texts;
  if (fatal > 0) texts.push_back(fmt::format("{} fatal", fatal));
  if (errors > 0) texts.push_back(Counted(errors, "error"));
  if (corrected > 0) texts.push_back(fmt::format("{} corrected", corrected));
  std::string text = texts.empty() ? "none" : Listed(texts, ", ");
  if (known > 0) text += fmt::format("; {} known", known);
  if (masked > 0) text += fmt::format("; {} masked", masked);
  return text;
}

}  // namespace velhost
