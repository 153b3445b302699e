// Fixtures with the collector's own code: its parts alone, or the whole plugin object.
#pragma once

#include <string>
#include <vector>

#include "plugin/logmessage.h"
#include "plugin/torgaplugin.h"
#include "tests/support/collectortest.h"

namespace testsupport {

/// For parts that are used without a plugin object: the log facade is registered.
class TPartTest : public TCollectorTest {
 protected:
  TPartTest() { torgareg::LogMessage::setPluginInstance(&pluginManager->provider); }
  ~TPartTest() override { torgareg::LogMessage::setPluginInstance(nullptr); }
};

/// With a registered plugin object, which is gone with the test.
class TPluginTest : public TCollectorTest {
 protected:
  TPluginTest() : plugin(*new torgareg::TTORGARegPluginCallbacks()) {}
  ~TPluginTest() override {
    plugin.PrepareForUnload();
    torgareg::LogMessage::setPluginInstance(nullptr);
  }

  /// One request for these classes of the namespace.
  void GetData(const std::vector<std::string>& names) {
    std::vector<boost::shared_ptr<NKROVEL20::ICIMClass>> classes;
    for (const std::string& name : names) classes.push_back(Class(name));
    plugin.GetData(ns, classes);
  }

  torgareg::TTORGARegPluginCallbacks& plugin;
};

/// The plugin object's fields in their order behind the two table pointers. There is no accessor for
/// them, so the object is read as what it is in memory.
struct TPluginFields {
  const void* primaryTable;
  const void* secondTable;
  NKROVEL20::TPluginManagerProvider* pluginProvider;
  boost::shared_ptr<NKROVEL20::ICIMClass> currentClass;
  torgareg::LogMessage* logger;
  std::string machineType;
  std::int32_t recordCounter;
};
static_assert(sizeof(TPluginFields) == sizeof(torgareg::TTORGARegPluginCallbacks));

inline const TPluginFields& FieldsOf(const torgareg::TTORGARegPluginCallbacks& plugin) {
  return *reinterpret_cast<const TPluginFields*>(&plugin);
}

}  // namespace testsupport
