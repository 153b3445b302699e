#include "host/schema/embeddedtext.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "host/base/text.h"
#include "host/base/utf8.h"
#include "host/schema/instancebuilder.h"
#include "host/schema/mofscan.h"

namespace velhost {

TEmbeddedText::TEmbeddedText(const TSchemaUnit& outer, const Mof::TLiteral& literal, const TSchemaLimits& limits,
                             TSchemaLog& log)
    : outer_(outer), source_(outer.source->Name(), TakeText(literal)), unit_{outer.number, &source_, &file_, this} {
  RefuseNul(log);
  file_ = Mof::ParseMof(source_, unit_, limits, log);
}

std::string TEmbeddedText::TakeText(const Mof::TLiteral& literal) {
  std::string text;
  for (std::uint32_t i = 0; i < literal.pieces.count; ++i) {
    const Mof::TPiece& piece = outer_.file->pieces[literal.pieces.first + i];
    const auto start = static_cast<std::uint32_t>(text.size());
    jumps_.push_back({start, piece.span.begin});
    Mof::AppendUnescaped(text, outer_.Text(piece.span), piece.span.begin, jumps_);
  }
  // TSchemaSource would drop a byte order mark and so shift every place.
  constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
  if (text.compare(0, kByteOrderMark.size(), kByteOrderMark) == 0) text[0] = ' ', text[1] = ' ', text[2] = ' ';
  return text;
}

// A NUL can only come from an escape; no other byte of a string can be bad, because its file was checked.
void TEmbeddedText::RefuseNul(TSchemaLog& log) {
  const auto bad = ReplaceBadBytes(source_.Characters());
  if (!bad) return;
  log.Error(Place(static_cast<std::uint32_t>(bad->offset)), "found a NUL character in an embedded string");
}

TSchemaPlace TEmbeddedText::Place(std::uint32_t offset) const {
  const auto next = std::upper_bound(jumps_.begin(), jumps_.end(), offset,
                                     [](std::uint32_t place, const Mof::TTextJump& jump) { return place < jump.text; });
  const Mof::TTextJump& jump = *(next - 1);
  return outer_.Place(jump.source + (offset - jump.text));
}

// Strings that hold MOF: the values of properties with the qualifier EmbeddedInstance or EmbeddedObject.

namespace {

Mof::TSpan NameOf(const Mof::TMofFile& file, const Mof::TProduction& production) {
  switch (production.kind) {
    case Mof::EProduction::kPragma: return file.pragmas[production.index].name;
    case Mof::EProduction::kQualifier: return file.qualifiers[production.index].name;
    case Mof::EProduction::kClass: return file.classes[production.index].name;
    default: return file.instances[production.index].className;
  }
}

const char* KindOf(Mof::EProduction production) {
  switch (production) {
    case Mof::EProduction::kPragma: return "a pragma";
    case Mof::EProduction::kQualifier: return "a qualifier declaration";
    case Mof::EProduction::kClass: return "a class";
    default: return "an instance";
  }
}

}  // namespace

void TInstanceBuilder::CheckEmbedded(const TSchemaUnit& unit, const Mof::TInitializer& value,
                                     const TPropertyDecl& property) {
  if (property.Definition().type != TCIMValue::TCIMType::kString) return;
  const auto ofClass = property.Qualifiers().Find("EmbeddedInstance");
  const auto ofAny = property.Qualifiers().Find("EmbeddedObject");
  const bool hasClass = ofClass && !ofClass->GetValue().IsNull();
  if (!hasClass && !(ofAny && IsTrue(ofAny->GetValue()))) return;
  static const TEmbedded any{true, {}, "an instance or a class"};
  const TEmbedded* embedded = &any;
  if (hasClass) {
    const auto [known, isNew] = embeddedClasses_.try_emplace(ofClass->IsDefault() ? nullptr : ofClass.get());
    if (isNew) known->second = EmbeddedOf(*ofClass);
    embedded = &known->second;
  }
  for (std::uint32_t i = 0; i < value.literals.count; ++i) {
    const Mof::TLiteral& literal = unit.file->literals[value.literals.first + i];
    if (literal.kind == Mof::ELiteral::kString) ReadEmbedded(unit, literal, *embedded);
  }
}

TInstanceBuilder::TEmbedded TInstanceBuilder::EmbeddedOf(const TQualifier& ofClass) const {
  const std::string name = ofClass.GetValue().ToString(10);
  // An empty name has always meant any object.
  if (name.empty()) return {true, {}, "an instance or a class"};
  const bool shown = !log_.Hides(ofClass.Location().file) && name.size() <= limits_.nameSize;
  return {false, namespace_.FindClass(name),
          shown ? "an instance of " + SingleQuoted(name) : "an instance of the class that the property names"};
}

// Embedded texts may contain embedded texts. Each level doubles the backslashes before its quotes, so the size of a
// literal bounds the depth.
void TInstanceBuilder::ReadEmbedded(const TSchemaUnit& outer, const Mof::TLiteral& literal, const TEmbedded& embedded) {
  const std::size_t errors = log_.Errors();
  const TEmbeddedText text(outer, literal, limits_, log_);
  const TSchemaUnit& unit = text.Unit();
  const std::vector<Mof::TProduction>& productions = unit.file->productions;
  if (productions.empty()) {
    if (log_.Errors() == errors)
      log_.Error(outer.Place(literal.span), "found an empty string, expected " + embedded.expected);
    return;
  }
  const Mof::TProduction first = productions.front();
  if (first.kind == Mof::EProduction::kInstance) {
    ReadEmbeddedInstance(unit, unit.file->instances[first.index], embedded);
  } else if (first.kind == Mof::EProduction::kClass && embedded.isAny) {
    const Mof::TSpan above = unit.file->classes[first.index].superClass;
    if (above.begin != above.end) classes_.CheckClassName(unit.Place(above), unit.Text(above));
  } else {
    log_.Error(unit.Place(NameOf(*unit.file, first)),
               "found " + std::string(KindOf(first.kind)) + " in an embedded string, expected " + embedded.expected);
  }
  if (productions.size() > 1) {
    log_.Error(unit.Place(NameOf(*unit.file, productions[1])), "found a second declaration in an embedded string");
  }
}

void TInstanceBuilder::ReadEmbeddedInstance(const TSchemaUnit& unit, const Mof::TInstanceSyntax& syntax,
                                            const TEmbedded& embedded) {
  const auto found = namespace_.FindClass(unit.Text(syntax.className));
  const auto& expected = embedded.cimClass;
  if (found && expected && found != expected && !found->DescendsFrom(*expected)) {
    const std::string name = log_.Hides(expected->Location().file) ? "that class" : SingleQuoted(expected->Name());
    log_.Error(unit.Place(syntax.className), "found an instance of " + unit.Quoted(syntax.className) +
                                                 ", expected one of " + name + " or of a subclass");
  }
  BuildOne(unit, syntax);
}

void TInstanceBuilder::CheckStringDefaults() {
  for (const TStringDefault& text : classes_.StringDefaults()) {
    const boost::shared_ptr<TCIMClass>& cimClass = *text.cimClass;
    const std::size_t index = cimClass ? cimClass->FindProperty(text.property) : 0;
    if (!cimClass || index == cimClass->Properties().size()) continue;
    CheckEmbedded(text.unit, text.value, *cimClass->Properties()[index]);
  }
}

}  // namespace velhost
