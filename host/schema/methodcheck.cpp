// Checks methods: each is declared once, and a subclass may change it as little as a property.
#include "host/base/text.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>
#include "host/schema/classbuilder.h"
#include "host/schema/mofscan.h"
#include "host/schema/seennames.h"

namespace velhost {

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
