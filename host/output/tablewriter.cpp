#include "host/output/tablewriter.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>

#include "host/base/caseinsensitive.h"
#include "host/base/displaywidth.h"
#include "host/base/hex.h"
#include "host/base/text.h"
#include "host/base/utf8.h"
#include "host/output/hexdump.h"
#include "host/output/resulttext.h"
#include "host/output/tablesummary.h"
#include "host/profile/collectorprofile.h"

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

// The path that collects the class, as far as it determines the layout of a register value: kJfr for a class below
// one of the JFR base classes, kR8 for one of the R8 classes, otherwise kNone.
EPath RegisterPathOf(const TCIMClass& cimClass) {
  for (const TCIMClass* above = cimClass.SuperClass().get(); above != nullptr; above = above->SuperClass().get()) {
    if (Contains(CollectorProfile::kJfrBaseClasses, above->Name())) return EPath::kJfr;
  }
  return Contains(CollectorProfile::kR8Classes, cimClass.Name()) ? EPath::kR8 : EPath::kNone;
}

// Safe text for people: a register value as "0xABCDEF  0x0807060504030201" if it is valid on that path, datetimes in
// ISO 8601, other arrays as elements separated by commas with strings quoted, and "(null)" and "(empty)" for values
// without text.
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

constexpr std::size_t kIndent = 2;
constexpr std::size_t kGap = 2;

// The column of the values: after the longest name, but never beyond the middle.
std::size_t ValueColumn(const TInstance& instance, std::size_t width) {
  std::size_t longest = 0;
  const auto& properties = instance.Class().Properties();
  for (std::size_t i = 0; i < properties.size(); ++i) {
    if (instance.IsSet(i)) longest = std::max(longest, ColumnsOf(SafeText(properties[i]->Definition().name)));
  }
  return std::min(kIndent + longest + kGap, width / 2);
}

std::string CaptureTitle(const TCaptureFile& capture) {
  std::string title = capture.fileName;
  const auto add = [&title](const std::string& label, const std::string& text) {
    if (text.empty()) return;
    if (!title.empty()) title += ", ";
    title += label + text;
  };
  add("node ", capture.sourceNode);
  add("record ", capture.recordId);
  add("", capture.localTime);
  return SafeText(title);
}

}  // namespace

void TTableWriter::Count(const std::string& className) {
  const auto known = std::find_if(counts_.begin(), counts_.end(),
                                  [&className](const auto& entry) { return entry.first == className; });
  if (known == counts_.end()) {
    counts_.emplace_back(className, 1);
  } else {
    ++known->second;
  }
}

void TTableWriter::Instance(const TInstance& instance, const TInstanceFacts& facts) {
  Count(instance.Class().Name());
  const auto capture = CaptureFileOf(instance);
  Heading(instance, capture ? &*capture : nullptr);
  for (const TMissing& missing : facts.missing) {
    layout_.Paragraph(kIndent, "missing: " + MissingText(missing), EEmphasis::kFailure);
  }
  Properties(instance, capture ? &*capture : nullptr);
  layout_.BlankLine();
  layout_.Flush();
}

void TTableWriter::Heading(const TInstance& instance, const TCaptureFile* capture) {
  layout_.Line(SafeText(instance.Class().Name()), EEmphasis::kHeading);
  if (capture == nullptr) return;
  const std::string title = CaptureTitle(*capture);
  if (!title.empty()) layout_.Paragraph(kIndent, title);
}

void TTableWriter::Properties(const TInstance& instance, const TCaptureFile* capture) {
  const std::size_t column = ValueColumn(instance, layout_.Width());
  const auto path = RegisterPathOf(instance.Class());
  const auto& properties = instance.Class().Properties();
  for (std::size_t i = 0; i < properties.size(); ++i) {
    if (!instance.IsSet(i)) continue;
    const std::string& name = properties[i]->Definition().name;
    if (capture != nullptr && EqualNames(name, kCaptureDataProperty)) {
      CaptureData(SafeText(name), column, *capture);
    } else {
      layout_.Row(kIndent, SafeText(name), column, TableText(instance.Value(i), path));
    }
  }
}

void TTableWriter::CaptureData(const std::string& safeName, std::size_t column, const TCaptureFile& capture) {
  layout_.Row(kIndent, safeName, column, Counted(capture.data.size(), "byte"));
  const std::size_t perLine = layout_.Width() >= kIndent + DumpColumns(16) ? 16 : 8;
  const std::string indent(kIndent, ' ');
  DumpBytes(capture.data, perLine,
            [this, &indent](std::string_view line) { layout_.Line(indent + std::string(line)); });
}

void TTableWriter::End(const TResultSummary& summary) {
  WriteTableSummary(layout_, summary, counts_);
  layout_.Flush();
}

}  // namespace velhost
