// The host's CIM object model: namespaces, classes, properties, qualifiers, instances.
//
// All objects are held through boost::shared_ptr and belong to the host; an empty pointer means that there is
// no such object. Every operation takes a context map: empty, or the request context (TCIMSchemaHelper).
// Operations that fail throw TVELException. A plugin makes all calls on the thread on which the host called
// it.
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

/// A qualifier of a class or property, possibly inherited.
class NKROVEL20_API ICIMQualifier {
 public:
  virtual ~ICIMQualifier();
  /// The value; lives as long as the qualifier.
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
  /// Looks up a qualifier by name, ignoring case; empty if the element does not have it.
  virtual boost::shared_ptr<const ICIMQualifier> GetQualifier(const std::string& name,
                                                              const TPropertyMap& context) const = 0;
};

/// The declaration of a property, as seen from one class.
class NKROVEL20_API ICIMPropertyDecl : public ICIMNamed, public ICIMQualifierHolder {
 public:
  ~ICIMPropertyDecl() override;
  virtual TCIMValue::TCIMType GetType(const TPropertyMap& context) const = 0;
  /// The class that first declared the property; overriding does not change it.
  virtual boost::shared_ptr<ICIMClass> GetClassOrigin(const TPropertyMap& context) const = 0;
};

class NKROVEL20_API ICIMNamespace {
 public:
  virtual ~ICIMNamespace();
  /// Looks up a class by name, ignoring case; empty if there is none.
  virtual boost::shared_ptr<ICIMClass> GetClass(const std::string& name, const TPropertyMap& context) = 0;
  /// The machine type known to the namespace; see TCIMSchemaHelper::GetMachineType.
  virtual std::string GetMachineType() const = 0;
};

class NKROVEL20_API ICIMClass : public ICIMNamed, public ICIMQualifierHolder {
 public:
  using TClassCallback = boost::function<bool(boost::shared_ptr<ICIMClass>)>;
  using TPropertyDeclCallback = boost::function<bool(boost::shared_ptr<ICIMPropertyDecl>)>;

  /// Values for the flag of EnumerateSubClasses.
  static constexpr int kDirectSubClasses = 0;
  static constexpr int kAllDescendants = 1;

  ~ICIMClass() override;
  /// Empty for a root class.
  virtual boost::shared_ptr<ICIMClass> GetSuperClass(const TPropertyMap& context) const = 0;
  virtual boost::shared_ptr<ICIMNamespace> GetNamespace(const TPropertyMap& context) const = 0;
  /// A new, empty instance of this class; it becomes part of the host's result when it is committed.
  virtual boost::shared_ptr<ICIMInstance> CreateInstance(const TPropertyMap& context) = 0;
  /// Passes subclasses to the callback in declaration order until it returns false.
  virtual void EnumerateSubClasses(const TClassCallback& callback, int flag, const TPropertyMap& context) = 0;
  /// Passes all property declarations to the callback, inherited ones first (from the root class down), those
  /// of each class in declaration order, until it returns false.
  virtual void EnumeratePropertyDecls(const TPropertyDeclCallback& callback, const TPropertyMap& context) = 0;
};

class NKROVEL20_API ICIMInstance {
 public:
  virtual ~ICIMInstance();
  /// Sets one property. Throws with TVELStatusCode::kNoSuchProperty if the class does not declare the name,
  /// with TVELStatusCode::kTypeMismatch if the value does not fit the declared type.
  virtual void SetProperty(const std::string& name, const TCIMValue& value, const TPropertyMap& context) = 0;
  /// Hands the finished instance over to the host, which owns it from then on. At most once per instance.
  virtual void Commit(const TPropertyMap& context) = 0;
};

}  // namespace NKROVEL20
