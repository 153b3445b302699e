#include "host/schema/instancebuilder.h"

#include <cstdint>
#include <memory>
#include <utility>

#include "host/base/text.h"
#include "host/schema/mofscan.h"
#include "host/schema/schemaunit.h"

namespace velhost {

namespace {
const TPropertyMap kNoContext;
}

std::vector<boost::shared_ptr<TInstance>> TInstanceBuilder::Build() {
  std::vector<boost::shared_ptr<TInstance>> instances;
  for (const TSchemaDeclaration& declaration : schema_.declarations) {
    limits_.CheckStop();
    if (declaration.production.kind != Mof::EProduction::kInstance) continue;
    const Mof::TInstanceSyntax& syntax = declaration.unit.file->instances[declaration.production.index];
    NoteAlias(declaration.unit, syntax);
    if (auto instance = BuildOne(declaration.unit, syntax)) instances.push_back(std::move(instance));
  }
  CheckStringDefaults();
  uses_.insert(uses_.end(), classes_.Aliases().begin(), classes_.Aliases().end());
  for (const TAliasUse& use : uses_) CheckAlias(use);
  return instances;
}

void TInstanceBuilder::NoteAlias(const TSchemaUnit& unit, const Mof::TInstanceSyntax& syntax) {
  if (syntax.alias.begin == syntax.alias.end) return;
  if (!unit.source->IsHidden()) aliasNames_.push_back(unit.Text(syntax.alias));
  if (!aliases_.emplace(unit.Text(syntax.alias), namespace_.FindClass(unit.Text(syntax.className))).second) {
    log_.Error(unit.Place(syntax.alias), "the alias " + unit.Quoted(syntax.alias) + " is already declared");
  }
}

boost::shared_ptr<TInstance> TInstanceBuilder::BuildOne(const TSchemaUnit& unit, const Mof::TInstanceSyntax& syntax) {
  qualifiers_.Resolve(unit, syntax.qualifiers, {0, nullptr, EKeptValues::kNone});
  const std::string_view name = unit.Text(syntax.className);
  const auto cimClass = namespace_.FindClass(name);
  if (!cimClass) {
    classes_.CheckClassName(unit.Place(syntax.className), name);
    return {};
  }
  const auto abstract = cimClass->Qualifiers().Find("Abstract");
  if (abstract && IsTrue(abstract->GetValue())) {
    log_.Error(unit.Place(syntax.className),
               "the class " + unit.Quoted(syntax.className) + " is abstract, expected one that can have instances");
  }
  if (!HasRoom(unit, syntax, cimClass->Properties().size())) return {};
  auto instance = boost::dynamic_pointer_cast<TInstance>(cimClass->CreateInstance(kNoContext));
  TSeenNames names;
  for (std::uint32_t i = 0; i < syntax.assignments.count; ++i) {
    const Mof::TAssignment& assignment = unit.file->assignments[syntax.assignments.first + i];
    if (names.Add(unit.Text(assignment.name))) {
      Assign(unit, assignment, *instance);
    } else {
      log_.Error(unit.Place(assignment.name), "the property " + unit.Quoted(assignment.name) + " is set twice");
    }
  }
  return instance;
}

// An instance takes a few bytes of text, but as many values as its class has properties.
bool TInstanceBuilder::HasRoom(const TSchemaUnit& unit, const Mof::TInstanceSyntax& syntax, std::size_t properties) {
  if (room_ >= properties) {
    room_ -= properties;
    return true;
  }
  if (!full_) {
    log_.Error(unit.Place(syntax.className),
               "the instances have more than " + std::to_string(limits_.instanceValues) + " properties in all");
  }
  full_ = true;
  return false;
}

void TInstanceBuilder::Assign(const TSchemaUnit& unit, const Mof::TAssignment& assignment, TInstance& instance) {
  qualifiers_.Resolve(unit, assignment.qualifiers, {0, nullptr, EKeptValues::kNone});
  const TCIMClass& cimClass = instance.Class();
  const std::size_t index = cimClass.FindProperty(unit.Text(assignment.name));
  if (index == cimClass.Properties().size()) {
    ReportUnknownProperty(unit, assignment.name, cimClass);
    return;
  }
  const TPropertyDefinition& property = cimClass.Properties()[index]->Definition();
  TCIMValue value;
  const TValueSlot slot = {property.type.GetCode(), property.isArray, property.arraySize, {}};
  if (values_.Read(unit, assignment.value, slot, value)) {
    instance.SetProperty(property.name, value, kNoContext);
    CheckEmbedded(unit, assignment.value, *cimClass.Properties()[index]);
  }
  for (const Mof::TSpan span : values_.TakeAliases()) {
    uses_.push_back({unit.Place(span), std::string(unit.Text(span)), property.referenceClass});
  }
}

void TInstanceBuilder::ReportUnknownProperty(const TSchemaUnit& unit, Mof::TSpan name, const TCIMClass& cimClass) {
  TNameHint hint(unit.Text(name), log_.NameSearchSteps());
  if (log_.Shows()) OfferProperties(cimClass, log_, hint);
  log_.Error(unit.Place(name),
             "the class " + SingleQuoted(cimClass.Name()) + " has no property " + unit.Quoted(name) + hint.Text());
}

// An alias must name an instance of the reference's class or of a subclass.
void TInstanceBuilder::CheckAlias(const TAliasUse& use) {
  const auto alias = aliases_.find(use.name);
  if (alias == aliases_.end()) {
    TNameHint hint(use.name, log_.NameSearchSteps());
    if (log_.Shows()) {
      for (std::size_t i = 0; i < aliasNames_.size() && hint.Wants(); ++i) hint.Offer(aliasNames_[i]);
    }
    log_.Error(use.place, "the alias " + Mof::Quoted(use.name) + " is not declared" + hint.Text());
    return;
  }
  const auto expected = namespace_.FindClass(use.referenceClass);
  const auto& found = alias->second;
  if (!expected || !found || found == expected || found->DescendsFrom(*expected)) return;
  const auto nameOf = [this](const TCIMClass& cimClass) {
    return log_.Hides(cimClass.Location().file) ? std::string("another class") : SingleQuoted(cimClass.Name());
  };
  log_.Error(use.place, "the alias " + Mof::Quoted(use.name) + " is an instance of " + nameOf(*found) +
                            ", expected one of " + nameOf(*expected) + " or of a subclass");
}

}  // namespace velhost
