// The description of a class as text.
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/base/utf8.h"
#include "host/meaning/field.h"
#include "host/meaning/words.h"
#include "host/output/resulttext.h"
#include "host/output/tablelayout.h"
#include "host/velhost/describe/classdescription.h"

namespace velhost {

namespace {

using CollectorProfile::EPath;

constexpr std::size_t kIndent = 2;
constexpr std::size_t kDeepIndent = 4;
constexpr std::size_t kColumn = 17;  // of the text after "  Machine types"
constexpr std::size_t kGap = 2;

constexpr std::size_t kMostSubclasses = 8;

std::string_view PathText(EPath path) {
  switch (path) {
    case EPath::kR8: return "R8: registers read one by one over IPMI";
    case EPath::kJfr: return "JFR: records of a register block, which a service processor sends as a whole";
    case EPath::kCapture: return "FFDC: capture files, read over IPMI";
    case EPath::kNone: break;
  }
  return "none";
}

std::string ServedText(const TClassDescription& description) {
  const TPlannedClass& planned = description.planned;
  const bool isEverywhere = planned.path == EPath::kCapture;
  if (isEverywhere && planned.whyNotServed.empty()) return "yes, on every machine type";
  if (isEverywhere || planned.path == EPath::kNone) return "no: " + planned.whyNotServed;
  if (description.machineType.empty()) return "unknown: give the machine type with --machine-type NNNN";
  const std::string here = " on machine type " + description.machineType;
  if (!planned.whyNotServed.empty()) return "not" + here + ": " + planned.whyNotServed;
  const bool isOfAnother = description.servedBy != description.machineType;
  return "yes," + here + (isOfAnother ? ", which is part of its " + Quoted(description.servedBy) : "");
}

std::string InstancesText(const TPlannedClass& planned) {
  const unsigned count = planned.instances;
  if (planned.path == EPath::kCapture) {
    return fmt::format("one for each BMC node and storage area: {}", Listed(kCaptureAreas, " and "));
  }
  if (count == 0) return "none";
  if (planned.path == EPath::kJfr) return fmt::format("{} for each service processor", count);
  if (!planned.isBridge) return fmt::format("{}, chip 0", count);
  return count == 1 ? "1, chip 1" : fmt::format("{}, chips 1 to {}", count, count);
}

std::string WhereOf(const TPlannedRegister& reg, EPath path) {
  TWhere where;
  if (path == EPath::kJfr) {
    where.index = reg.index;
  } else if (reg.addresses.size() == 1) {
    where.address = reg.addresses.front();
  } else {
    where.addresses = reg.addresses;
  }
  return WhereText(where);
}

std::string_view NumberingText(bool isMsb0) {
  return isMsb0 ? "msb0: bit 0 is the most significant" : "lsb0: bit 0 is the least significant";
}

std::string BitsTextOf(TBits bits, const TRegisterMeaning& meaning) {
  return BitsText(bits, meaning.width, meaning.isMsb0);
}

std::string RangeText(const TValueText& text, bool isHex) {
  const auto number = [isHex](std::uint64_t value) {
    return fmt::format(fmt::runtime(isHex ? "0x{:X}" : "{}"), value);
  };
  return text.first == text.last ? number(text.first) : number(text.first) + "-" + number(text.last);
}

// Names and what they stand for, in columns.
using TRows = std::vector<std::pair<std::string, std::string>>;

class TDescriptionText {
 public:
  TDescriptionText(const TClassDescription& description, ITextSink& sink, const TTableOptions& options)
      : description_(description), planned_(description.planned), layout_(sink, options) {}

  void Write() {
    if (description_.property) {
      Property(*description_.property);
    } else {
      Class();
    }
    layout_.Flush();
  }

 private:
  void Class();
  void AboutClass();
  void Registers();
  void RegisterInClass(std::size_t number, std::size_t column);
  void FieldNames(const TRegisterMeaning& meaning);
  void OtherProperties();
  void Property(std::size_t property);
  void Register(std::size_t number);
  void Fields(const TRegisterMeaning& meaning);
  void Values(const TFieldMeaning& field, std::size_t indent);

