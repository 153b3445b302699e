// The two interfaces through which the host drives a plugin.
#pragma once

#include <boost/shared_ptr.hpp>
#include <string>
#include <vector>

#include "nkrovel20/api.h"
#include "nkrovel20/icimobjects.h"

namespace NKROVEL20 {

/// Identity and lifecycle. The host makes one call at a time, in this order: Init, any number of requests,
/// DeInit, PrepareForUnload. The order of the virtual functions is part of the contract.
class NKROVEL20_API IPluginCallbacks {
 public:
  virtual ~IPluginCallbacks();
  virtual int GetType() = 0;
  virtual std::string GetName() = 0;
  virtual std::string GetVersion() = 0;
  virtual std::string GetInterfaceVersion() = 0;
  /// The plugin object must delete itself; the host does not touch it afterwards.
  virtual void PrepareForUnload() = 0;
  virtual void Init() = 0;
  virtual void DeInit() = 0;
};

/// A plugin that answers requests for instances also derives from this interface. The host obtains it by a
/// dynamic cast from IPluginCallbacks.
class NKROVEL20_API IPluginBasicQueryCallbacks {
 public:
  virtual ~IPluginBasicQueryCallbacks();
  /// Collects instances of the classes and commits them. The vector must not be modified. An exception ends
  /// the request; instances that are already committed remain.
  virtual void GetData(boost::shared_ptr<ICIMNamespace> cimNamespace,
                       std::vector<boost::shared_ptr<ICIMClass>>& classes) = 0;
};

}  // namespace NKROVEL20
