// Common parts of the small test plugins: a plugin object that logs its calls through the core logger.
#pragma once

#include <boost/pointer_cast.hpp>
#include <string>

#include "nkrovel20/iplugincallbacks.h"
#include "nkrovel20/tpluginmanagernamespace.h"
#include "nkrovel20/trootobject.h"

namespace testplugin {

inline void Say(const std::string& text) {
  NKROVEL20::TRootObject::GetCoreLogger()->Log(NKROVEL20::ILogger::kDebug, text);
}

inline NKROVEL20::TPluginManagerProvider* Register(NKROVEL20::IPluginCallbacks* plugin) {
  return boost::dynamic_pointer_cast<NKROVEL20::TPluginManagerNamespace>(NKROVEL20::TRootObject::GetPluginManager())
      ->RegisterPlugin(plugin);
}

/// Does not answer requests.
class TTestPlugin : public NKROVEL20::IPluginCallbacks {
 public:
  explicit TTestPlugin(std::string name) : name_(std::move(name)) {}
  ~TTestPlugin() override { Say(name_ + " deleted"); }
  int GetType() override { return 0; }
  std::string GetName() override { return name_; }
  std::string GetVersion() override { return "1"; }
  std::string GetInterfaceVersion() override { return "1"; }
  void PrepareForUnload() override { delete this; }
  void Init() override { Say(name_ + " init"); }
  void DeInit() override { Say(name_ + " deinit"); }

 private:
  std::string name_;
};

/// Logs when the library is unloaded.
struct TUnloadMark {
  explicit TUnloadMark(std::string library) : name(std::move(library)) {}
  ~TUnloadMark() { Say(name + " unloaded"); }
  TUnloadMark(const TUnloadMark&) = delete;
  TUnloadMark& operator=(const TUnloadMark&) = delete;
  std::string name;
};

}  // namespace testplugin
