#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "host/base/text.h"
#include "host/schema/classbuilder.h"
#include "host/schema/mofscan.h"
#include "host/schema/schemaunit.h"

// The qualifier Override: which inherited element it names.
namespace velhost {

namespace {

// The string value of Override on the element; null if there is none.
const Mof::TLiteral* OverrideOf(const TSchemaUnit& unit, const Mof::TFeature& feature) {
  for (std::uint32_t i = 0; i < feature.qualifiers.count; ++i) {
    const Mof::TQualifierUse& use = unit.file->uses[feature.qualifiers.first + i];
    if (!EqualNames(unit.Text(use.name), "Override") || !use.value.given || use.value.isArray) continue;
    const Mof::TLiteral& literal = unit.file->literals[use.value.literals.first];
    return literal.kind == Mof::ELiteral::kString ? &literal : nullptr;
  }
  return nullptr;
}

const char* KindOf(bool isMethod) { return isMethod ? "method" : "property"; }

}  // namespace

void TClassBuilder::CheckOverrideName(const TEntry& entry, const Mof::TFeature& feature, const TEntry* above) {
  const TSchemaUnit& unit = entry.unit;
  const Mof::TLiteral* literal = OverrideOf(unit, feature);
  // If the superclass could not be resolved, nothing is known about the inherited elements.
  const bool isRoot = entry.syntax->superClass.begin == entry.syntax->superClass.end;
  if (literal == nullptr || (above == nullptr && !isRoot)) return;
  const std::string text = StringOf(unit, *literal);
  const std::size_t dot = text.rfind('.');
  const std::string_view name = std::string_view(text).substr(dot == std::string::npos ? 0 : dot + 1);
  const std::string subject = std::string("the ") + KindOf(feature.isMethod) + " " + unit.Quoted(feature.name);
  std::string problem;
  if (!EqualNames(name, unit.Text(feature.name))) {
    problem = " overrides " + Mof::Quoted(name) + ", expected " + unit.Quoted(feature.name) +
              "; only an element of the same name can be overridden";
  } else if (above == nullptr) {
    problem = " overrides nothing: the class " + unit.Quoted(entry.syntax->name) + " has no superclass";
  } else {
    problem =
        OverrideProblem(feature.isMethod, name, std::string_view(text).substr(0, text.size() - name.size()), *above);
  }
  if (!problem.empty()) log_.Error(unit.Place(literal->span), subject + problem);
}

// `qualification` is "CLASS." or empty.
std::string TClassBuilder::OverrideProblem(bool isMethod, std::string_view name, std::string_view qualification,
                                           const TEntry& above) {
  const TEntry* from = &above;
  if (!qualification.empty()) {
    const std::string_view className = qualification.substr(0, qualification.size() - 1);
    while (from != nullptr && !EqualNames(from->unit.Text(from->syntax->name), className)) {
      from = from->above;
    }
    if (from == nullptr) return " overrides nothing: no superclass is named " + Mof::Quoted(className);
  }
  if (Exposes(*from, isMethod, name)) return {};
  const std::string owner = from->unit.Quoted(from->syntax->name);
  if (Exposes(*from, !isMethod, name)) {
    return " overrides nothing: in the class " + owner + " this is a " + KindOf(!isMethod);
  }
  TNameHint hint(name, log_.NameSearchSteps());
  if (!isMethod && log_.Shows()) OfferProperties(*from->built, log_, hint);
  return " overrides nothing: the class " + owner + " has no " + KindOf(isMethod) + " of this name" + hint.Text();
}

bool TClassBuilder::Exposes(const TEntry& entry, bool isMethod, std::string_view name) {
  if (isMethod) return FindMethod(&entry, name) != nullptr;
  return entry.built->FindProperty(name) < entry.built->Properties().size();
}

// Checks methods: each is declared once, and a subclass may change it as little as a property.

namespace {

std::string TypeOf(const TSchemaUnit& unit, const Mof::TFeature& feature) {
  std::string suffix;
  if (feature.array.isArray) suffix = feature.array.size == 0 ? "[]" : "[" + std::to_string(feature.array.size) + "]";
  const bool isReference = feature.type.code == TCIMValue::TCIMType::kReference;
  return (isReference ? "reference to " + std::string(unit.Text(feature.type.span))
                      : TCIMValue::TCIMType(feature.type.code).ToString()) +
         suffix;
}

// " A as in the class B, whose method it overrides"
std::string AsIn(const TMethod& overridden, const std::string& what) {
  if (overridden.unit.source->IsHidden()) return " the same as in the method that it overrides";
  return " " + what + " as in the class " + Mof::Quoted(overridden.declaringClass) + ", whose method it overrides";
}

bool SameType(const Mof::TFeature& a, const Mof::TFeature& b) {
  return a.type.code == b.type.code && a.array.isArray == b.array.isArray && a.array.size == b.array.size;
}

}  // namespace

const TMethod* TClassBuilder::FindMethod(const TEntry* entry, std::string_view name) {
  for (; entry != nullptr; entry = entry->above) {
    const auto found = entry->methods.find(name);
    if (found != entry->methods.end()) return &found->second;
  }
  return nullptr;
}

void TClassBuilder::AddMethod(TEntry& entry, const Mof::TFeature& feature, const TEntry* above) {
  const TSchemaUnit& unit = entry.unit;
  TMethod method = {unit, &feature, unit.Text(entry.syntax->name), FindMethod(above, unit.Text(feature.name)), {}, {}};
  const TQualifierSet* inherited = method.overridden ? &method.overridden->qualifiers : nullptr;
  method.qualifiers = TQualifierSet(
      qualifiers_.Resolve(unit, feature.qualifiers, {Mof::kScopeMethod, inherited, methodValues_}), inherited);
  CheckEmbedded(unit, feature);
  AddParameters(method);
  if (method.overridden != nullptr) CheckSignature(method);
  modelEntries_ += method.qualifiers.All().size();
  for (const TQualifierSet& qualifiers : method.parameters) modelEntries_ += qualifiers.All().size();
  entry.methods.emplace(unit.Text(feature.name), std::move(method));
}

void TClassBuilder::AddParameters(TMethod& method) {
  const TSchemaUnit& unit = method.unit;
  const Mof::TRange range = method.syntax->parameters;
  method.parameters.reserve(range.count);
  TSeenNames names;
  for (std::uint32_t i = 0; i < range.count; ++i) {
    const Mof::TFeature& parameter = unit.file->parameters[range.first + i];
    if (!names.Add(unit.Text(parameter.name))) {
      log_.Error(unit.Place(parameter.name), "the parameter " + unit.Quoted(parameter.name) +
                                                 " is declared twice in the method " +
                                                 unit.Quoted(method.syntax->name));
    }
    const bool isInherited = method.overridden && i < method.overridden->parameters.size();
    const TQualifierSet* inherited = isInherited ? &method.overridden->parameters[i] : nullptr;
    method.parameters.emplace_back(
        qualifiers_.Resolve(unit, parameter.qualifiers, {Mof::kScopeParameter, inherited, methodValues_}), inherited);
    CheckEmbedded(unit, parameter);
    if (parameter.type.code == TCIMValue::TCIMType::kReference) {
      CheckClassName(unit.Place(parameter.type.span), unit.Text(parameter.type.span));
    }
  }
}

// A changed method is only a warning, because nothing here calls it.
void TClassBuilder::CheckSignature(const TMethod& method) {
  const TSchemaUnit& unit = method.unit;
  const Mof::TFeature& before = *method.overridden->syntax;
  if (!SameType(*method.syntax, before)) {
    log_.Warning(unit.Place(method.syntax->type.span),
                 "the method " + unit.Quoted(method.syntax->name) + " returns " + TypeOf(unit, *method.syntax) +
                     ", expected" + AsIn(*method.overridden, TypeOf(method.overridden->unit, before)));
  }
  const std::uint32_t count = method.syntax->parameters.count;
  if (count != before.parameters.count) {
    log_.Warning(unit.Place(method.syntax->name),
                 "the method " + unit.Quoted(method.syntax->name) + " has " + Counted(count, "parameter") +
                     ", expected" + AsIn(*method.overridden, std::to_string(before.parameters.count)));
    return;
  }
  for (std::uint32_t i = 0; i < count; ++i) CheckParameter(method, i);
}

void TClassBuilder::CheckParameter(const TMethod& method, std::uint32_t index) {
  const TSchemaUnit& unit = method.unit;
  const TSchemaUnit& unitBefore = method.overridden->unit;
  const Mof::TFeature& parameter = unit.file->parameters[method.syntax->parameters.first + index];
  const Mof::TFeature& before = unitBefore.file->parameters[method.overridden->syntax->parameters.first + index];
  if (SameType(parameter, before) && EqualNames(unit.Text(parameter.name), unitBefore.Text(before.name))) return;
  log_.Warning(
      unit.Place(parameter.type.span),
      "found the parameter " + unit.Quoted(parameter.name) + " of the type " + TypeOf(unit, parameter) + ", expected" +
          AsIn(*method.overridden, unitBefore.Quoted(before.name) + " of the type " + TypeOf(unitBefore, before)));
}

}  // namespace velhost
