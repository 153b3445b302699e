#include "host/bmc/lan/lanclient.h"

#include <dlfcn.h>
#include <unistd.h>

#include <utility>

#include "host/base/hosterror.h"
#include "host/bmc/lan/lanmodule.h"

namespace velhost {

namespace {

[[noreturn]] void ThrowUnavailable(const std::string& message) {
  throw THostError(EExitStatus::kUnavailable, "lan: " + message);
}

std::string FindModule(const std::vector<std::string>& folders) {
  std::string tried;
  for (const std::string& folder : folders) {
    std::string file = folder + "/" + kLanModuleFile;
    if (access(file.c_str(), F_OK) == 0) return file;
    tried += "\n  " + file;
  }
#ifdef VELHOST_WITHOUT_LAN
  ThrowUnavailable("this velhost was built without LAN support (VELHOST_LAN=OFF)");
#else
  ThrowUnavailable(std::string("the LAN module ") + kLanModuleFile +
                   " is not installed; the package velhost-lan has it, and \"cmake --build "
                   "build/release --target velhost_lan\" builds it. Looked for" +
                   tried);
#endif
}

/// Never unloaded: a thread that a stopped run left behind may still be inside.
const VelLanModule& LoadModule(const std::string& file) {
  void* const library = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) {
    const char* const reason = dlerror();
    ThrowUnavailable("cannot load the LAN module: " + std::string(reason ? reason : file));
  }
  const auto entry = reinterpret_cast<VelLanEntry>(dlsym(library, VELHOST_LAN_ENTRY));
  const VelLanModule* const module = entry != nullptr ? entry() : nullptr;
  if (module == nullptr || module->version != VELHOST_LAN_INTERFACE) {
    ThrowUnavailable(file + " is not a LAN module of this velhost's version");
  }
  return *module;
}

}  // namespace

std::unique_ptr<IServiceProcessor> OpenLan(const std::vector<TLanOptions>& options, const TStopSignal& stop,
                                           const std::vector<std::string>& folders, TLanNotice notice) {
  const VelLanModule& module = LoadModule(FindModule(folders));
  return std::make_unique<TLanServiceProcessor>(module, options, stop, std::move(notice));
}

}  // namespace velhost
