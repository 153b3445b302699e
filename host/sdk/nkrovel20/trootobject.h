// The host's root services.
#pragma once

#include <boost/shared_ptr.hpp>

#include "nkrovel20/api.h"
#include "nkrovel20/icimobjects.h"
#include "nkrovel20/ilogger.h"

namespace NKROVEL20 {

class NKROVEL20_API TRootObject {
 public:
  /// The plugin manager; its dynamic type is TPluginManagerNamespace. Empty if there is none.
  static boost::shared_ptr<ICIMNamespace> GetPluginManager();
  /// The core logger. Never null, and valid at any time.
  static ILogger* GetCoreLogger();
};

}  // namespace NKROVEL20
