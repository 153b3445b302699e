// The plugin manager from a plugin's point of view: a namespace with which it registers while being loaded.
#pragma once

#include <boost/shared_ptr.hpp>
#include <string>

#include "nkrovel20/api.h"
#include "nkrovel20/icimobjects.h"

namespace NKROVEL20 {

class IPluginCallbacks;

/// The host's handle to a registered plugin. Opaque to the plugin, which keeps the pointer but never frees
/// it; valid until the library is unloaded.
class TPluginManagerProvider;

class NKROVEL20_API TPluginManagerNamespace : public ICIMNamespace {
 public:
  ~TPluginManagerNamespace() override;
  /// Registers the plugin object of the library that is being loaded, and returns its handle. Never throws. A
  /// refused registration (no library is being loaded, or it is the second one) returns null; the host
  /// reports it when loading ends.
  virtual TPluginManagerProvider* RegisterPlugin(IPluginCallbacks* plugin) = 0;
};

}  // namespace NKROVEL20
