// Class declarations as classes of a namespace: superclasses first, whatever the order of the text.
//
// A class whose superclass is missing, in a circle or too deep is checked as far as it can be and
// left out, and so is what stands below it; only the first of them is reported.
#pragma once

#include <boost/shared_ptr.hpp>
#include <cstdint>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "host/core/cimnamespace.h"
#include "host/schema/mofvalue.h"
#include "host/schema/qualifiertable.h"
#include "host/schema/schemaload.h"

namespace NKROVEL20 {

class TClassBuilder {
 public:
  /// Notes all class declarations. A second one of a name is an error. `schema` and `qualifiers` (all
  /// of them declared) must outlive this.
  TClassBuilder(const TParsedSchema& schema, TQualifierTable& qualifiers, const TSchemaLimits& limits, TSchemaLog& log);

  /// All classes that can be resolved, into `cimNamespace`, in declaration order.
  void Build(TNamespace& cimNamespace);

  /// Reports a class name that no declaration has.
  bool CheckClassName(TSchemaPlace place, std::string_view name);
  /// The aliases that property defaults use.
  const std::vector<TAliasUse>& Aliases() const { return aliases_; }

 private:
  /// kOpen: in the chain of superclasses that is being walked.
  enum class EState { kNew, kOpen, kDone };
  struct TEntry {
    TSchemaUnit unit;
    const Mof::TClassSyntax* syntax;
    std::size_t order;  // place among all declarations
    EState state;
    std::size_t depth;                   // 1 for a root class
    boost::shared_ptr<TCIMClass> built;  // null where it cannot be resolved
  };

  void Collect(const TParsedSchema& schema);
  TEntry* Find(std::string_view name);
  std::vector<TEntry*> OpenChain(TEntry& entry);
  /// One error for a circle: at the class that the walk met again.
  void ReportCircle(const std::vector<TEntry*>& chain, const TEntry& again);
  void BuildOne(TEntry& entry, TNamespace& cimNamespace);
  bool MayDerive(TEntry& entry, const TEntry* superEntry);
  void AddTo(TNamespace& cimNamespace, TEntry& entry, TClassDefinition definition);
  /// What a class is to the scope of its qualifiers: class, association or indication.
  std::uint32_t ScopeOf(const TEntry& entry, const TCIMClass* superClass) const;
  void AddFeatures(const TEntry& entry, const TCIMClass* superClass, TClassDefinition& definition);
  void AddProperty(const TEntry& entry, const Mof::TFeature& feature, const TCIMClass* superClass,
                   TClassDefinition& definition);
  void CheckMethod(const TEntry& entry, const Mof::TFeature& feature);
  /// Whether the type is the overridden property's; a reference may be narrowed to a subclass.
  bool CheckOverride(const TEntry& entry, const Mof::TFeature& feature, const TPropertyDefinition& definition,
                     const TPropertyDecl& overridden);
  bool Refines(std::string_view name, std::string_view ancestor);
  void ReadDefault(const TSchemaUnit& unit, const Mof::TFeature& feature, const TValueSlot& slot,
                   TPropertyDefinition& definition);
  void CheckEmbedded(const TSchemaUnit& unit, const Mof::TFeature& feature);

  const Mof::TNameSet& mentioned_;
  TQualifierTable& qualifiers_;
  const TSchemaLimits& limits_;
  TSchemaLog& log_;
  TValueReader values_;
  std::vector<TEntry> entries_;
  std::unordered_map<std::string_view, std::size_t, TNameHash, TNameEqual> byName_;
  std::vector<TAliasUse> aliases_;
  std::size_t modelEntries_ = 0;  // see TSchemaLimits; SIZE_MAX once it was exceeded and reported
};

}  // namespace NKROVEL20
