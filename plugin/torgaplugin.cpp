#include "plugin/torgaplugin.h"

#include <boost/pointer_cast.hpp>

#include "nkrovel20/tosspecific.h"
#include "nkrovel20/trootobject.h"

namespace torgareg {

using namespace NKROVEL20;

TTORGARegPluginCallbacks::TTORGARegPluginCallbacks() : pluginProvider(nullptr), logger(nullptr), recordCounter(0) {
  // The result of the cast is not checked: without a plugin manager, the host's assertion handler decides.
  pluginProvider =
      boost::dynamic_pointer_cast<TPluginManagerNamespace>(TRootObject::GetPluginManager())->RegisterPlugin(this);
  LogMessage::setPluginInstance(pluginProvider);
  logger = LogMessage::getInstance();
}

// Leaves the registration and the logging singleton alone: the host knows that the object is going away, and
// lines may still be logged.
TTORGARegPluginCallbacks::~TTORGARegPluginCallbacks() { currentClass.reset(); }

int TTORGARegPluginCallbacks::GetType() { return 0; }
std::string TTORGARegPluginCallbacks::GetName() { return "Engineering Information Collector"; }
std::string TTORGARegPluginCallbacks::GetVersion() { return "1.0"; }
std::string TTORGARegPluginCallbacks::GetInterfaceVersion() { return "1.0"; }

void TTORGARegPluginCallbacks::PrepareForUnload() { delete this; }

void TTORGARegPluginCallbacks::Init() {
  logger->writeDebug("Initializing Engineering Information Collector");
  recordCounter = 0;
}

void TTORGARegPluginCallbacks::DeInit() { logger->writeDebug("De-Initializing Engineering Information Collector"); }

std::string TTORGARegPluginCallbacks::getMachineType() { return TOSSpecific::GetMachineTypeFromID(); }

}  // namespace torgareg
