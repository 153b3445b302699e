#include "host/schema/classbuilder.h"

#include <algorithm>
#include <utility>

#include "host/schema/mofscan.h"
#include "host/schema/schemaunit.h"

namespace velhost {

TClassBuilder::TClassBuilder(const TParsedSchema& schema, TQualifierTable& qualifiers, const TSchemaLimits& limits,
                             TSchemaLog& log, EKeptValues methodValues)
    : methodValues_(methodValues),
      mentioned_(schema.mentionedClasses),
      qualifiers_(qualifiers),
      limits_(limits),
      log_(log),
      values_(log),
      isWhole_(log.Errors() == 0) {
  Collect(schema);
  FindSuperClasses();
}

void TClassBuilder::FindSuperClasses() {
  for (TEntry& entry : entries_) {
    const std::string_view above = entry.unit.Text(entry.syntax->superClass);
    if (!above.empty()) entry.above = Find(above);
  }
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
      entries_.push_back({unit, &syntax, entries_.size(), nullptr, EState::kNew, 0, 0, {}, {}});
      continue;
    }
    const TEntry& first = entries_[known->second];
    const TSourceLocation place = first.unit.Locate(first.syntax->name);
    log_.Error(unit.Place(syntax.name), "the class " + unit.Quoted(syntax.name) + " is already declared in " +
                                            place.file + ":" + std::to_string(place.line));
  }
}

TClassBuilder::TEntry* TClassBuilder::Find(std::string_view name) {
  const auto found = byName_.find(name);
  return found == byName_.end() ? nullptr : &entries_[found->second];
}

bool TClassBuilder::CheckClassName(TSchemaPlace place, std::string_view name) {
  if (Find(name) != nullptr) return true;
  if (mentioned_.count(name) != 0) return false;
  TNameHint hint(name, log_.NameSearchSteps());
  if (log_.Shows()) {
    for (auto entry = entries_.begin(); entry != entries_.end() && hint.Wants(); ++entry) {
      if (!entry->unit.source->IsHidden()) hint.Offer(entry->unit.Text(entry->syntax->name));
    }
  }
  log_.Error(place, "the class " + Mof::Quoted(name) + " is not declared" + hint.Text());
  return false;
}

void TClassBuilder::Build(TNamespace& cimNamespace) {
  for (TEntry& entry : entries_) {
    limits_.CheckStop();
    const std::vector<TEntry*> chain = OpenChain(entry);
    for (auto link = chain.rbegin(); link != chain.rend(); ++link) BuildOne(**link, cimNamespace);
  }
}

// The class and its superclasses, up to one that is already done or is in the chain itself.
std::vector<TClassBuilder::TEntry*> TClassBuilder::OpenChain(TEntry& entry) {
  std::vector<TEntry*> chain;
  TEntry* link = &entry;
  while (link != nullptr && link->state == EState::kNew) {
    link->state = EState::kOpen;
    chain.push_back(link);
    link = link->above;
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
    const TSchemaUnit& unit = (*link)->unit;
    names += unit.source->IsHidden() ? "... : " : std::string(unit.Text((*link)->syntax->name)) + " : ";
  }
  if (static_cast<std::size_t>(chain.end() - start) > kShown) names += "... : ";
  names += again.unit.Text(again.syntax->name);
  log_.Error(again.unit.Place(again.syntax->superClass),
             "the class " + again.unit.Quoted(again.syntax->name) + " derives from itself (" + names + ")");
}

// Whether the class can be built on its superclass. A superclass that could not be resolved has been reported
// already.
bool TClassBuilder::MayDerive(TEntry& entry, const TEntry* superEntry) {
  const Mof::TSpan above = entry.syntax->superClass;
  if (above.begin == above.end) return true;
  if (superEntry == nullptr) return CheckClassName(entry.unit.Place(above), entry.unit.Text(above));
  if (superEntry->built && superEntry->depth == limits_.inheritanceDepth) {
    log_.Error(entry.unit.Place(above), "the class " + entry.unit.Quoted(entry.syntax->name) + " has " +
                                            std::to_string(superEntry->depth) + " superclasses, expected at most " +
                                            std::to_string(limits_.inheritanceDepth - 1));
  }
  return superEntry->built != nullptr && superEntry->depth < limits_.inheritanceDepth;
}

