// A plugin manager without a host. Header-only, since it is also used where the host's libraries are replaced.
#pragma once

#include <boost/shared_ptr.hpp>
#include <functional>
#include <string>
#include <vector>

#include "host/plugins/pluginloader.h"
#include "tests/support/namespaces.h"

namespace tests {

/// Records who registered, and hands out one provider or none.
class TFakePluginManager : public NKROVEL20::TPluginManagerNamespace {
 public:
  NKROVEL20::TPluginManagerProvider* RegisterPlugin(NKROVEL20::IPluginCallbacks* plugin) override {
    if (onRegister) onRegister();
    registered.push_back(plugin);
    return refuses ? nullptr : &provider;
  }
  boost::shared_ptr<NKROVEL20::ICIMClass> GetClass(const std::string&, const NKROVEL20::TPropertyMap&) override {
    return {};
  }
  std::string GetMachineType() const override { return {}; }

  std::vector<NKROVEL20::IPluginCallbacks*> registered;
  NKROVEL20::TPluginManagerProvider provider{"plugin under test", nullptr};
  std::function<void()> onRegister;  ///< called before the registration is recorded
  bool refuses = false;              ///< answers with a null handle
};

}  // namespace tests
