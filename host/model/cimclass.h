// Classes and property declarations of the host's object model.
#pragma once
#include "host/base/api.h"

#include <boost/enable_shared_from_this.hpp>
#include <boost/shared_ptr.hpp>
#include <boost/weak_ptr.hpp>
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "host/base/caseinsensitive.h"
#include "host/model/classdefinition.h"
#include "host/model/qualifier.h"
#include "nkrovel20/icimobjects.h"

namespace velhost {

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
