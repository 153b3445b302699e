#include "host/velhost/installation.h"

#include <filesystem>

namespace NKROVEL20 {

namespace fs = std::filesystem;

TInstallation::TInstallation() : folder_(fs::read_symlink("/proc/self/exe").parent_path().string()) {}

std::string TInstallation::Path(const char* relative) const {
  return (fs::path(folder_) / relative).lexically_normal().string();
}

std::string TInstallation::Plugin() const { return Path("../" VELHOST_PLUGIN_DIR "/libtorgareg.pi.so"); }
std::string TInstallation::SchemaFolder() const { return Path("../" VELHOST_DATA_DIR "/schema"); }
std::string TInstallation::DemoServer() const { return Path("../" VELHOST_DATA_DIR "/servers/demo.toml"); }
std::string TInstallation::ModuleFolder() const { return Path("../" VELHOST_MODULE_DIR); }

}  // namespace NKROVEL20
