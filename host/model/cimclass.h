// Classes of the host's object model, with their properties and qualifiers: first as a schema declares them (plain data
// passed from a schema reader to the object model), then as the collector sees them, inherited ones included.
#pragma once

#include <boost/enable_shared_from_this.hpp>
#include <boost/shared_ptr.hpp>
#include <boost/weak_ptr.hpp>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "host/base/api.h"
#include "host/base/names.h"
#include "host/base/textdiagnostic.h"
#include "nkrovel20/icimobjects.h"
#include "nkrovel20/tcimvalue.h"

namespace velhost {

struct TQualifierFlavor {
  bool overridable = true;  ///< EnableOverride or DisableOverride
  bool toSubclass = true;   ///< ToSubclass or Restricted
  bool translatable = false;
};

struct TQualifierDefinition {
  std::string name;
  TCIMValue value;
  TQualifierFlavor flavor;
  TSourceLocation location;
  bool isDefault = false;  ///< the value is the default from the qualifier's declaration
};

struct TPropertyDefinition {
  std::string name;
  TCIMValue::TCIMType type = TCIMValue::TCIMType::kNone;
  bool isArray = false;
  std::uint32_t arraySize = 0;  ///< N of "[N]"; 0 for "[]" and scalars
  std::string referenceClass;   ///< only for references
  TCIMValue defaultValue;       ///< null if the schema has none
  std::vector<TQualifierDefinition> qualifiers;
  TSourceLocation location;
};

struct TClassDefinition {
  std::string name;
  std::string superClass;  ///< empty for a root class
  std::vector<TQualifierDefinition> qualifiers;
  std::vector<TPropertyDefinition> properties;
  TSourceLocation location;
};

class VELHOST_API TQualifier : public ICIMQualifier {
 public:
  explicit TQualifier(TQualifierDefinition definition) : definition_(std::move(definition)) {}
  const TCIMValue& GetValue() const override { return definition_.value; }
  const std::string& Name() const { return definition_.name; }
  const TQualifierFlavor& Flavor() const { return definition_.flavor; }
  bool IsDefault() const { return definition_.isDefault; }
  const TSourceLocation& Location() const { return definition_.location; }

 private:
  TQualifierDefinition definition_;
};

/// The qualifiers of one element: its own, then those it inherits.
class VELHOST_API TQualifierSet {
 public:
  TQualifierSet() = default;
  /// `own` in declaration order, followed by those of `inherited` that propagate (flavor ToSubclass) and are
  /// not redeclared.
  TQualifierSet(std::vector<TQualifierDefinition> own, const TQualifierSet* inherited);

  /// Looks up a qualifier by name, ignoring case; empty if there is none.
  boost::shared_ptr<const TQualifier> Find(const std::string& name) const;
  const std::vector<boost::shared_ptr<const TQualifier>>& All() const { return qualifiers_; }

 private:
  std::vector<boost::shared_ptr<const TQualifier>> qualifiers_;
};

class TCIMClass;
class TNamespace;

/// One property as seen from one class: the most derived declaration, with the class that first declared the
/// name as its origin.
class VELHOST_API TPropertyDecl : public ICIMPropertyDecl {
 public:
  /// `overridden` is the superclass's view of the same property, or null if it is new.
  TPropertyDecl(TPropertyDefinition definition, const boost::shared_ptr<TCIMClass>& declaringClass,
                const TPropertyDecl* overridden);

  const std::string& GetName(const TPropertyMap& context) const override;
  boost::shared_ptr<const ICIMQualifier> GetQualifier(const std::string& name,
                                                      const TPropertyMap& context) const override;
  TCIMValue::TCIMType GetType(const TPropertyMap& context) const override;
  boost::shared_ptr<ICIMClass> GetClassOrigin(const TPropertyMap& context) const override;

  /// Excluding its qualifiers, which are in Qualifiers() together with the inherited ones.
  const TPropertyDefinition& Definition() const { return definition_; }
  const TQualifierSet& Qualifiers() const { return qualifiers_; }
  /// The class with this declaration; differs from the origin if it overrides an inherited property.
  const std::string& DeclaringClass() const { return *declaringClass_; }

 private:
  TPropertyDefinition definition_;
  TQualifierSet qualifiers_;
  std::shared_ptr<const std::string> declaringClass_;  // shared by thousands of properties
  boost::weak_ptr<TCIMClass> origin_;
};

class VELHOST_API TCIMClass : public ICIMClass, public boost::enable_shared_from_this<TCIMClass> {
 public:
  using TPropertyDecls = std::vector<boost::shared_ptr<TPropertyDecl>>;

  /// Use TNamespace::AddClass. The class does not keep its namespace alive.
  TCIMClass(TClassDefinition definition, boost::shared_ptr<TCIMClass> superClass,
            boost::weak_ptr<TNamespace> cimNamespace);
  /// Determines the own and inherited properties. Call it once, after construction: it uses shared_from_this.
  void ResolveProperties();

  const std::string& GetName(const TPropertyMap& context) const override;
  boost::shared_ptr<const ICIMQualifier> GetQualifier(const std::string& name,
                                                      const TPropertyMap& context) const override;
  boost::shared_ptr<ICIMClass> GetSuperClass(const TPropertyMap& context) const override;
  boost::shared_ptr<ICIMNamespace> GetNamespace(const TPropertyMap& context) const override;
  boost::shared_ptr<ICIMInstance> CreateInstance(const TPropertyMap& context) override;
  void EnumerateSubClasses(const TClassCallback& callback, int flag, const TPropertyMap& context) override;
  void EnumeratePropertyDecls(const TPropertyDeclCallback& callback, const TPropertyMap& context) override;

  const std::string& Name() const { return *name_; }
  const std::shared_ptr<const std::string>& SharedName() const { return name_; }
  const boost::shared_ptr<TCIMClass>& SuperClass() const { return superClass_; }
  const TSourceLocation& Location() const { return definition_.location; }
  const TQualifierSet& Qualifiers() const { return qualifiers_; }
  /// All properties, inherited ones first.
  const TPropertyDecls& Properties() const { return properties_; }
  /// The index of a property in Properties(), ignoring case; Properties().size() if there is none.
  std::size_t FindProperty(std::string_view name) const;
  /// Whether this class is a direct or indirect subclass of `ancestor`.
  bool DescendsFrom(const TCIMClass& ancestor) const;

 private:
  TClassDefinition definition_;  // without name, qualifiers and properties, which are in the members below
  std::shared_ptr<const std::string> name_;
  boost::shared_ptr<TCIMClass> superClass_;
  boost::weak_ptr<TNamespace> namespace_;
  TQualifierSet qualifiers_;
  TPropertyDecls properties_;
  // Only properties first declared in this class: inherited ones keep their index from the superclass.
  std::unordered_map<std::string_view, std::size_t, TNameHash, TNameEqual> ownIndex_;
};

}  // namespace velhost
