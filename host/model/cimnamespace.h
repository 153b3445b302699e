// The namespace that requests run in: the schema's classes, and the way out for instances.
#pragma once
#include "host/base/api.h"

#include <boost/enable_shared_from_this.hpp>
#include <boost/function.hpp>
#include <boost/shared_ptr.hpp>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "host/model/cimclass.h"
#include "host/model/ciminstance.h"
#include "nkrovel20/icimobjects.h"

namespace velhost {

class VELHOST_API TNamespace : public ICIMNamespace, public boost::enable_shared_from_this<TNamespace> {
 public:
  using TCommitCallback = boost::function<void(const boost::shared_ptr<const TInstance>&)>;

  /// Namespaces live in shared pointers only.
  static boost::shared_ptr<TNamespace> Create();

  boost::shared_ptr<ICIMClass> GetClass(const std::string& name, const TPropertyMap& context) override;
  std::string GetMachineType() const override { return machineType_; }

  /// Adds a class whose superclass is there already. `order` is its place in the enumeration of
  /// subclasses: readers that meet a subclass before its superclass pass the place of its
  /// declaration. A name that is taken or a superclass that is missing throws TVELException with
  /// TVELStatusCode::kInvalidClass.
  boost::shared_ptr<TCIMClass> AddClass(TClassDefinition definition, std::size_t order);
  /// The same, declared after all others.
  boost::shared_ptr<TCIMClass> AddClass(TClassDefinition definition);

  boost::shared_ptr<TCIMClass> FindClass(std::string_view name) const;
  /// All classes in declaration order.
  const std::vector<boost::shared_ptr<TCIMClass>>& Classes() const;

  void SetMachineType(const std::string& machineType) { machineType_ = machineType; }
  /// Called with each instance at its commit; what it throws goes back to the committing plugin.
  void SetCommitCallback(TCommitCallback callback) { commitCallback_ = std::move(callback); }
  /// For TInstance::Commit.
  void TakeCommitted(const boost::shared_ptr<const TInstance>& instance);

 private:
  TNamespace() = default;

  struct TPlaced {
    std::size_t order;
    boost::shared_ptr<TCIMClass> cimClass;
  };

  std::vector<TPlaced> added_;
  // In declaration order; made of added_ when someone asks, since sorting in each class as it comes
  // would take the square of their number.
  mutable std::vector<boost::shared_ptr<TCIMClass>> classes_;
  std::size_t lastOrder_ = 0;
  std::unordered_map<std::string, boost::shared_ptr<TCIMClass>, TNameHash, TNameEqual> byName_;
  std::string machineType_;
  TCommitCallback commitCallback_;
};

}  // namespace velhost
