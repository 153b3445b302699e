#include "host/model/hostservices.h"

#include <array>
#include <cstddef>
#include <ctime>
#include <utility>

#include "nkrovel20/icimobjects.h"
#include "nkrovel20/ilogger.h"
#include "nkrovel20/iplugincallbacks.h"
#include "nkrovel20/tcimschemahelper.h"
#include "nkrovel20/tosspecific.h"
#include "nkrovel20/trootobject.h"

// The destructors of the contract's interfaces. Defining them here puts the type information and virtual
// table of each interface into this library only, so that casts agree across libraries.
namespace NKROVEL20 {

ICIMQualifier::~ICIMQualifier() = default;
ICIMNamed::~ICIMNamed() = default;
ICIMQualifierHolder::~ICIMQualifierHolder() = default;
ICIMPropertyDecl::~ICIMPropertyDecl() = default;
ICIMNamespace::~ICIMNamespace() = default;
ICIMClass::~ICIMClass() = default;
ICIMInstance::~ICIMInstance() = default;
ILogger::~ILogger() = default;
IPluginCallbacks::~IPluginCallbacks() = default;
IPluginBasicQueryCallbacks::~IPluginBasicQueryCallbacks() = default;

}  // namespace NKROVEL20

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

namespace velhost {

void TTraceLogger::Log(EVELLogSeverity severity, const std::string& message) {
  for (const TEntry& entry : sinks_) {
    if (severity <= entry.least) entry.sink(severity, message);
  }
}

const char* TTraceLogger::SeverityName(EVELLogSeverity severity) {
  static constexpr std::array<const char*, 5> kNames = {"error", "warning", "status", "debug", "verbose"};
  const auto index = static_cast<std::size_t>(severity);
  return index < kNames.size() ? kNames[index] : "unknown";
}

std::string TTraceLogger::FormatText(EVELLogSeverity severity, const std::string& message) {
  std::string line = SeverityName(severity);
  line.reserve(line.size() + message.size() + 2);
  line += ' ';
  const std::size_t size = message.empty() || message.back() != '\n' ? message.size() : message.size() - 1;
  for (std::size_t i = 0; i < size; ++i) {
    line += message[i];
    if (message[i] == '\n') line += "  ";
  }
  line += '\n';
  return line;
}

}  // namespace velhost
