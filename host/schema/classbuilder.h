// Builds the classes of a namespace from class declarations: superclasses first, whatever their order in the text.
//
// A class whose superclass is missing, part of a circle or too deep is checked as far as possible and left out, and so
// are the classes below it; only the first of them is reported.
#pragma once

#include <boost/shared_ptr.hpp>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "host/model/cimnamespace.h"
#include "host/schema/mofvalue.h"
#include "host/schema/qualifiertable.h"
#include "host/schema/schemaload.h"

namespace velhost {

/// A method as a class declares it. Nothing calls methods; they are only kept while a schema is read, to check the
/// methods that override them.
struct TMethod {
  TSchemaUnit unit;
  const Mof::TFeature* syntax;
  std::string_view declaringClass;
  const TMethod* overridden;              ///< null for a new method
  TQualifierSet qualifiers;               ///< includes inherited ones, as far as their values are kept
  std::vector<TQualifierSet> parameters;  ///< the qualifiers of each parameter, in order
};
using TMethods = std::unordered_map<std::string_view, TMethod, TNameHash, TNameEqual>;

/// A default whose content can be checked once all classes are known.
struct TStringDefault {
  TSchemaUnit unit;
  Mof::TInitializer value;
  const boost::shared_ptr<TCIMClass>* cimClass;  ///< points to null if the class cannot be built
  std::string_view property;
};

class TClassBuilder {
 public:
  /// Registers all class declarations. A second declaration of a name is an error. `schema` and `qualifiers` (with
  /// all declarations already in it) must outlive this. `methodValues` says which values of method qualifiers are
  /// kept.
  TClassBuilder(const TParsedSchema& schema, TQualifierTable& qualifiers, const TSchemaLimits& limits, TSchemaLog& log,
                EKeptValues methodValues = EKeptValues::kFixed);

  /// Adds all classes that can be resolved to `cimNamespace`, in declaration order.
  void Build(TNamespace& cimNamespace);

  /// Returns whether the class is declared; reports it if not.
  bool CheckClassName(TSchemaPlace place, std::string_view name);
  /// The aliases used in property defaults.
  const std::vector<TAliasUse>& Aliases() const { return aliases_; }
  /// The defaults of string properties, some of which hold MOF.
  const std::vector<TStringDefault>& StringDefaults() const { return stringDefaults_; }

 private:
  friend struct TSchemaTestPeer;

  /// kOpen: in the superclass chain being walked.
  enum class EState { kNew, kOpen, kDone };
  struct TEntry {
    TSchemaUnit unit;
    const Mof::TClassSyntax* syntax;
    std::size_t order;  // position among all declarations
    TEntry* above;      // the superclass; null if there is none, and until all declarations are known
    EState state;
    std::size_t depth;                   // 1 for a root class
    std::uint32_t scope;                 // class, association or indication
    boost::shared_ptr<TCIMClass> built;  // null if it cannot be resolved
    TMethods methods;
  };

  void Collect(const TParsedSchema& schema);
  void FindSuperClasses();
  TEntry* Find(std::string_view name);
  std::vector<TEntry*> OpenChain(TEntry& entry);
  /// Reports a circle once, at the class that closes it.
  void ReportCircle(const std::vector<TEntry*>& chain, const TEntry& again);
  void BuildOne(TEntry& entry, TNamespace& cimNamespace);
  bool MayDerive(TEntry& entry, const TEntry* superEntry);
  void AddTo(TNamespace& cimNamespace, TEntry& entry, TClassDefinition definition);
  void CountEntries(const TCIMClass& built, const TCIMClass* superClass);
  /// The scope that the qualifiers of a class must allow: class, association or indication.
  std::uint32_t ScopeOf(const TEntry& entry, const TCIMClass* superClass) const;
  /// `above` is the superclass if it could be resolved.
  void AddFeatures(TEntry& entry, const TEntry* above, TClassDefinition& definition);
  void AddProperty(const TEntry& entry, const Mof::TFeature& feature, const TCIMClass* superClass,
                   TClassDefinition& definition);
  /// Checks that the type is that of the overridden property; a reference may be narrowed to a subclass.
  bool CheckOverride(const TEntry& entry, const Mof::TFeature& feature, const TPropertyDefinition& definition,
                     const TPropertyDecl& overridden);
  bool Refines(std::string_view name, std::string_view ancestor);
  void ReadDefault(const TSchemaUnit& unit, const Mof::TFeature& feature, TPropertyDefinition& definition);
  void CheckReferences(const TEntry& entry);
  void CheckEmbedded(const TSchemaUnit& unit, const Mof::TFeature& feature);

  /// Checks that Override names an inherited element of the same name and kind.
  void CheckOverrideName(const TEntry& entry, const Mof::TFeature& feature, const TEntry* above);
  std::string OverrideProblem(bool isMethod, std::string_view name, std::string_view qualification,
                              const TEntry& above);
  bool Exposes(const TEntry& entry, bool isMethod, std::string_view name);

  /// The method with that name, declared in the class or inherited; null if there is none.
  const TMethod* FindMethod(const TEntry* entry, std::string_view name);
  void AddMethod(TEntry& entry, const Mof::TFeature& feature, const TEntry* above);
  void AddParameters(TMethod& method);
  /// Checks that return type and parameters are those of the overridden method.
  void CheckSignature(const TMethod& method);
  void CheckParameter(const TMethod& method, std::uint32_t index);

  const EKeptValues methodValues_;
  const Mof::TNameSet& mentioned_;
  TQualifierTable& qualifiers_;
  const TSchemaLimits& limits_;
  TSchemaLog& log_;
  TValueReader values_;
  std::vector<TEntry> entries_;
  std::unordered_map<std::string_view, std::size_t, TNameHash, TNameEqual> byName_;
  std::vector<TAliasUse> aliases_;
  std::vector<TStringDefault> stringDefaults_;
  const bool isWhole_;            // whether the whole text could be read
  std::size_t modelEntries_ = 0;  // see TSchemaLimits
  bool isFull_ = false;           // that limit was exceeded, and this has been reported
};

}  // namespace velhost
