// Loading plugins into the process and taking them out again.
#pragma once
#include "host/base/api.h"

#include <boost/function.hpp>
#include <boost/shared_ptr.hpp>
#include <memory>
#include <string>
#include <utility>

#include "host/plugins/pluginregistry.h"

namespace velhost {

/// How libraries get into the process; the operating system's loader, or a double.
class VELHOST_API ILibraryLoader {
 public:
  virtual ~ILibraryLoader();
  /// Runs the library's initialisers. Null on failure, with the reason in `error`. What an
  /// initialiser throws passes through.
  virtual void* Open(const std::string& path, std::string& error) = 0;
  virtual void Close(void* library) = 0;
};

/// dlopen and dlclose. In sanitizer builds libraries stay mapped, so that the leak checker can
/// attribute what plugins keep for good.
class VELHOST_API TDynamicLibraryLoader : public ILibraryLoader {
 public:
  void* Open(const std::string& path, std::string& error) override;
  void Close(void* library) override;
};

/// What a plugin says of itself.
struct TPluginIdentity {
  std::string name;
  std::string version;
  std::string interfaceVersion;
  int type = 0;
};

/// A registered plugin. Destroying it has the plugin delete its object and unloads the library.
///
/// Whatever an operation of the plugin throws arrives as THostError (kInternal) that names the plugin
/// and the operation; a THostError is the host's own and passes through.
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
  /// What destruction does, with its failure told: a plugin that fails to prepare stays mapped. Nothing
  /// else may be called after it.
  void Unload();
  IPluginCallbacks& Callbacks() const { return *provider_->Plugin(); }
  /// Null for a plugin that answers no requests.
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
  /// Called when a library's initialiser throws, with the message; does not return. The library is
  /// then mapped, half initialised and with the dynamic loader's lock in doubt, so that nothing but
  /// leaving the process at once is safe. The default prints the message and calls _exit(70).
  using TFatalHandler = boost::function<void(const std::string&)>;

  /// Installs the registry as the process's plugin manager. `loader` is not owned.
  explicit TPluginLoader(ILibraryLoader& loader);
  ~TPluginLoader();
  TPluginLoader(const TPluginLoader&) = delete;
  TPluginLoader& operator=(const TPluginLoader&) = delete;

  void SetFatalHandler(TFatalHandler handler) { fatal_ = std::move(handler); }

  /// Throws THostError (kNoInput) when the file is missing or no library, or when it does not
  /// register exactly one plugin object; the library is unloaded again.
  std::unique_ptr<TLoadedPlugin> Load(const std::string& path);

 private:
  /// Leaves the registry loading, unless it throws.
  void* OpenLibrary(const std::string& path);

  ILibraryLoader& loader_;
  boost::shared_ptr<TPluginRegistry> registry_;
  TFatalHandler fatal_;
};

}  // namespace velhost
