// The namespace of a request: the schema's classes, and where committed instances go.
#pragma once
#include "host/base/api.h"

#include <boost/enable_shared_from_this.hpp>
#include <boost/function.hpp>
#include <boost/shared_ptr.hpp>
#include <cstddef>
#include <limits>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "host/model/cimclass.h"
#include "host/model/ciminstance.h"
#include "nkrovel20/icimobjects.h"

namespace velhost {

class VELHOST_API TNamespace : public ICIMNamespace, public boost::enable_shared_from_this<TNamespace> {
 public:
  using TCommitCallback = boost::function<void(const boost::shared_ptr<const TInstance>&)>;

  /// The position of classes that are enumerated after all others, in the order in which they were added.
  static constexpr std::size_t kLast = std::numeric_limits<std::size_t>::max();

  /// Namespaces exist only in shared pointers.
  static boost::shared_ptr<TNamespace> Create();

  boost::shared_ptr<ICIMClass> GetClass(const std::string& name, const TPropertyMap& context) override;
  std::string GetMachineType() const override { return machineType_; }

  /// Adds a class; its superclass must already have been added. `order` is its position in the enumeration of
  /// subclasses: a reader that meets a subclass before its superclass passes the position of the declaration.
  /// Throws TVELException with TVELStatusCode::kInvalidClass if the name is taken or the superclass is
  /// missing.
  boost::shared_ptr<TCIMClass> AddClass(TClassDefinition definition, std::size_t order = kLast);

  boost::shared_ptr<TCIMClass> FindClass(std::string_view name) const;
  /// All classes in declaration order.
  const std::vector<boost::shared_ptr<TCIMClass>>& Classes() const;

  void SetMachineType(const std::string& machineType) { machineType_ = machineType; }
  /// Called with each instance when it is committed; its exceptions propagate to the committing plugin.
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
  // In declaration order; built from added_ on demand, because keeping it sorted while classes are added
  // would take quadratic time.
  mutable std::vector<boost::shared_ptr<TCIMClass>> classes_;
  std::unordered_map<std::string, boost::shared_ptr<TCIMClass>, TNameHash, TNameEqual> byName_;
  std::string machineType_;
  TCommitCallback commitCallback_;
};

}  // namespace velhost
