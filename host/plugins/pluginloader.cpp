#include "host/plugins/pluginloader.h"

#include <dlfcn.h>
#include <unistd.h>

#include <boost/make_shared.hpp>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <utility>
#include <vector>

#include "host/base/hosterror.h"
#include "host/base/text.h"
#include "host/model/hostservices.h"

namespace NKROVEL20 {

TPluginManagerNamespace::~TPluginManagerNamespace() = default;

}  // namespace NKROVEL20

namespace velhost {

TPluginRegistry::TPluginRegistry() = default;
TPluginRegistry::~TPluginRegistry() = default;

TPluginManagerProvider* TPluginRegistry::RegisterPlugin(IPluginCallbacks* plugin) {
  if (!loading_) {
    outcome_.refusals.emplace_back("a plugin registered while no library was being loaded");
  } else if (plugin == nullptr) {
    outcome_.refusals.emplace_back("it registered a null plugin object");
  } else if (outcome_.provider) {
    outcome_.refusals.emplace_back("it registered a second plugin object");
  } else {
    outcome_.provider = std::make_unique<TPluginManagerProvider>(path_, plugin);
    return outcome_.provider.get();
  }
  return nullptr;
}

boost::shared_ptr<ICIMClass> TPluginRegistry::GetClass(const std::string&, const TPropertyMap&) { return {}; }

void TPluginRegistry::BeginLoading(const std::string& path) {
  loading_ = true;
  path_ = path;
  outcome_ = TOutcome();
}

TPluginRegistry::TOutcome TPluginRegistry::EndLoading() {
  loading_ = false;
  return std::exchange(outcome_, TOutcome());
}

namespace {

// dlopen is declared noexcept, so an exception from an initialiser would end in std::terminate. If it is
// called through a pointer without noexcept, the exception can be caught.
using TOpenFunction = void* (*)(const char*, int);

void PrintAndAbort(const std::string& message) {
  const std::string text = message + "\n";
  [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, text.data(), text.size());
  std::abort();
}

std::string CurrentExceptionText() {
  try {
    throw;
  } catch (const std::exception& exception) {
    return exception.what();
  } catch (...) {
    return "an exception of unknown type";
  }
}

}  // namespace

ILibraryLoader::~ILibraryLoader() = default;

void* TDynamicLibraryLoader::Open(const std::string& path, std::string& error) {
  int flags = RTLD_NOW | RTLD_LOCAL;
#ifdef VELHOST_SANITIZED
  flags |= RTLD_NODELETE;
#endif
  const volatile TOpenFunction open = &dlopen;
  // A bare name would be looked up in the system's library folders.
  const std::string file = path.find('/') == std::string::npos ? "./" + path : path;
  void* const library = open(file.c_str(), flags);
  if (library == nullptr) error = dlerror();
  return library;
}

void TDynamicLibraryLoader::Close(void* library) { dlclose(library); }

TLoadedPlugin::TLoadedPlugin(ILibraryLoader& loader, void* library, std::unique_ptr<TPluginManagerProvider> provider)
    : loader_(loader), library_(library), path_(provider->Path()), provider_(std::move(provider)) {}

TLoadedPlugin::~TLoadedPlugin() {
  try {
    Unload();
  } catch (const THostError&) {  // another failure is already being reported
  }
}

void TLoadedPlugin::Unload() {
  if (!provider_) return;
  const auto provider = std::move(provider_);
  Call("PrepareForUnload", [&provider] { provider->Plugin()->PrepareForUnload(); });
  loader_.Close(library_);
}

TPluginIdentity TLoadedPlugin::Identity() const {
  TPluginIdentity identity;
  Call("GetName", [&] { identity.name = Callbacks().GetName(); });
  Call("GetVersion", [&] { identity.version = Callbacks().GetVersion(); });
  Call("GetInterfaceVersion", [&] { identity.interfaceVersion = Callbacks().GetInterfaceVersion(); });
  Call("GetType", [&] { identity.type = Callbacks().GetType(); });
  return identity;
}

void TLoadedPlugin::Init() {
  Call("Init", [this] { Callbacks().Init(); });
}

void TLoadedPlugin::DeInit() {
  Call("DeInit", [this] { Callbacks().DeInit(); });
}

void TLoadedPlugin::Call(const char* operation, const boost::function<void()>& call) const {
  try {
    call();
  } catch (const THostError&) {
    throw;
  } catch (...) {
    throw THostError(EFailure::kDefect,
                     "plugin " + SafeText(path_) + " failed in " + operation + ": " + CurrentExceptionText());
  }
}

IPluginBasicQueryCallbacks* TLoadedPlugin::Query() const {
  return dynamic_cast<IPluginBasicQueryCallbacks*>(provider_->Plugin());
}

TPluginLoader::TPluginLoader(ILibraryLoader& loader)
    : loader_(loader), registry_(boost::make_shared<TPluginRegistry>()), fatal_(&PrintAndAbort) {
  THostServices::SetPluginManager(registry_);
}

TPluginLoader::~TPluginLoader() { THostServices::SetPluginManager({}); }

void* TPluginLoader::OpenLibrary(const std::string& path) {
  if (access(path.c_str(), R_OK) != 0) {
    const int error = errno;
    throw THostError(error == EACCES ? EFailure::kDenied : EFailure::kAbsent,
                     "cannot open plugin " + SafeText(path) + ": " + std::strerror(error));
  }
  std::string error;
  void* library = nullptr;
  registry_->BeginLoading(path);
  try {
    library = loader_.Open(path, error);
  } catch (...) {
    fatal_("plugin " + SafeText(path) + " threw while it was being loaded: " + CurrentExceptionText());
    std::terminate();  // the handler does not return
  }
  if (library == nullptr) {
    registry_->EndLoading();
    throw THostError(EFailure::kAbsent, "plugin " + SafeText(path) + " cannot be loaded as a library: " + error);
  }
  return library;
}

std::unique_ptr<TLoadedPlugin> TPluginLoader::Load(const std::string& path) {
  void* const library = OpenLibrary(path);
  TPluginRegistry::TOutcome outcome = registry_->EndLoading();
  if (outcome.provider && outcome.refusals.empty()) {
    return std::make_unique<TLoadedPlugin>(loader_, library, std::move(outcome.provider));
  }
  std::string reason =
      outcome.refusals.empty() ? "it registered no plugin object while it was being loaded" : outcome.refusals.front();
  if (outcome.provider) {
    const TLoadedPlugin refused(loader_, library, std::move(outcome.provider));
  } else {
    loader_.Close(library);
  }
  throw THostError(EFailure::kAbsent, "plugin " + SafeText(path) + " cannot be used: " + reason);
}

}  // namespace velhost
