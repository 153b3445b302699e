// The CIM object model that the host offers: namespaces, classes, properties, qualifiers, instances.
//
// All objects are held through boost::shared_ptr and belong to the host. Every operation takes a
// context map: empty, or the request context (TCIMSchemaHelper). Operations that fail throw
// TVELException. An object that is not there is an empty pointer. All calls are made on the thread
// on which the host called the plugin.
#pragma once

#include <boost/function.hpp>
#include <boost/shared_ptr.hpp>
#include <string>

#include "nkrovel20/api.h"
#include "nkrovel20/tcimvalue.h"

namespace NKROVEL20 {

class ICIMClass;
class ICIMInstance;
class ICIMPropertyDecl;

/// A qualifier as it stands on a class or property, inherited ones included.
class NKROVEL20_API ICIMQualifier {
 public:
  virtual ~ICIMQualifier();
  /// The qualifier's value; lives as long as the qualifier.
  virtual const TCIMValue& GetValue() const = 0;
};

/// Anything with a name.
class NKROVEL20_API ICIMNamed {
 public:
  virtual ~ICIMNamed();
  /// The name as the schema spells it; lives as long as the object.
  virtual const std::string& GetName(const TPropertyMap& context) const = 0;
};

/// Anything that carries qualifiers.
class NKROVEL20_API ICIMQualifierHolder {
 public:
  virtual ~ICIMQualifierHolder();
  /// The qualifier of that name, in any case; empty when the element does not have it.
  virtual boost::shared_ptr<const ICIMQualifier> GetQualifier(const std::string& name,
                                                              const TPropertyMap& context) const = 0;
};

/// The declaration of a property as one class sees it.
class NKROVEL20_API ICIMPropertyDecl : public ICIMNamed, public ICIMQualifierHolder {
 public:
  ~ICIMPropertyDecl() override;
  virtual TCIMValue::TCIMType GetType(const TPropertyMap& context) const = 0;
  /// The class that declared the property first: an overriding property keeps its origin.
  virtual boost::shared_ptr<ICIMClass> GetClassOrigin(const TPropertyMap& context) const = 0;
};

class NKROVEL20_API ICIMNamespace {
 public:
  virtual ~ICIMNamespace();
  /// The class of that name, in any case; empty when there is none.
  virtual boost::shared_ptr<ICIMClass> GetClass(const std::string& name, const TPropertyMap& context) = 0;
  /// The machine type known to the namespace; see TCIMSchemaHelper::GetMachineType.
  virtual std::string GetMachineType() const = 0;
};

class NKROVEL20_API ICIMClass : public ICIMNamed, public ICIMQualifierHolder {
 public:
  using TClassCallback = boost::function<bool(boost::shared_ptr<ICIMClass>)>;
  using TPropertyDeclCallback = boost::function<bool(boost::shared_ptr<ICIMPropertyDecl>)>;

  /// What the flag of EnumerateSubClasses selects.
  static constexpr int kDirectSubClasses = 0;
  static constexpr int kAllDescendants = 1;

  ~ICIMClass() override;
  /// Empty for a root class.
  virtual boost::shared_ptr<ICIMClass> GetSuperClass(const TPropertyMap& context) const = 0;
  virtual boost::shared_ptr<ICIMNamespace> GetNamespace(const TPropertyMap& context) const = 0;
  /// A new, empty instance of this class; it reaches the host's answer when it is committed.
  virtual boost::shared_ptr<ICIMInstance> CreateInstance(const TPropertyMap& context) = 0;
  /// Hands subclasses to the callback in declaration order until it returns false.
  virtual void EnumerateSubClasses(const TClassCallback& callback, int flag, const TPropertyMap& context) = 0;
  /// Hands all property declarations to the callback, inherited ones first (from the root class
  /// down), each in declaration order, until it returns false.
  virtual void EnumeratePropertyDecls(const TPropertyDeclCallback& callback, const TPropertyMap& context) = 0;
};

class NKROVEL20_API ICIMInstance {
 public:
  virtual ~ICIMInstance();
  /// Sets one property. A name that the class does not declare throws with
  /// TVELStatusCode::kNoSuchProperty, a value that does not fit the declared type with
  /// TVELStatusCode::kTypeMismatch.
  virtual void SetProperty(const std::string& name, const TCIMValue& value, const TPropertyMap& context) = 0;
  /// Hands the finished instance to the host, which owns it from then on. Once per instance.
  virtual void Commit(const TPropertyMap& context) = 0;
};

}  // namespace NKROVEL20
