#include "host/schema/classbuilder.h"

#include <algorithm>

#include "host/schema/mofscan.h"
#include "host/schema/namehint.h"
#include "host/schema/seennames.h"

namespace NKROVEL20 {

TClassBuilder::TClassBuilder(const TParsedSchema& schema, TQualifierTable& qualifiers, const TSchemaLimits& limits,
                             TSchemaLog& log)
    : mentioned_(schema.mentionedClasses), qualifiers_(qualifiers), limits_(limits), log_(log), values_(log) {
  Collect(schema);
}

void TClassBuilder::Collect(const TParsedSchema& schema) {
  for (const TSchemaDeclaration& declaration : schema.declarations) {
    if (declaration.production.kind != Mof::EProduction::kClass) continue;
    const TSchemaUnit& unit = declaration.unit;
    const Mof::TClassSyntax& syntax = unit.file->classes[declaration.production.index];
    if (entries_.size() == limits_.classes) {
      log_.Error(unit.Place(syntax.name), "the schema has more than " + std::to_string(limits_.classes) + " classes");
      return;
    }
    const auto [known, isNew] = byName_.emplace(unit.Text(syntax.name), entries_.size());
    if (isNew) {
      entries_.push_back({unit, &syntax, entries_.size(), EState::kNew, 0, {}});
      continue;
    }
    const TEntry& first = entries_[known->second];
    const TSourceLocation place = first.unit.Locate(first.syntax->name);
    log_.Error(unit.Place(syntax.name), "the class " + unit.Quoted(syntax.name) +
                                            " is declared a second time, first in " + place.file + ":" +
                                            std::to_string(place.line));
  }
}

TClassBuilder::TEntry* TClassBuilder::Find(std::string_view name) {
  const auto found = byName_.find(name);
  return found == byName_.end() ? nullptr : &entries_[found->second];
}

bool TClassBuilder::CheckClassName(TSchemaPlace place, std::string_view name) {
  if (Find(name) != nullptr) return true;
  if (mentioned_.count(name) != 0) return false;
  TNameHint hint(name);
  if (log_.Shows()) {
    for (const TEntry& entry : entries_) hint.Offer(entry.unit.Text(entry.syntax->name));
  }
  log_.Error(place, "the class " + Mof::Quoted(name) + " is not declared" + hint.Text());
  return false;
}

void TClassBuilder::Build(TNamespace& cimNamespace) {
  for (TEntry& entry : entries_) {
    const std::vector<TEntry*> chain = OpenChain(entry);
    for (auto link = chain.rbegin(); link != chain.rend(); ++link) BuildOne(**link, cimNamespace);
  }
}

// The class and its superclasses up to one that is done already, or that is in the chain too.
std::vector<TClassBuilder::TEntry*> TClassBuilder::OpenChain(TEntry& entry) {
  std::vector<TEntry*> chain;
  TEntry* link = &entry;
  while (link != nullptr && link->state == EState::kNew) {
    link->state = EState::kOpen;
    chain.push_back(link);
    const std::string_view above = link->unit.Text(link->syntax->superClass);
    link = above.empty() ? nullptr : Find(above);
  }
  if (link != nullptr && link->state == EState::kOpen) ReportCircle(chain, *link);
  return chain;
}

void TClassBuilder::ReportCircle(const std::vector<TEntry*>& chain, const TEntry& again) {
  constexpr std::size_t kShown = 8;
  const auto start = std::find(chain.begin(), chain.end(), &again);
  std::string names;
  std::size_t count = 0;
  for (auto link = start; link != chain.end() && count < kShown; ++link, ++count) {
    names += std::string((*link)->unit.Text((*link)->syntax->name)) + " : ";
  }
  if (static_cast<std::size_t>(chain.end() - start) > kShown) names += "... : ";
  names += again.unit.Text(again.syntax->name);
  log_.Error(again.unit.Place(again.syntax->superClass),
             "the class " + again.unit.Quoted(again.syntax->name) + " derives from itself (" + names + ")");
}

// Whether the superclass is there. One that could not be resolved has been reported itself.
bool TClassBuilder::MayDerive(TEntry& entry, const TEntry* superEntry) {
  const Mof::TSpan above = entry.syntax->superClass;
  if (above.begin == above.end) return true;
  if (superEntry == nullptr) return CheckClassName(entry.unit.Place(above), entry.unit.Text(above));
  if (superEntry->built && superEntry->depth == limits_.inheritanceDepth) {
    log_.Error(entry.unit.Place(above), "the class " + entry.unit.Quoted(entry.syntax->name) + " stands below " +
                                            std::to_string(superEntry->depth) + " others, expected at most " +
                                            std::to_string(limits_.inheritanceDepth - 1));
  }
  return superEntry->built != nullptr && superEntry->depth < limits_.inheritanceDepth;
}

void TClassBuilder::BuildOne(TEntry& entry, TNamespace& cimNamespace) {
  const std::string_view above = entry.unit.Text(entry.syntax->superClass);
  const TEntry* superEntry = above.empty() ? nullptr : Find(above);
  const bool derives = MayDerive(entry, superEntry);
  const TCIMClass* superClass = derives && superEntry ? superEntry->built.get() : nullptr;
  entry.state = EState::kDone;
  entry.depth = superEntry ? superEntry->depth + 1 : 1;
  TClassDefinition definition;
  definition.name = entry.unit.Text(entry.syntax->name);
  definition.superClass = above;
  definition.location = entry.unit.Locate(entry.syntax->name);
  definition.qualifiers =
      qualifiers_.Resolve(entry.unit, entry.syntax->qualifiers,
                          {ScopeOf(entry, superClass), superClass ? &superClass->Qualifiers() : nullptr, true});
  AddFeatures(entry, superClass, definition);
  if (derives) AddTo(cimNamespace, entry, std::move(definition));
}

void TClassBuilder::AddTo(TNamespace& cimNamespace, TEntry& entry, TClassDefinition definition) {
  const TCIMClass* superClass = nullptr;
  if (const TEntry* superEntry = Find(definition.superClass)) superClass = superEntry->built.get();
  const std::size_t inherited = superClass ? superClass->Properties().size() : 0;
  if (inherited + definition.properties.size() > limits_.propertiesPerClass) {
    log_.Error(entry.unit.Place(entry.syntax->name),
               "the class " + entry.unit.Quoted(entry.syntax->name) + " has more than " +
                   std::to_string(limits_.propertiesPerClass) + " properties, inherited ones included");
    return;
  }
  if (modelEntries_ > limits_.modelEntries) {
    if (modelEntries_ != SIZE_MAX) {
      log_.Error(entry.unit.Place(entry.syntax->name),
                 "the classes have more than " + std::to_string(limits_.modelEntries) +
                     " properties and qualifiers in all, inherited ones included");
    }
    modelEntries_ = SIZE_MAX;
    return;
  }
  entry.built = cimNamespace.AddClass(std::move(definition), entry.order);
  const auto& properties = entry.built->Properties();
  modelEntries_ += properties.size() + entry.built->Qualifiers().All().size();
  for (std::size_t i = 0; i < properties.size(); ++i) {
    const bool own = i >= inherited || properties[i] != superClass->Properties()[i];
    if (own) modelEntries_ += properties[i]->Qualifiers().All().size();
  }
}

// A class is an association or indication by a qualifier of its own or of a superclass.
std::uint32_t TClassBuilder::ScopeOf(const TEntry& entry, const TCIMClass* superClass) const {
  const auto is = [&](const char* name) {
    const Mof::TRange uses = entry.syntax->qualifiers;
    for (std::uint32_t i = 0; i < uses.count; ++i) {
      const Mof::TQualifierUse& use = entry.unit.file->uses[uses.first + i];
      if (!EqualNames(entry.unit.Text(use.name), name)) continue;
      return !use.value.given || use.value.isArray || !EqualNames(entry.unit.Text(use.value.span), "false");
    }
    const auto inherited = superClass ? superClass->Qualifiers().Find(name) : nullptr;
    return inherited && inherited->GetValue().ToString(10) == "true";
  };
  if (is("association")) return Mof::kScopeAssociation;
  return is("indication") ? Mof::kScopeIndication : Mof::kScopeClass;
}

void TClassBuilder::AddFeatures(const TEntry& entry, const TCIMClass* superClass, TClassDefinition& definition) {
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
    } else if (feature.isMethod) {
      CheckMethod(entry, feature);
    } else {
      AddProperty(entry, feature, superClass, definition);
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
                                             overridden ? &overridden->Qualifiers() : nullptr, true});
  CheckEmbedded(unit, feature);
  ReadDefault(unit, feature, {feature.type.code, feature.array.isArray, feature.array.size}, property);
  if (overridden != nullptr && !CheckOverride(entry, feature, property, *overridden)) return;
  definition.properties.push_back(std::move(property));
}

