// Loads plugins into the process, tells which plugin object belongs to the library that is being loaded, and unloads
// them.
#pragma once

#include <boost/function.hpp>
#include <boost/shared_ptr.hpp>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "host/base/api.h"
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

/// How libraries are loaded: by the operating system, or by a test double.
class VELHOST_API ILibraryLoader {
 public:
  virtual ~ILibraryLoader();
  /// Runs the library's initialisers; their exceptions propagate. Returns null on failure, with the reason in
  /// `error`.
  virtual void* Open(const std::string& path, std::string& error) = 0;
  virtual void Close(void* library) = 0;
};

/// Uses dlopen and dlclose. In sanitizer builds libraries stay mapped, so that the leak checker can attribute
/// what plugins never free.
class VELHOST_API TDynamicLibraryLoader : public ILibraryLoader {
 public:
  void* Open(const std::string& path, std::string& error) override;
  void Close(void* library) override;
};

/// How a plugin identifies itself.
struct TPluginIdentity {
  std::string name;
  std::string version;
  std::string interfaceVersion;
  int type = 0;
};

/// A registered plugin. The destructor tells the plugin to delete its object and unloads the library.
///
/// Any exception from the plugin becomes a THostError (kDefect) that names the plugin and the operation; a
/// THostError, which is the host's own, passes through unchanged.
class VELHOST_API TLoadedPlugin {
 public:
  TLoadedPlugin(ILibraryLoader& loader, void* library, std::unique_ptr<TPluginManagerProvider> provider);
  ~TLoadedPlugin();
  TLoadedPlugin(const TLoadedPlugin&) = delete;
  TLoadedPlugin& operator=(const TLoadedPlugin&) = delete;

  const std::string& Path() const { return path_; }
  TPluginIdentity Identity() const;
  void Init();
  void DeInit();
  /// Does what the destructor does, but reports failure: a plugin that fails to prepare for unloading stays
  /// mapped. Nothing else may be called afterwards.
  void Unload();
  IPluginCallbacks& Callbacks() const { return *provider_->Plugin(); }
  /// Null if the plugin does not answer requests.
  IPluginBasicQueryCallbacks* Query() const;

 private:
  void Call(const char* operation, const boost::function<void()>& call) const;

  ILibraryLoader& loader_;
  void* library_;
  std::string path_;
  std::unique_ptr<TPluginManagerProvider> provider_;  ///< null once unloaded
};

class VELHOST_API TPluginLoader {
 public:
  /// Called with the message when a library's initialiser throws; must not return. By then the library is
  /// mapped but half initialised, and the dynamic loader's lock may still be held, so the only safe thing to
  /// do is to leave the process at once. The default prints the message and aborts.
  using TFatalHandler = boost::function<void(const std::string&)>;

  /// Installs the registry as the process's plugin manager. `loader` is not owned.
  explicit TPluginLoader(ILibraryLoader& loader);
  ~TPluginLoader();
  TPluginLoader(const TPluginLoader&) = delete;
  TPluginLoader& operator=(const TPluginLoader&) = delete;

  void SetFatalHandler(TFatalHandler handler) { fatal_ = std::move(handler); }

  /// Throws THostError (kAbsent) if the file is missing, is not a library, or does not register exactly one
  /// plugin object; in that case the library is unloaded again.
  std::unique_ptr<TLoadedPlugin> Load(const std::string& path);

 private:
  /// On success, the registry is still in the loading state.
  void* OpenLibrary(const std::string& path);

  ILibraryLoader& loader_;
  boost::shared_ptr<TPluginRegistry> registry_;
  TFatalHandler fatal_;
};

}  // namespace velhost
