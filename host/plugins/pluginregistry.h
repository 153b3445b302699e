// Registrations: tells which plugin object belongs to the library that is being loaded.
#pragma once
#include "host/base/api.h"

#include <boost/shared_ptr.hpp>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "nkrovel20/iplugincallbacks.h"
#include "nkrovel20/tpluginmanagernamespace.h"

namespace NKROVEL20 {

/// One registration; a plugin holds it as its handle.
class TPluginManagerProvider {
 public:
  TPluginManagerProvider(std::string path, IPluginCallbacks* plugin) : path_(std::move(path)), plugin_(plugin) {}
  const std::string& Path() const { return path_; }
  IPluginCallbacks* Plugin() const { return plugin_; }

 private:
  std::string path_;
  IPluginCallbacks* plugin_;  // deletes itself in PrepareForUnload
};

}  // namespace NKROVEL20

namespace velhost {

/// The plugin manager's namespace. It has no classes: its only purpose is registration.
class VELHOST_API TPluginRegistry : public TPluginManagerNamespace {
 public:
  TPluginRegistry();
  ~TPluginRegistry() override;

  /// See TPluginManagerNamespace. Accepts the first registration between BeginLoading and EndLoading; refuses
  /// null, a second registration, and any at another time.
  TPluginManagerProvider* RegisterPlugin(IPluginCallbacks* plugin) override;
  boost::shared_ptr<ICIMClass> GetClass(const std::string& name, const TPropertyMap& context) override;
  std::string GetMachineType() const override { return {}; }

  void BeginLoading(const std::string& path);
  struct TOutcome {
    std::unique_ptr<TPluginManagerProvider> provider;  ///< empty if nothing was registered
    std::vector<std::string> refusals;                 ///< one reason for each
  };
  TOutcome EndLoading();

 private:
  bool loading_ = false;
  std::string path_;
  TOutcome outcome_;
};

}  // namespace velhost