  const TPropertyDecl& DeclarationOf(std::size_t property) const {
    return *planned_.cimClass->Properties().at(property);
  }
  std::string NameOf(std::size_t registerNumber) const {
    return SafeText(DeclarationOf(planned_.registers.at(registerNumber).property).Definition().name);
  }
  std::string NamesOf(const std::vector<std::size_t>& registers) const;
  TRows References(const TRegisterMeaning& meaning) const;
  TRows ReferencesTo(std::size_t number) const;
  void Rows(std::size_t indent, std::size_t column, const TRows& rows);
  void Paragraphs(std::size_t indent, const std::string& text);

  const TClassDescription& description_;
  const TPlannedClass& planned_;
  TTableLayout layout_;
};

void TDescriptionText::Rows(std::size_t indent, std::size_t column, const TRows& rows) {
  for (const auto& [label, text] : rows) layout_.Row(indent, label, column, SafeText(text));
}

// A schema may write a description in several lines.
void TDescriptionText::Paragraphs(std::size_t indent, const std::string& text) {
  std::string_view rest = text;
  while (!rest.empty()) {
    const std::string_view line = rest.substr(0, rest.find('\n'));
    layout_.Paragraph(indent, SafeText(line));
    rest.remove_prefix(std::min(line.size() + 1, rest.size()));
  }
}

std::string TDescriptionText::NamesOf(const std::vector<std::size_t>& registers) const {
  std::vector<std::string> names;
  for (const std::size_t number : registers) names.push_back(NameOf(number));
  return Listed(names, ", ");
}

void TDescriptionText::Class() {
  layout_.Line(SafeText(planned_.cimClass->Name()), EEmphasis::kHeading);
  Paragraphs(kIndent, DescriptionOf(planned_.cimClass->Qualifiers()));
  layout_.BlankLine();
  AboutClass();
  Registers();
  OtherProperties();
}

void TDescriptionText::AboutClass() {
  TRows rows;
  const auto superClass = planned_.cimClass->SuperClass();
  if (superClass) rows.emplace_back("Superclass", superClass->Name());
  if (!description_.baseClass.empty()) {
    rows.emplace_back("Stands for", "the base class " + description_.baseClass + ", on this machine");
  }
  if (planned_.path != EPath::kNone) rows.emplace_back("Path", PathText(planned_.path));
  std::vector<std::string> types;
  for (const std::string& type : MachineTypesOf(*planned_.cimClass)) types.push_back(Quoted(type));
  if (!types.empty()) rows.emplace_back("Machine types", Listed(types, ", "));
  rows.emplace_back("Served", ServedText(description_));
  if (planned_.path != EPath::kNone) rows.emplace_back("Instances", InstancesText(planned_));
  std::vector<std::string> subclasses = description_.subclasses;
  if (subclasses.size() > kMostSubclasses) {
    subclasses.resize(kMostSubclasses);
    subclasses.push_back(std::to_string(description_.subclasses.size() - kMostSubclasses) + " more");
  }
  if (!subclasses.empty()) rows.emplace_back("Collected as", Listed(subclasses, " and "));
  Rows(kIndent, kColumn, rows);
}

void TDescriptionText::Registers() {
  if (planned_.turn == ETurn::kUnknown) {
    layout_.BlankLine();
    layout_.Paragraph(0,
                      "Which registers are read cannot be told: \"velhost check\" says what is wrong with the class.");
  }
  if (planned_.registers.empty()) return;
  layout_.BlankLine();
  layout_.Line("Registers", EEmphasis::kHeading);
  std::size_t longest = 0;
  for (std::size_t i = 0; i < planned_.registers.size(); ++i) longest = std::max(longest, ColumnsOf(NameOf(i)));
  for (std::size_t i = 0; i < planned_.registers.size(); ++i) RegisterInClass(i, kIndent + longest + kGap);
}

// "errors", "counter in bytes", "state, msb0"
std::string RoleText(const TRegisterMeaning& meaning) {
  std::string text(RoleName(meaning.role));
  if (!meaning.unit.empty()) text += " in " + meaning.unit;
  return text;
}

void TDescriptionText::RegisterInClass(std::size_t number, std::size_t column) {
  const TPlannedRegister& reg = planned_.registers.at(number);
  const TRegisterMeaning& meaning = planned_.meaning->registers.at(number);
  if (number > 0) layout_.BlankLine();
  const std::string facts = fmt::format("{}, {} bits, {}{}", WhereOf(reg, planned_.path), meaning.width,
                                        RoleText(meaning), meaning.isMsb0 ? ", msb0" : "");
  layout_.Row(kIndent, NameOf(number), column, SafeText(facts));
  Paragraphs(kDeepIndent, DescriptionOf(DeclarationOf(reg.property).Qualifiers()));
  TRows rows = References(meaning);
  Rows(kDeepIndent, kColumn + kGap, rows);
  FieldNames(meaning);
}

// As many on a line as fit, so that no name is far from its bits.
void TDescriptionText::FieldNames(const TRegisterMeaning& meaning) {
  constexpr std::size_t kNameColumn = kColumn + kGap;
  std::vector<std::string> lines;
  for (std::size_t i = 0; i < meaning.fields.size(); ++i) {
    const bool isLast = i + 1 == meaning.fields.size();
    const TFieldMeaning& field = meaning.fields[i];
    const std::string text = BitsTextOf(field.bits, meaning) + " " + SafeText(field.name) + (isLast ? "" : ";");
    const bool fits = !lines.empty() && kNameColumn + ColumnsOf(lines.back() + " " + text) <= layout_.Width();
    if (fits) {
      lines.back() += " " + text;
    } else {
      lines.push_back(text);
    }
  }
  for (std::size_t i = 0; i < lines.size(); ++i)
    layout_.Row(kDeepIndent, i == 0 ? "Fields" : "", kNameColumn, lines[i]);
}

// What else decides the meaning of an errors register.
TRows TDescriptionText::References(const TRegisterMeaning& meaning) const {
  TRows rows;
  if (meaning.role != ERole::kErrors) return rows;
  if (meaning.fatalBy) {
    const bool hasUpper = meaning.width == 32 && meaning.severity != ESeverity::kError;
    const std::string upper = hasUpper ? "; " + std::string(SeverityName(meaning.severity)) + " in bits 63:32" : "";
    rows.emplace_back("Severity", "fatal where " + NameOf(*meaning.fatalBy) + " has a 1, else error" + upper);
  } else {
    rows.emplace_back("Severity", SeverityName(meaning.severity));
  }
  if (meaning.maskedBy) rows.emplace_back("Masked by", NameOf(*meaning.maskedBy) + ", where it has a 1");
  if (meaning.enabledBy) rows.emplace_back("Enabled by", NameOf(*meaning.enabledBy) + ", where it has a 1");
  if (meaning.firstError) {
    const TRegisterMeaning& pointer = planned_.meaning->registers.at(meaning.firstError->registerIndex);
    const TBits bits = meaning.firstError->bits;
    const bool isWhole = bits == TBits{pointer.width - 1, 0};
    rows.emplace_back("First error", "the bit whose number is in " + NameOf(meaning.firstError->registerIndex) +
                                         (isWhole ? "" : " " + BitsTextOf(bits, pointer)));
  }
  if (!meaning.evidence.empty()) {
    rows.emplace_back("Evidence", NamesOf(meaning.evidence) + (meaning.firstError ? ", of the first error" : ""));
  }
  return rows;
}

// The errors registers that refer to a register.
TRows TDescriptionText::ReferencesTo(std::size_t number) const {
  const auto& registers = planned_.meaning->registers;
  std::vector<std::size_t> masks;
  std::vector<std::size_t> enables;
  std::vector<std::size_t> fatal;
  std::vector<std::size_t> first;
  std::vector<std::size_t> evidence;
  for (std::size_t i = 0; i < registers.size(); ++i) {
    const TRegisterMeaning& other = registers[i];
    if (other.role != ERole::kErrors) continue;
    if (other.maskedBy == number) masks.push_back(i);
    if (other.enabledBy == number) enables.push_back(i);
    if (other.fatalBy == number) fatal.push_back(i);
    if (other.firstError && other.firstError->registerIndex == number) first.push_back(i);
    if (std::find(other.evidence.begin(), other.evidence.end(), number) != other.evidence.end()) evidence.push_back(i);
  }
  TRows rows;
  if (!masks.empty()) rows.emplace_back("Masks", NamesOf(masks));
  if (!enables.empty()) rows.emplace_back("Enables", NamesOf(enables));
  if (!fatal.empty()) rows.emplace_back("Fatal bits of", NamesOf(fatal));
  if (!first.empty()) rows.emplace_back("First error of", NamesOf(first));
  if (!evidence.empty()) rows.emplace_back("Evidence for", NamesOf(evidence));
  return rows;
}

// With registers only the names: these properties identify an instance and are the same in every class.
void TDescriptionText::OtherProperties() {
  std::vector<std::size_t> others;
  const std::size_t count = planned_.cimClass->Properties().size();
  for (std::size_t i = 0; i < count; ++i) {
    if (!RegisterOf(planned_, i)) others.push_back(i);
  }
  if (others.empty()) return;
  layout_.BlankLine();
  const bool isBrief = !planned_.registers.empty();
  layout_.Line(isBrief ? "Other properties" : "Properties", EEmphasis::kHeading);
  if (isBrief) {
    std::vector<std::string> names;
    for (const std::size_t other : others) names.push_back(SafeText(DeclarationOf(other).Definition().name));
    return layout_.Paragraph(kIndent, Listed(names, ", "));
  }
  for (const std::size_t other : others) {
    const TPropertyDecl& property = DeclarationOf(other);
    layout_.Paragraph(kIndent, SafeText(property.Definition().name + "  " + TypeTextOf(property.Definition())));
    Paragraphs(kDeepIndent, DescriptionOf(property.Qualifiers()));
  }
}

void TDescriptionText::Property(std::size_t property) {
  const TPropertyDecl& declaration = DeclarationOf(property);
  layout_.Paragraph(0, SafeText(planned_.cimClass->Name() + "." + declaration.Definition().name), EEmphasis::kHeading);
  Paragraphs(kIndent, DescriptionOf(declaration.Qualifiers()));
  layout_.BlankLine();
  if (const auto number = RegisterOf(planned_, property)) return Register(*number);
  const bool isKnown = planned_.turn != ETurn::kUnknown;
  Rows(kIndent, kColumn + kGap,
       {{"Type", TypeTextOf(declaration.Definition())},
        {"Register", isKnown ? "no" : "unknown: \"velhost check\" says what is wrong with the class"}});
}

void TDescriptionText::Register(std::size_t number) {
  const TPlannedRegister& reg = planned_.registers.at(number);
  const TRegisterMeaning& meaning = planned_.meaning->registers.at(number);
  TRows rows;
  const std::string where = WhereOf(reg, planned_.path);
  if (planned_.path == EPath::kJfr) {
    rows.emplace_back("Record", where);
  } else if (reg.addresses.size() == 1) {
    rows.emplace_back("Address", where);
  } else {
    rows.emplace_back("Addresses", where + "; delivered if exactly one answers");
  }
  rows.emplace_back("Width", fmt::format("{} bits", meaning.width));
  rows.emplace_back("Numbering", NumberingText(meaning.isMsb0));
  rows.emplace_back("Role", RoleName(meaning.role));
  if (!meaning.unit.empty()) rows.emplace_back("Unit", meaning.unit);
  for (const TRows& more : {References(meaning), ReferencesTo(number)})
    rows.insert(rows.end(), more.begin(), more.end());
  rows.emplace_back("Served", ServedText(description_));
  Rows(kIndent, kColumn + kGap, rows);
  Fields(meaning);
}

void TDescriptionText::Fields(const TRegisterMeaning& meaning) {
  if (meaning.fields.empty()) return;
  layout_.BlankLine();
  layout_.Line("Fields", EEmphasis::kHeading);
  std::size_t longest = 0;
  for (const TFieldMeaning& field : meaning.fields) longest = std::max(longest, BitsTextOf(field.bits, meaning).size());
  const std::size_t column = kIndent + longest + kGap;
  for (const TFieldMeaning& field : meaning.fields) {
    layout_.Row(kIndent, BitsTextOf(field.bits, meaning), column,
                SafeText(field.name) + (field.isHex ? " (in hex)" : ""));
    Values(field, column + kGap);
  }
}

void TDescriptionText::Values(const TFieldMeaning& field, std::size_t indent) {
  std::size_t longest = 0;
  for (const TValueText& text : field.texts) longest = std::max(longest, RangeText(text, field.isHex).size());
  const std::size_t column = indent + std::min(longest, layout_.Width() / 3) + kGap;
  for (const TValueText& text : field.texts) {
    layout_.Row(indent, RangeText(text, field.isHex), column, SafeText(text.text));
  }
}

}  // namespace

void WriteDescriptionAsText(const TClassDescription& description, ITextSink& sink, const TTableOptions& options) {
  TDescriptionText(description, sink, options).Write();
}

}  // namespace velhost
