#include "host/meaning/references.h"

#include <algorithm>
#include <array>
#include <memory>
#include <variant>
#include <vector>

#include "host/base/names.h"
#include "host/base/text.h"
#include "host/meaning/fieldgrammar.h"
#include "host/meaning/words.h"

namespace velhost {

namespace {

constexpr std::size_t kShown = 40;           // bytes of a word or name that a message quotes
constexpr std::size_t kShortestForHint = 3;  // everything is close to a shorter name

constexpr std::array<std::string_view, 6> kOfErrors = {Meaning::kMaskedBy, Meaning::kEnabledBy,    Meaning::kFatalBy,
                                                       Meaning::kSeverity, Meaning::kFirstErrorIn, Meaning::kEvidence};

ESeverity ReadSeverity(const TQualifierReader& qualifiers) {
  const auto word = qualifiers.Text(Meaning::kSeverity);
  if (!word) return ESeverity::kError;
  const auto severity = SeverityOf(word->text);
  if (severity) return *severity;
  qualifiers.Note(*word, 0, "found " + SingleQuoted(word->text, kShown) + ", expected " + ListOfSeverities());
  return ESeverity::kError;
}

}  // namespace

void NoteWithoutEffect(const TQualifierReader& qualifiers, ERole role) {
  for (const std::string_view name : kOfErrors) {
    if (!qualifiers.Has(name)) continue;
    qualifiers.Note(name, "the qualifier " + SingleQuoted(name) + " has no effect on a register of the role " +
                              SingleQuoted(RoleName(role)) + ", expected the role 'errors'");
  }
}

const std::string& TReferences::NameOf(std::size_t registerIndex) const {
  return class_.Properties()[meaning_.registers[registerIndex].property]->Definition().name;
}

std::optional<std::size_t> TReferences::Find(std::string_view name) const {
  const std::size_t property = class_.FindProperty(name);
  const auto found =
      std::lower_bound(meaning_.registers.begin(), meaning_.registers.end(), property,
                       [](const TRegisterMeaning& known, std::size_t wanted) { return known.property < wanted; });
  if (found == meaning_.registers.end() || found->property != property) return std::nullopt;
  return static_cast<std::size_t>(found - meaning_.registers.begin());
}

// Only names from the same file are offered: another one may be a file of which nothing must be shown.
std::string TReferences::HintFor(const TQualifierText& text, std::string_view name) const {
  if (name.size() < kShortestForHint) return {};
  std::vector<std::string_view> names;
  for (const TRegisterMeaning& known : meaning_.registers) {
    const TPropertyDefinition& definition = class_.Properties()[known.property]->Definition();
    if (definition.location.file == text.qualifier->Location().file) names.push_back(definition.name);
  }
  return Suggestion(NearestName(name, names), "'");
}

std::optional<std::size_t> TReferences::FindNamed(const TQualifierReader& qualifiers, const TQualifierText& text,
                                                  std::string_view name) const {
  const auto found = Find(name);
  if (!found) {
    qualifiers.Note(text, 0,
                    "found " + SingleQuoted(name, kShown) + ", expected a register of the class " +
                        SingleQuoted(class_.Name()) + HintFor(text, name));
  }
  return found;
}

// A register whose bits are laid on those of the errors register.
std::optional<std::size_t> TReferences::Companion(const TQualifierReader& qualifiers, std::string_view qualifier,
                                                  unsigned width) const {
  const auto text = qualifiers.Text(qualifier);
  const auto found = text ? FindNamed(qualifiers, *text, text->text) : std::nullopt;
  if (!found || meaning_.registers[*found].width == width) return found;
  qualifiers.Note(*text, 0,
                  "found a register of " + std::to_string(meaning_.registers[*found].width) +
                      " bits, expected one of " + std::to_string(width) + " as this one");
  return std::nullopt;
}

std::optional<TFirstErrorPlace> TReferences::FirstError(const TQualifierReader& qualifiers) const {
  const auto text = qualifiers.Text(Meaning::kFirstErrorIn);
  if (!text) return std::nullopt;
  const std::string_view all = text->text;
  const std::size_t blank = std::min(all.find(' '), all.size());
  const auto found = FindNamed(qualifiers, *text, all.substr(0, blank));
  if (!found) return std::nullopt;
  const TRegisterMeaning& named = meaning_.registers[*found];
  if (blank == all.size()) return TFirstErrorPlace{*found, {named.width - 1, 0}};
  const std::size_t bitsAt = std::min(all.find_first_not_of(' ', blank), all.size());
  auto written = ParseBitRange(all, bitsAt);
  if (const auto* const breach = std::get_if<TFieldBreach>(&written)) {
    qualifiers.Note(*text, breach->offset, breach->message);
    return std::nullopt;
  }
  auto bits = BitsOf(std::get<TWrittenBits>(written), named.width, named.isMsb0);
  if (const auto* const breach = std::get_if<TFieldBreach>(&bits)) {
    qualifiers.Note(*text, breach->offset, breach->message);
    return std::nullopt;
  }
  return TFirstErrorPlace{*found, std::get<TBits>(bits)};
}

void TReferences::ReadEvidence(const TQualifierReader& qualifiers, TRegisterMeaning& errors) const {
  std::vector<bool> isNamed(meaning_.registers.size());
  for (const TQualifierText& text : qualifiers.Texts(Meaning::kEvidence)) {
    const auto found = FindNamed(qualifiers, text, text.text);
    if (!found) continue;
    if (isNamed[*found]) {
      qualifiers.Note(text, 0, "found " + SingleQuoted(text.text, kShown) + " again, expected each register once");
    } else {
      isNamed[*found] = true;
      errors.evidence.push_back(*found);
    }
  }
}

void TReferences::Resolve(std::size_t registerIndex, const TQualifierReader& qualifiers) {
  TRegisterMeaning& errors = meaning_.registers[registerIndex];
  errors.maskedBy = Companion(qualifiers, Meaning::kMaskedBy, errors.width);
  errors.enabledBy = Companion(qualifiers, Meaning::kEnabledBy, errors.width);
  errors.fatalBy = Companion(qualifiers, Meaning::kFatalBy, errors.width);
  errors.severity = ReadSeverity(qualifiers);
  errors.firstError = FirstError(qualifiers);
  ReadEvidence(qualifiers, errors);
  if (!qualifiers.Has(Meaning::kFatalBy) || !qualifiers.Has(Meaning::kSeverity)) return;
  qualifiers.Note(Meaning::kSeverity, "found 'Severity' together with 'FatalBy', expected one of them",
                  EDiagnosticSeverity::kWarning);
}

}  // namespace velhost
