#include "host/schema/qualifiertable.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <memory>
#include <string>
#include <utility>

#include "host/base/text.h"
#include "host/meaning/words.h"
#include "host/schema/mofscan.h"
#include "host/schema/schemaunit.h"

namespace velhost {

namespace {

using TType = TCIMValue::TCIMType;

struct TScopeName {
  std::uint32_t bit;
  const char* name;
};
constexpr std::array kScopeNames = {
    TScopeName{Mof::kScopeClass, "class"},           TScopeName{Mof::kScopeAssociation, "association"},
    TScopeName{Mof::kScopeIndication, "indication"}, TScopeName{Mof::kScopeProperty, "property"},
    TScopeName{Mof::kScopeReference, "reference"},   TScopeName{Mof::kScopeMethod, "method"},
    TScopeName{Mof::kScopeParameter, "parameter"},   TScopeName{Mof::kScopeQualifier, "qualifier"},
    TScopeName{Mof::kScopeSchema, "schema"},
};

std::string ScopeNames(std::uint32_t scope) {
  std::vector<std::string_view> names;
  for (const TScopeName& entry : kScopeNames) {
    if ((scope & entry.bit) != 0) names.push_back(entry.name);
  }
  return Listed(names, ", ");
}

// The given flavors take precedence over `otherwise`.
TQualifierFlavor FlavorOf(std::uint32_t flavors, TQualifierFlavor otherwise) {
  TQualifierFlavor flavor = otherwise;
  if ((flavors & Mof::kEnableOverride) != 0) flavor.overridable = true;
  if ((flavors & Mof::kDisableOverride) != 0) flavor.overridable = false;
  if ((flavors & Mof::kToSubclass) != 0) flavor.toSubclass = true;
  if ((flavors & Mof::kRestricted) != 0) flavor.toSubclass = false;
  if ((flavors & Mof::kTranslatable) != 0) flavor.translatable = true;
  return flavor;
}

bool IsFixed(const TQualifierFlavor& flavor) { return flavor.toSubclass && !flavor.overridable; }

bool Inherits(const TQualifiedElement& element, std::string_view name) {
  return element.inherited != nullptr && element.inherited->Find(std::string(name));
}

// As much of the value as a message shows; reads no more elements of an array than that takes.
std::string Shown(const TCIMValue& value) {
  if (value.IsNull()) return "null";
  if (!value.IsArray()) return Mof::Quoted(value.ToString(10));
  std::string text;
  for (const TCIMValue& element : static_cast<const std::vector<TCIMValue>&>(value)) {
    if (text.size() > Mof::kShown) break;
    text += text.empty() ? "{" : ", ";
    element.AppendTo(text, 10);
  }
  return Mof::Quoted(text.empty() ? "{}" : text + "}");
}

// Compares two values of one qualifier. The declared default may be long and used often, so a value is only compared
// with it once, when it is read (isDefault), and not again here.
bool SameValue(const TQualifier& inherited, const TQualifierDefinition& definition) {
  if (inherited.IsDefault() || definition.isDefault) return inherited.IsDefault() == definition.isDefault;
  return inherited.GetValue() == definition.value;
}

TDeclaredQualifier KnownQualifier(const Meaning::TQualifierOfMeaning& known) {
  TDeclaredQualifier declared{};
  declared.name = known.name;
  declared.slot = {TType::kString, known.isArray, 0, known.name};
  declared.defaultValue = NullOf(declared.slot);
  declared.scope = Mof::kScopeProperty | (known.isOfClassesToo ? Mof::kScopeClass : 0U);
  return declared;
}

}  // namespace

TQualifierTable::TQualifierTable(const TSchemaLimits& limits, const Mof::TNameSet& mentioned, TSchemaLog& log)
    : limits_(limits), mentioned_(mentioned), log_(log), values_(log) {
  std::transform(Meaning::kQualifiers.begin(), Meaning::kQualifiers.end(), known_.begin(), KnownQualifier);
}

void TQualifierTable::WarnOfAnotherType(const TSchemaUnit& unit, const Mof::TQualifierSyntax& syntax,
                                        const TValueSlot& slot) {
  const auto* const known = Meaning::FindQualifier(slot.qualifier);
  if (known == nullptr || (slot.type == TType::kString && slot.isArray == known->isArray)) return;
  log_.Warning(unit.Place(syntax.name),
               "the qualifier " + unit.Quoted(syntax.name) + " is declared as " + NameOf(slot) + ", expected " +
                   NameOf({TType::kString, known->isArray, 0, {}}) + "; it will not describe registers");
}

void TQualifierTable::Declare(const TSchemaUnit& unit, const Mof::TQualifierSyntax& syntax) {
  TDeclaredQualifier declared{unit.Text(syntax.name),       {},   {},         syntax.scope,
                              FlavorOf(syntax.flavors, {}), unit, syntax.name};
  declared.slot = {syntax.type.code, syntax.array.isArray, syntax.array.size, declared.name};
  if (syntax.value.given) {
    values_.Read(unit, syntax.value, declared.slot, declared.defaultValue);
  } else {
    declared.defaultValue = NullOf(declared.slot);
  }
  WarnOfAnotherType(unit, syntax, declared.slot);
  names_.push_back(declared.name);
  const auto [known, isNew] = declared_.emplace(declared.name, declared);
  if (isNew) return;
  const TSourceLocation first = known->second.unit.Locate(known->second.place);
  log_.Error(unit.Place(syntax.name), "the qualifier " + unit.Quoted(syntax.name) + " is already declared in " +
                                          first.file + ":" + std::to_string(first.line));
}

const TDeclaredQualifier* TQualifierTable::Find(const TSchemaUnit& unit, Mof::TSpan name) {
  const std::string_view text = unit.Text(name);
  const auto found = declared_.find(text);
  if (found != declared_.end()) return &found->second;
  if (const auto* const known = Meaning::FindQualifier(text)) {
    return &known_.at(static_cast<std::size_t>(known - Meaning::kQualifiers.data()));
  }
  if (mentioned_.count(text) != 0) return nullptr;
  TNameHint hint(text, log_.NameSearchSteps());
  if (log_.Shows()) {
    for (std::size_t i = 0; i < names_.size() && hint.Wants(); ++i) {
      if (!declared_.at(names_[i]).IsHidden()) hint.Offer(names_[i]);
    }
    for (const auto& known : Meaning::kQualifiers) hint.Offer(known.name);
  }
  log_.Error(unit.Place(name), "the qualifier " + unit.Quoted(name) + " is not declared" + hint.Text());
  return nullptr;
}

bool TQualifierTable::HasScope(const TSchemaUnit& unit, const Mof::TQualifierUse& use,
                               const TDeclaredQualifier& declared, std::uint32_t scope) {
  if (scope == 0 || (declared.scope & scope) != 0) return true;
  log_.Error(unit.Place(use.name), "the qualifier " + unit.Quoted(use.name) + " is on an element of kind " +
                                       ScopeNames(scope) + ", expected " + ScopeNames(declared.scope));
  return false;
}

// Without a value, a boolean qualifier is true and any other has its declared default.
bool TQualifierTable::ReadValue(const TSchemaUnit& unit, const Mof::TQualifierUse& use,
                                const TDeclaredQualifier& declared, bool keep, TQualifierDefinition& definition) {
  TCIMValue& value = definition.value;
  if (use.value.given) {
    if (!keep) return values_.Check(unit, use.value, declared.slot);
    if (!values_.Read(unit, use.value, declared.slot, value)) return false;
  } else {
    const bool isFlag = declared.slot.type == TType::kBoolean && !declared.slot.isArray;
    value = isFlag ? TCIMValue::FromInteger(TType::kBoolean, 1) : declared.defaultValue;
  }
  definition.isDefault = value == declared.defaultValue;
  return true;
}

// Repeating the inherited value is not an override.
bool TQualifierTable::MayOverride(const TSchemaUnit& unit, const Mof::TQualifierUse& use,
                                  const TDeclaredQualifier& declared, const TQualifierDefinition& definition,
                                  const TQualifierSet* inherited) {
  if (inherited == nullptr) return true;
  const auto overridden = inherited->Find(definition.name);
  if (!overridden || !IsFixed(overridden->Flavor()) || SameValue(*overridden, definition)) return true;
  std::string problem;
  if (log_.Hides(overridden->Location().file) || declared.IsHidden()) {
    problem = " has a value other than the inherited one";
  } else if (log_.Shows()) {
    problem =
        " has the value " + Shown(definition.value) + ", expected the inherited value " + Shown(overridden->GetValue());
  }
  log_.Error(unit.Place(use.name),
             "the qualifier " + unit.Quoted(use.name) + problem + ", which has the flavor DisableOverride");
  return false;
}

std::vector<TQualifierDefinition> TQualifierTable::Resolve(const TSchemaUnit& unit, Mof::TRange uses,
                                                           const TQualifiedElement& element) {
  std::vector<TQualifierDefinition> definitions;
  if (uses.count > limits_.qualifiersPerElement) {
    log_.Error(unit.Place(unit.file->uses[uses.first + limits_.qualifiersPerElement].name),
               "found " + std::to_string(uses.count) + " qualifiers on one element, expected at most " +
                   std::to_string(limits_.qualifiersPerElement));
    return definitions;
  }
  definitions.reserve(uses.count);
  const Mof::TQualifierUse* first = unit.file->uses.data() + uses.first;
  for (const Mof::TQualifierUse* use = first; use != first + uses.count; ++use) {
    const std::string_view name = unit.Text(use->name);
    const auto same = [&](const Mof::TQualifierUse& other) { return EqualNames(unit.Text(other.name), name); };
    if (std::any_of(first, use, same)) {
      log_.Error(unit.Place(use->name), "the qualifier " + unit.Quoted(use->name) + " is given twice for one element");
      continue;
    }
    const TDeclaredQualifier* declared = Find(unit, use->name);
    if (declared == nullptr || !HasScope(unit, *use, *declared, element.scope)) continue;
    TQualifierDefinition definition;
    const TQualifierFlavor flavor = FlavorOf(use->flavors, declared->flavor);
    const bool isKept = element.keeps == EKeptValues::kAll ||
                        (element.keeps == EKeptValues::kFixed && (IsFixed(flavor) || Inherits(element, name)));
    if (!ReadValue(unit, *use, *declared, isKept, definition) || !isKept) continue;
    definition.name = name;
    definition.flavor = flavor;
    if (element.keeps == EKeptValues::kAll || unit.source->IsHidden()) definition.location = unit.Locate(use->name);
    if (MayOverride(unit, *use, *declared, definition, element.inherited)) definitions.push_back(std::move(definition));
  }
  return definitions;
}

}  // namespace velhost
