// Turns the property maps of the register collectors into committed CIM instances.
#include "plugin/torgaplugin.h"

#include <map>
#include <string>
#include <vector>

namespace torgareg {

using namespace NKROVEL20;

void TTORGARegPluginCallbacks::buildCIMInstances(const std::vector<TPropertyMap>& maps) const {
  logger->writeDebug("In buildCIMInstances.");
  const TPropertyMap noContext;
  std::string line;
  for (const TPropertyMap& map : maps) {
    if (map.empty()) continue;
    const boost::shared_ptr<ICIMInstance> instance = currentClass->CreateInstance(noContext);
    for (const auto& [name, value] : map) {
      if (value.IsNull()) continue;
      line.assign("valueIt->first = ").append(name).append(". valueIt->second = ");
      line.append(value.ToString(10)).append(".");
      logger->writeVerbose(line);
      instance->SetProperty(name, TCIMValue(value), noContext);  // a copy: the host may change its argument
    }
    instance->Commit(noContext);
  }
  logger->writeDebug("Completed buildCIMInstances.");
}

}  // namespace torgareg
