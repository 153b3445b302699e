// Routes a request: decides which of the three collection paths serves each requested class.
#include <algorithm>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "jfr/TJFRErrorData.h"
#include "nkrovel20/tcimschemahelper.h"
#include "nkrovel20/tosspecific.h"
#include "plugin/constants.h"
#include "plugin/issubstring.h"
#include "plugin/torgaplugin.h"
#include "r8/r8errordata.h"

namespace torgareg {

using namespace NKROVEL20;

namespace {

bool contains(const std::vector<std::string>& names, const std::string& name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

}  // namespace

// Every look-up gets its own copy of the request context, so a host that modifies one does not affect the
// next.
void TTORGARegPluginCallbacks::collectDelegates(const boost::shared_ptr<ICIMNamespace>& ns,
                                                const TPropertyMap& requestContext,
                                                std::vector<std::string>& jfrClasses,
                                                std::map<std::string, std::string>& delegates) const {
  const std::vector<std::string> baseClasses = jfrClasses;
  for (const std::string& base : baseClasses) {
    logger->writeDebug("Collecting delegates for class " + base);
    const std::string delegate = delegateRequest(ns->GetClass(base, TPropertyMap(requestContext)), machineType);
    if (delegate.empty()) continue;
    logger->writeDebug("Adding class " + delegate + " in Class list");
    jfrClasses.push_back(delegate);
    logger->writeDebug("Adding class " + delegate + " in child map");
    delegates.insert({base, delegate});
  }
}

void TTORGARegPluginCallbacks::collectJFR(const boost::shared_ptr<ICIMNamespace>& ns,
                                          const TPropertyMap& requestContext,
                                          const std::map<std::string, std::string>& delegates,
                                          const boost::shared_ptr<ICIMClass>& requested, const std::string& name) {
  logger->writeDebug("Collecting JFRErrorData.");
  currentClass.reset();
  const auto entry = std::find_if(delegates.begin(), delegates.end(),
                                  [&name](const auto& candidate) { return candidate.second == name; });
  if (entry != delegates.end()) currentClass = ns->GetClass(entry->first, TPropertyMap(requestContext));
  if (!currentClass) return;  // a base class itself was requested
  logger->writeDebug("Calling error data");
  TJFRErrorData collector(currentClass, requested);
  const std::vector<TPropertyMap> maps = collector.getData();
  logger->writeDebug("Total Instances collected are " + std::to_string(maps.size()));
  logger->writeDebug("Building CIM instances.");
  currentClass = requested;
  buildCIMInstances(maps);
  logger->writeDebug("Normal exit from Engineering Information collector...");
}

void TTORGARegPluginCallbacks::collectR8(const boost::shared_ptr<ICIMClass>& requested, const std::string& name) {
  logger->writeDebug("Requested class " + name);
  const auto qualifier = requested->GetQualifier("SupportedMachineTypes", {});
  // A value that is not an array throws TVELException.
  const std::vector<TCIMValue>& elements = qualifier->GetValue();
  if (!supportsMachineType(elements, machineType)) return;
  currentClass = requested;
  R8ErrorData collector(requested);
  buildCIMInstances(collector.getData());
}

void TTORGARegPluginCallbacks::collectCaptureFiles(const boost::shared_ptr<ICIMNamespace>& ns) {
  logger->writeDebug("begin to collect KROSG_DCAPFile");
  ReadErrFFDC(ns, "cpu_err");
  ReadErrFFDC(ns, "ioh_err");
  ReadErrFFDC(ns, "zyn_err");
  logger->writeDebug("Complete to collect KROSG_DCAPFile");
}

void TTORGARegPluginCallbacks::GetData(boost::shared_ptr<ICIMNamespace> ns,
                                       std::vector<boost::shared_ptr<ICIMClass>>& classes) {
  const TPropertyMap requestContext = {{TCIMSchemaHelper::kContextName, TCIMValue(TCIMSchemaHelper::kPluginNSPName)}};
  machineType = TOSSpecific::GetMachineTypeFromID();
  std::vector<std::string> jfrClasses = {pciBridgeClass, memCtlClass, l3CacheClass};
  std::map<std::string, std::string> delegates;  // base class to the subclass that serves it
  collectDelegates(ns, requestContext, jfrClasses, delegates);

  for (const boost::shared_ptr<ICIMClass>& requested : classes) {
    const std::string name = requested->GetName({});
    logger->writeDebug("Entering collection for requested class " + name);
    if (contains(jfrClasses, name)) {
      collectJFR(ns, requestContext, delegates, requested, name);
      continue;
    }
    const std::vector<std::string> r8Classes = {t4MemCtlClass, t4PciBridgeClass, voMemCtlClass, voPciBridgeClass};
    if (contains(r8Classes, name)) {
      collectR8(requested, name);
    } else {
      logger->writeDebug("Collector received an invalid collection request." + name);
    }
    // Deliberate: the capture class is first logged as invalid, then served, and it ends the request.
    if (name == "KROSG_DCAPFile") {
      collectCaptureFiles(ns);
      return;
    }
  }
}

}  // namespace torgareg
