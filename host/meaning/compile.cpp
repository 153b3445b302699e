#include "host/meaning/compile.h"

#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "host/base/names.h"
#include "host/base/text.h"
#include "host/meaning/fieldlist.h"
#include "host/meaning/references.h"
#include "host/meaning/words.h"

namespace velhost {

namespace {

constexpr std::size_t kShown = 40;  // bytes of a word that a message quotes
constexpr unsigned kNarrowBits = 32;
constexpr unsigned kWideBits = 64;

// Whether it is msb0; empty if nothing is said.
std::optional<bool> ReadNumbering(const TQualifierReader& qualifiers) {
  const auto word = qualifiers.Text(Meaning::kBitNumbering);
  if (!word) return std::nullopt;
  if (EqualNames(word->text, "lsb0")) return false;
  if (EqualNames(word->text, "msb0")) return true;
  qualifiers.Note(*word, 0, "found " + SingleQuoted(word->text, kShown) + ", expected 'lsb0' or 'msb0'");
  return std::nullopt;
}

// Empty if there is a role, but a bad one.
std::optional<ERole> ReadRole(const TQualifierReader& qualifiers) {
  if (!qualifiers.Has(Meaning::kRole)) return ERole::kState;
  const auto word = qualifiers.Text(Meaning::kRole);
  if (!word) return std::nullopt;
  const auto role = RoleOf(word->text);
  if (!role) {
    qualifiers.Note(*word, 0, "found " + SingleQuoted(word->text, kShown) + ", expected " + ListOfRoles());
  }
  return role;
}

// The standard qualifiers, which a schema declares itself.
std::string ReadUnit(const TQualifierSet& qualifiers) {
  for (const char* const name : {"Units", "PUnit"}) {
    const auto qualifier = qualifiers.Find(name);
    if (!qualifier || qualifier->GetValue().GetType() != TCIMValue::TCIMType::kString) continue;
    if (qualifier->GetValue().IsArray()) continue;
    std::string unit = qualifier->GetValue().ToString(10);
    if (!unit.empty()) return unit;
  }
  return {};
}

std::vector<TFieldMeaning> ReadFields(const TQualifierReader& qualifiers, unsigned width, bool isMsb0) {
  TFieldList fields(width, isMsb0);
  for (const TQualifierText& text : qualifiers.Texts(Meaning::kFields)) {
    auto breach = fields.Add(text.text);
    if (breach) qualifiers.Note(text, breach->offset, std::move(breach->message));
  }
  return fields.Take();
}

}  // namespace

TClassMeaning CompileMeaning(const TCIMClass& cimClass, const std::vector<TRegisterShape>& registers,
                             std::vector<TMeaningSlip>* slips) {
  TSlipNotes notes(slips);
  const TQualifierReader ofClass(cimClass.Qualifiers(), std::nullopt, notes);
  const bool isClassMsb0 = ReadNumbering(ofClass).value_or(false);
  TClassMeaning meaning;
  meaning.registers.reserve(registers.size());
  for (const TRegisterShape& shape : registers) {
    const TQualifierSet& qualifiers = cimClass.Properties()[shape.property]->Qualifiers();
    const TQualifierReader reader(qualifiers, shape.property, notes);
    TRegisterMeaning one;
    one.property = shape.property;
    one.width = shape.isNarrow ? kNarrowBits : kWideBits;
    const auto role = ReadRole(reader);
    one.role = role.value_or(ERole::kState);
    if (role && *role != ERole::kErrors) NoteWithoutEffect(reader, *role);
    one.isMsb0 = ReadNumbering(reader).value_or(isClassMsb0);
    if (one.role == ERole::kCounter) one.unit = ReadUnit(qualifiers);
    one.fields = ReadFields(reader, one.width, one.isMsb0);
    meaning.registers.push_back(std::move(one));
  }
  TReferences references(cimClass, meaning);
  for (std::size_t i = 0; i < registers.size(); ++i) {
    if (meaning.registers[i].role != ERole::kErrors) continue;
    const std::size_t property = registers[i].property;
    references.Resolve(i, {cimClass.Properties()[property]->Qualifiers(), property, notes});
  }
  notes.Finish();
  return meaning;
}

}  // namespace velhost
