// The features of a class: its properties and references.
#include "host/base/text.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>
#include "host/schema/classbuilder.h"
#include "host/schema/mofscan.h"
#include "host/schema/schemaunit.h"

namespace velhost {

void TClassBuilder::AddFeatures(TEntry& entry, const TEntry* above, TClassDefinition& definition) {
  const TSchemaUnit& unit = entry.unit;
  const Mof::TRange features = entry.syntax->features;
  definition.properties.reserve(features.count);
  TSeenNames properties;
  TSeenNames methods;
  for (std::uint32_t i = 0; i < features.count; ++i) {
    const Mof::TFeature& feature = unit.file->features[features.first + i];
    if (!(feature.isMethod ? methods : properties).Add(unit.Text(feature.name))) {
      log_.Error(unit.Place(feature.name), std::string(feature.isMethod ? "the method " : "the property ") +
                                               unit.Quoted(feature.name) + " is declared twice in the class " +
                                               unit.Quoted(entry.syntax->name));
      continue;
    }
    CheckOverrideName(entry, feature, above);
    if (feature.isMethod) {
      AddMethod(entry, feature, above);
    } else {
      AddProperty(entry, feature, above ? above->built.get() : nullptr, definition);
    }
  }
}

void TClassBuilder::AddProperty(const TEntry& entry, const Mof::TFeature& feature, const TCIMClass* superClass,
                                TClassDefinition& definition) {
  const TSchemaUnit& unit = entry.unit;
  TPropertyDefinition property;
  property.name = unit.Text(feature.name);
  property.type = feature.type.code;
  property.isArray = feature.array.isArray;
  property.arraySize = feature.array.size;
  property.location = unit.Locate(feature.name);
  const bool isReference = feature.type.code == TCIMValue::TCIMType::kReference;
  if (isReference) {
    property.referenceClass = unit.Text(feature.type.span);
    CheckClassName(unit.Place(feature.type.span), property.referenceClass);
  }
  const std::size_t index = superClass ? superClass->FindProperty(property.name) : 0;
  const bool overrides = superClass && index < superClass->Properties().size();
  const TPropertyDecl* overridden = overrides ? superClass->Properties()[index].get() : nullptr;
  property.qualifiers = qualifiers_.Resolve(unit, feature.qualifiers,
                                            {isReference ? Mof::kScopeReference : Mof::kScopeProperty,
                                             overridden ? &overridden->Qualifiers() : nullptr, EKeptValues::kAll});
  CheckEmbedded(unit, feature);
  ReadDefault(unit, feature, property);
  if (feature.value.given && feature.type.code == TCIMValue::TCIMType::kString) {
    stringDefaults_.push_back({unit, feature.value, &entry.built, unit.Text(feature.name)});
  }
  if (overridden != nullptr && !CheckOverride(entry, feature, property, *overridden)) return;
  definition.properties.push_back(std::move(property));
}

void TClassBuilder::ReadDefault(const TSchemaUnit& unit, const Mof::TFeature& feature,
                                TPropertyDefinition& definition) {
  if (!feature.value.given) return;
  const TValueSlot slot = {feature.type.code, feature.array.isArray, feature.array.size, {}};
  values_.Read(unit, feature.value, slot, definition.defaultValue);
  for (const Mof::TSpan span : values_.TakeAliases()) {
    aliases_.push_back({unit.Place(span), std::string(unit.Text(span)), unit.Text(feature.type.span)});
  }
}

// Checks that the class named by EmbeddedInstance exists, and that the element is a string.
void TClassBuilder::CheckEmbedded(const TSchemaUnit& unit, const Mof::TFeature& feature) {
  for (std::uint32_t i = 0; i < feature.qualifiers.count; ++i) {
    const Mof::TQualifierUse& use = unit.file->uses[feature.qualifiers.first + i];
    const bool isInstance = EqualNames(unit.Text(use.name), "EmbeddedInstance");
    if (!isInstance && !EqualNames(unit.Text(use.name), "EmbeddedObject")) continue;
    const Mof::TLiteral* literal =
        use.value.given && !use.value.isArray ? &unit.file->literals[use.value.literals.first] : nullptr;
    if (isInstance && literal != nullptr && literal->kind == Mof::ELiteral::kString) {
      CheckClassName(unit.Place(literal->span), StringOf(unit, *literal));
    }
    if (feature.type.code == TCIMValue::TCIMType::kString) continue;
    log_.Error(unit.Place(use.name), "the qualifier " + unit.Quoted(use.name) + " is on an element of type " +
                                         NameOf({feature.type.code, feature.array.isArray, 0, {}}) +
                                         ", expected string");
  }
}

// Only associations have references, and each has at least two.
void TClassBuilder::CheckReferences(const TEntry& entry) {
  std::size_t count = 0;
  for (std::uint32_t i = 0; i < entry.syntax->features.count; ++i) {
    const Mof::TFeature& feature = entry.unit.file->features[entry.syntax->features.first + i];
    if (feature.isMethod || feature.type.code != TCIMValue::TCIMType::kReference) continue;
    ++count;
    if (entry.scope == Mof::kScopeAssociation) continue;
    log_.Warning(entry.unit.Place(feature.type.span), "found the reference " + entry.unit.Quoted(feature.name) +
                                                          " in the class " + entry.unit.Quoted(entry.syntax->name) +
                                                          ", expected it in an association");
  }
  const bool isRoot = entry.syntax->superClass.begin == entry.syntax->superClass.end;
  if (!isWhole_ || entry.scope != Mof::kScopeAssociation || !isRoot || count >= 2) return;
  log_.Warning(entry.unit.Place(entry.syntax->name), "the association " + entry.unit.Quoted(entry.syntax->name) +
                                                         " has " + (count == 0 ? "no reference" : "one reference") +
                                                         ", expected at least two");
}

// Whether `name` is the class `ancestor` or a class below it.
bool TClassBuilder::Refines(std::string_view name, std::string_view ancestor) {
  std::size_t steps = 0;
  for (const TEntry* link = Find(name); link != nullptr && steps <= limits_.inheritanceDepth; ++steps) {
    if (EqualNames(link->unit.Text(link->syntax->name), ancestor)) return true;
    link = link->above;
  }
  return false;
}

bool TClassBuilder::CheckOverride(const TEntry& entry, const Mof::TFeature& feature,
                                  const TPropertyDefinition& definition, const TPropertyDecl& overridden) {
  const TPropertyDefinition& before = overridden.Definition();
  const bool sameType = before.type == definition.type && before.isArray == definition.isArray;
  const bool isReference = definition.type == TCIMValue::TCIMType::kReference;
  if (sameType && (!isReference || Refines(definition.referenceClass, before.referenceClass) ||
                   Find(definition.referenceClass) == nullptr)) {
    return true;
  }
  const auto typeName = [](const TPropertyDefinition& property) {
    if (property.type == TCIMValue::TCIMType::kReference) return "reference to " + property.referenceClass;
    return NameOf({property.type.GetCode(), property.isArray, 0, {}});
  };
  const std::string expected = log_.Hides(before.location.file)
                                   ? "that"
                                   : typeName(before) + " as in the class " + SingleQuoted(overridden.DeclaringClass());
  log_.Error(
      entry.unit.Place(feature.name),
      "the property " + entry.unit.Quoted(feature.name) + " has the type " + typeName(definition) + ", expected " +
          expected +
          (log_.Hides(before.location.file) ? " of the property that it overrides" : ", whose property it overrides"));
  return false;
}

}  // namespace velhost
