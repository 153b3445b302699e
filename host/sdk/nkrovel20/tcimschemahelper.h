// Helpers for requests and the schema that they refer to.
#pragma once

#include <boost/shared_ptr.hpp>
#include <string>

#include "nkrovel20/api.h"
#include "nkrovel20/icimobjects.h"

namespace NKROVEL20 {

class NKROVEL20_API TCIMSchemaHelper {
 public:
  /// Key and value of the request context that a plugin passes when it looks up classes by name.
  static const std::string kContextName;
  static const std::string kPluginNSPName;

  /// The machine type known to the namespace.
  static std::string GetMachineType(boost::shared_ptr<ICIMNamespace> cimNamespace);
};

}  // namespace NKROVEL20
