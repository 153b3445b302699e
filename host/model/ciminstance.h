// Instances: filled by a plugin, handed to the host at commit.
#pragma once
#include "host/base/api.h"

#include <boost/enable_shared_from_this.hpp>
#include <boost/shared_ptr.hpp>
#include <boost/weak_ptr.hpp>
#include <string>
#include <vector>

#include "host/model/cimclass.h"
#include "nkrovel20/icimobjects.h"

namespace velhost {

class VELHOST_API TInstance : public ICIMInstance, public boost::enable_shared_from_this<TInstance> {
 public:
  /// Use ICIMClass::CreateInstance. The instance keeps its class alive, not its namespace.
  TInstance(boost::shared_ptr<TCIMClass> cimClass, boost::weak_ptr<TNamespace> cimNamespace);

  /// See ICIMInstance. A value of another type than the declared one is converted where it can be;
  /// an array does not fit a scalar property nor a scalar an array property.
  void SetProperty(const std::string& name, const TCIMValue& value, const TPropertyMap& context) override;
  /// Hands the instance to the namespace's commit callback. A second commit, or one after the
  /// namespace is gone, throws TVELException with TVELStatusCode::kFailed.
  void Commit(const TPropertyMap& context) override;

  const TCIMClass& Class() const { return *class_; }
  /// Whether the property at that place of Class().Properties() has been set.
  bool IsSet(std::size_t index) const { return set_[index]; }
  const TCIMValue& Value(std::size_t index) const { return values_[index]; }
  /// By name in any case; null where the property is not set or not declared.
  const TCIMValue* Find(std::string_view name) const;

 private:
  boost::shared_ptr<TCIMClass> class_;
  boost::weak_ptr<TNamespace> namespace_;
  std::vector<TCIMValue> values_;
  std::vector<bool> set_;
  bool committed_ = false;
};

}  // namespace velhost
