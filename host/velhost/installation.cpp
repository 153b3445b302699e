#include "host/velhost/installation.h"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <sstream>

#include "host/base/hosterror.h"
#include "host/base/text.h"

namespace velhost {

namespace fs = std::filesystem;

TInstallation::TInstallation() : folder_(fs::read_symlink("/proc/self/exe").parent_path().string()) {}

std::string TInstallation::Path(const char* relative) const {
  return (fs::path(folder_) / relative).lexically_normal().string();
}

std::string TInstallation::Plugin() const { return Path("../" VELHOST_PLUGIN_DIR "/libtorgareg.pi.so"); }
std::string TInstallation::SchemaFolder() const { return Path("../" VELHOST_DATA_DIR "/schema"); }
std::string TInstallation::ServerFolder() const { return Path("../" VELHOST_DATA_DIR "/servers"); }
std::string TInstallation::ModuleFolder() const { return Path("../" VELHOST_MODULE_DIR); }

std::string TInstallation::FindServer(const std::string& name) const {
  std::error_code error;
  const bool isHere = fs::symlink_status(name, error).type() != fs::file_type::not_found;
  if (isHere || name.find('/') != std::string::npos) return name;
  std::string shipped = ServerFolder() + "/" + name;
  if (fs::exists(shipped, error)) return shipped;
  throw THostError(EFailure::kAbsent, "cannot open " + SafeText(name) +
                                          ": no such file here or among the shipped servers in " +
                                          SafeText(ServerFolder()));
}

std::string FindProgram(const std::string& name) {
  const char* const path = std::getenv("PATH");
  std::istringstream folders(path != nullptr ? path : "/usr/bin:/bin");
  for (std::string folder; std::getline(folders, folder, ':');) {
    if (!folder.starts_with('/')) continue;
    std::string file = folder + "/" + name;
    if (::access(file.c_str(), X_OK) == 0) return file;
  }
  return {};
}

}  // namespace velhost