void TClassBuilder::BuildOne(TEntry& entry, TNamespace& cimNamespace) {
  const TEntry* superEntry = entry.above;
  const bool derives = MayDerive(entry, superEntry);
  const TCIMClass* superClass = derives && superEntry ? superEntry->built.get() : nullptr;
  entry.state = EState::kDone;
  entry.depth = superEntry ? superEntry->depth + 1 : 1;
  entry.scope = ScopeOf(entry, superClass);
  TClassDefinition definition;
  definition.name = entry.unit.Text(entry.syntax->name);
  definition.superClass = entry.unit.Text(entry.syntax->superClass);
  definition.location = entry.unit.Locate(entry.syntax->name);
  definition.qualifiers =
      qualifiers_.Resolve(entry.unit, entry.syntax->qualifiers,
                          {entry.scope, superClass ? &superClass->Qualifiers() : nullptr, EKeptValues::kAll});
  AddFeatures(entry, derives ? superEntry : nullptr, definition);
  if (!derives) return;
  CheckReferences(entry);
  AddTo(cimNamespace, entry, std::move(definition));
}

void TClassBuilder::AddTo(TNamespace& cimNamespace, TEntry& entry, TClassDefinition definition) {
  const TCIMClass* superClass = nullptr;
  if (entry.above != nullptr) superClass = entry.above->built.get();
  const std::size_t inherited = superClass ? superClass->Properties().size() : 0;
  if (inherited + definition.properties.size() > limits_.propertiesPerClass) {
    log_.Error(entry.unit.Place(entry.syntax->name),
               "the class " + entry.unit.Quoted(entry.syntax->name) + " has more than " +
                   std::to_string(limits_.propertiesPerClass) + " properties, including inherited ones");
    return;
  }
  if (modelEntries_ > limits_.modelEntries) {
    if (!isFull_) {
      log_.Error(entry.unit.Place(entry.syntax->name),
                 "the classes have more than " + std::to_string(limits_.modelEntries) +
                     " properties and qualifiers in all, including inherited ones");
    }
    isFull_ = true;
    return;
  }
  entry.built = cimNamespace.AddClass(std::move(definition), entry.order);
  CountEntries(*entry.built, superClass);
}

void TClassBuilder::CountEntries(const TCIMClass& built, const TCIMClass* superClass) {
  const auto& properties = built.Properties();
  const std::size_t inherited = superClass ? superClass->Properties().size() : 0;
  modelEntries_ += properties.size() + built.Qualifiers().All().size();
  for (std::size_t i = 0; i < properties.size(); ++i) {
    const bool own = i >= inherited || properties[i] != superClass->Properties()[i];
    if (own) modelEntries_ += properties[i]->Qualifiers().All().size();
  }
}

// A class is an association or indication by its own qualifier or that of a superclass.
std::uint32_t TClassBuilder::ScopeOf(const TEntry& entry, const TCIMClass* superClass) const {
  const auto is = [&](const char* name) {
    const Mof::TRange uses = entry.syntax->qualifiers;
    for (std::uint32_t i = 0; i < uses.count; ++i) {
      const Mof::TQualifierUse& use = entry.unit.file->uses[uses.first + i];
      if (!EqualNames(entry.unit.Text(use.name), name)) continue;
      return !use.value.given || use.value.isArray || !EqualNames(entry.unit.Text(use.value.span), "false");
    }
    const auto inherited = superClass ? superClass->Qualifiers().Find(name) : nullptr;
    return inherited && IsTrue(inherited->GetValue());
  };
  if (is("association")) return Mof::kScopeAssociation;
  return is("indication") ? Mof::kScopeIndication : Mof::kScopeClass;
}

}  // namespace velhost
