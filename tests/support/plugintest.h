// Fixtures with the collector's real code: its parts alone, or the whole plugin object.
#pragma once

#include <string>
#include <vector>

#include "plugin/logmessage.h"
#include "plugin/torgaplugin.h"
#include "tests/support/collectortest.h"
#include "tests/support/hostprobe.h"
#include "tests/support/namespaces.h"
#include "tests/support/testpeer.h"

namespace tests {

/// For parts used without a plugin object; registers the log facade.
class TPartTest : public TCollectorTest {
 protected:
  TPartTest() { torgareg::LogMessage::setPluginInstance(&pluginManager->provider); }
  ~TPartTest() override { torgareg::LogMessage::setPluginInstance(nullptr); }
};

/// For one class's collector, which sees the host through `probe`.
class TProbedPartTest : public TPartTest {
 protected:
  /// Another namespace, for a second class of the same name.
  void RenewNamespace() {
    ns = velhost::TNamespace::Create();
    ns->SetMachineType(environment.machineType);
  }
  /// The property as the collector would get it.
  boost::shared_ptr<NKROVEL20::ICIMPropertyDecl> Property(const std::string& className, const std::string& name) {
    const auto& cimClass = *Class(className);
    const boost::shared_ptr<NKROVEL20::ICIMPropertyDecl> property = cimClass.Properties()[cimClass.FindProperty(name)];
    return probe.Wrap(property);
  }

  THostProbe probe;
};

/// With a registered plugin object, which is destroyed with the test.
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

inline auto FieldsOf(torgareg::TTORGARegPluginCallbacks& plugin) { return torgareg::TTestPeer::FieldsOf(plugin); }

}  // namespace tests
