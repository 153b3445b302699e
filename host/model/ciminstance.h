// Instances: a plugin fills them and hands them to the host by committing them.
#pragma once
#include "host/base/api.h"

#include <boost/enable_shared_from_this.hpp>
#include <boost/shared_ptr.hpp>
#include <boost/weak_ptr.hpp>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "host/model/cimclass.h"
#include "nkrovel20/icimobjects.h"

namespace velhost {

class VELHOST_API TInstance : public ICIMInstance, public boost::enable_shared_from_this<TInstance> {
 public:
  /// Use ICIMClass::CreateInstance. The instance keeps its class alive, not its namespace.
  TInstance(boost::shared_ptr<TCIMClass> cimClass, boost::weak_ptr<TNamespace> cimNamespace);

  /// See ICIMInstance. A value of a different type is converted if possible; arrays and scalars are never
  /// converted into each other.
  void SetProperty(const std::string& name, const TCIMValue& value, const TPropertyMap& context) override;
  /// Passes the instance to the namespace's commit callback. Throws TVELException with
  /// TVELStatusCode::kFailed if it is already committed or the namespace no longer exists.
  void Commit(const TPropertyMap& context) override;

  const TCIMClass& Class() const { return *class_; }
  /// Whether the property at this index of Class().Properties() has been set.
  bool IsSet(std::size_t index) const { return set_[index]; }
  const TCIMValue& Value(std::size_t index) const { return values_[index]; }
  /// Looks up a value by name, ignoring case; null if the property is not declared or not set.
  const TCIMValue* Find(std::string_view name) const;

 private:
  boost::shared_ptr<TCIMClass> class_;
  boost::weak_ptr<TNamespace> namespace_;
  std::vector<TCIMValue> values_;
  std::vector<bool> set_;
  bool committed_ = false;
};

}  // namespace velhost
