// The plugin manager as a plugin sees it: the namespace with which it registers while it is loaded.
#pragma once

#include <boost/shared_ptr.hpp>
#include <string>

#include "nkrovel20/api.h"
#include "nkrovel20/icimobjects.h"

namespace NKROVEL20 {

class IPluginCallbacks;

/// The host's handle for one registered plugin. Opaque to the plugin, which keeps the pointer and
/// never frees it; it is valid until the library has been unloaded.
class TPluginManagerProvider;

class NKROVEL20_API TPluginManagerNamespace : public ICIMNamespace {
 public:
  ~TPluginManagerNamespace() override;
  /// Registers the plugin object of the library that is being loaded, and returns its handle. Never
  /// throws: a refusal (nothing is being loaded, a second registration) is noted for the host,
  /// which reports it when loading ends, and gives a null pointer.
  virtual TPluginManagerProvider* RegisterPlugin(IPluginCallbacks* plugin) = 0;
};

}  // namespace NKROVEL20
