#include "host/model/hostservices.h"

#include <ctime>
#include <utility>

#include "nkrovel20/tcimschemahelper.h"
#include "nkrovel20/tosspecific.h"
#include "nkrovel20/trootobject.h"

namespace velhost {

namespace {

class TDroppingLogger : public ILogger {
 public:
  void Log(EVELLogSeverity, const std::string&) override {}
};

// Function-local statics that are never destroyed: a plugin may be unloaded during process exit, after this
// library's own statics would have been destroyed.
ILogger& DroppingLogger() {
  static auto* const logger = new TDroppingLogger();
  return *logger;
}

IHostEnvironment& SystemEnvironment() {
  static auto* const environment = new TSystemEnvironment();
  return *environment;
}

boost::shared_ptr<ICIMNamespace>& PluginManager() {
  static auto* const pluginManager = new boost::shared_ptr<ICIMNamespace>();
  return *pluginManager;
}

ILogger* coreLogger = nullptr;
IHostEnvironment* hostEnvironment = nullptr;

IHostEnvironment& Environment() { return hostEnvironment ? *hostEnvironment : SystemEnvironment(); }

}  // namespace

IHostEnvironment::~IHostEnvironment() = default;

TCIMDateTime TSystemEnvironment::LocalTime() {
  timespec now = {};
  clock_gettime(CLOCK_REALTIME, &now);
  tm local = {};
  localtime_r(&now.tv_sec, &local);
  return TCIMDateTime(static_cast<unsigned short>(local.tm_year + 1900), static_cast<unsigned short>(local.tm_mon + 1),
                      static_cast<unsigned int>(local.tm_mday), static_cast<unsigned short>(local.tm_hour),
                      static_cast<unsigned short>(local.tm_min), static_cast<unsigned short>(local.tm_sec),
                      static_cast<unsigned int>(now.tv_nsec / 1000), static_cast<short>(local.tm_gmtoff / 60));
}

void THostServices::SetPluginManager(boost::shared_ptr<ICIMNamespace> pluginManager) {
  PluginManager() = std::move(pluginManager);
}
void THostServices::SetCoreLogger(ILogger* logger) { coreLogger = logger; }
void THostServices::SetEnvironment(IHostEnvironment* environment) { hostEnvironment = environment; }

}  // namespace velhost

namespace NKROVEL20 {

using namespace velhost;

boost::shared_ptr<ICIMNamespace> TRootObject::GetPluginManager() { return PluginManager(); }
ILogger* TRootObject::GetCoreLogger() { return coreLogger ? coreLogger : &DroppingLogger(); }

std::string TOSSpecific::GetMachineTypeFromID() { return Environment().MachineType(); }
TCIMDateTime TOSSpecific::GetLocalTime() { return Environment().LocalTime(); }

const std::string TCIMSchemaHelper::kContextName = "ContextName";
const std::string TCIMSchemaHelper::kPluginNSPName = "PluginNamespaceProvider";

std::string TCIMSchemaHelper::GetMachineType(boost::shared_ptr<ICIMNamespace> cimNamespace) {
  return cimNamespace->GetMachineType();
}

}  // namespace NKROVEL20