void TClassBuilder::ReadDefault(const TSchemaUnit& unit, const Mof::TFeature& feature, const TValueSlot& slot,
                                TPropertyDefinition& definition) {
  if (!feature.value.given) return;
  values_.Read(unit, feature.value, slot, definition.defaultValue);
  for (const Mof::TSpan span : values_.TakeAliases()) aliases_.push_back({unit, span, definition.referenceClass});
}

// The class whose instances a string holds as text.
void TClassBuilder::CheckEmbedded(const TSchemaUnit& unit, const Mof::TFeature& feature) {
  for (std::uint32_t i = 0; i < feature.qualifiers.count; ++i) {
    const Mof::TQualifierUse& use = unit.file->uses[feature.qualifiers.first + i];
    if (!EqualNames(unit.Text(use.name), "EmbeddedInstance") || !use.value.given || use.value.isArray) continue;
    const Mof::TLiteral& literal = unit.file->literals[use.value.literals.first];
    if (literal.kind == Mof::ELiteral::kString) CheckClassName(unit.Place(literal.span), StringOf(unit, literal));
  }
}

// Whether `name` is the class `ancestor` or declared below it.
bool TClassBuilder::Refines(std::string_view name, std::string_view ancestor) {
  std::size_t steps = 0;
  for (TEntry* link = Find(name); link != nullptr && steps <= limits_.inheritanceDepth; ++steps) {
    if (EqualNames(link->unit.Text(link->syntax->name), ancestor)) return true;
    link = Find(link->unit.Text(link->syntax->superClass));
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
    return NameOf({property.type.GetCode(), property.isArray, 0});
  };
  log_.Error(entry.unit.Place(feature.name), "the property " + entry.unit.Quoted(feature.name) + " has the type " +
                                                 typeName(definition) + ", expected " + typeName(before) +
                                                 " as in the class '" + overridden.DeclaringClass() +
                                                 "', whose property it overrides");
  return false;
}

// Methods are checked and not kept: nothing calls them.
void TClassBuilder::CheckMethod(const TEntry& entry, const Mof::TFeature& feature) {
  const TSchemaUnit& unit = entry.unit;
  qualifiers_.Resolve(unit, feature.qualifiers, {Mof::kScopeMethod, nullptr, false});
  CheckEmbedded(unit, feature);
  TSeenNames names;
  for (std::uint32_t i = 0; i < feature.parameters.count; ++i) {
    const Mof::TFeature& parameter = unit.file->parameters[feature.parameters.first + i];
    if (!names.Add(unit.Text(parameter.name))) {
      log_.Error(unit.Place(parameter.name), "the parameter " + unit.Quoted(parameter.name) +
                                                 " is declared twice in the method " + unit.Quoted(feature.name));
    }
    qualifiers_.Resolve(unit, parameter.qualifiers, {Mof::kScopeParameter, nullptr, false});
    CheckEmbedded(unit, parameter);
    if (parameter.type.code == TCIMValue::TCIMType::kReference) {
      CheckClassName(unit.Place(parameter.type.span), unit.Text(parameter.type.span));
    }
  }
}

}  // namespace NKROVEL20
