#include "host/velhost/fileclash.h"

#include <sys/stat.h>

#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "host/core/hosterror.h"
#include "host/velhost/outputtarget.h"
#include "host/velhost/schemaloading.h"

namespace NKROVEL20 {

namespace {

namespace fs = std::filesystem;

struct TNamedFile {
  std::string name;  // "--log", for messages
  std::string path;
};
using TFiles = std::vector<TNamedFile>;

struct TIdentity {
  std::optional<std::pair<dev_t, ino_t>> inode;  // of a regular file that is there
  fs::path path;                                 // of one that is not

  bool operator==(const TIdentity& other) const {
    return inode ? inode == other.inode : !other.inode && !path.empty() && path == other.path;
  }
};

// Empty for what is there and is no regular file: it holds nothing that could be lost.
TIdentity IdentityOf(const std::string& path) {
  struct stat status {};
  if (stat(path.c_str(), &status) == 0) {
    if (!S_ISREG(status.st_mode)) return {};
    return {std::pair(status.st_dev, status.st_ino), {}};
  }
  std::error_code error;
  return {std::nullopt, fs::weakly_canonical(fs::absolute(path, error), error)};
}

void Add(TFiles& files, const std::string& name, const std::string& path) {
  if (!path.empty()) files.push_back({name, path});
}

TFiles OutputsOf(const TCommandLine& commandLine) {
  TFiles files;
  Add(files, "--log", commandLine.common.log);
  if (commandLine.verb != EVerb::kCollect) return files;
  const TCollectOptions& options = commandLine.collect;
  const bool toStandardOutput = IsStandardOutput(options.output);
  Add(files, toStandardOutput ? "standard output" : "--output", toStandardOutput ? "/dev/stdout" : options.output);
  Add(files, "--record", options.record);
  Add(files, "--capture-dir", options.captureDir);
  return files;
}

void AddSchema(TFiles& files, const std::string& path) {
  std::error_code error;
  if (!fs::is_directory(path, error)) return Add(files, "--schema", path);
  for (const auto& entry : fs::directory_iterator(path, error)) {
    if (entry.path().extension() == ".mof") Add(files, "--schema", entry.path().string());
  }
}

TFiles InputsOf(const TCommandLine& commandLine, const TInstallation& installation) {
  TFiles files;
  const TCommonOptions& options = commandLine.common;
  Add(files, "--plugin", options.plugin.empty() ? installation.Plugin() : options.plugin);
  for (const std::string& path : SchemaPaths(options, installation)) AddSchema(files, path);
  for (const std::string& spec : options.serviceProcessors) {
    const std::size_t colon = spec.find(':');
    const std::string scheme = spec.substr(0, colon);
    if (scheme == "sim" || scheme == "replay")
      Add(files, "--sp", colon == std::string::npos ? "" : spec.substr(colon + 1));
  }
  Add(files, "--password-file", options.passwordFile);
  return files;
}

[[noreturn]] void Refuse(const TNamedFile& output, const TNamedFile& other) {
  throw THostError(EExitStatus::kUsage, output.name + " and " + other.name +
                                            " are one file, which would be overwritten: " +
                                            (output.name == "standard output" ? other.path : output.path));
}

// "node1-cpu_err-0.bin"
bool LooksLikeCaptureFile(const std::string& name) {
  return name.starts_with("node") && name.ends_with(".bin") && name.find('-') != name.rfind('-');
}

void RefuseInCaptureFolder(const std::string& folder, const TNamedFile& file) {
  std::error_code error;
  const fs::path path = fs::weakly_canonical(fs::absolute(file.path, error), error);
  if (!LooksLikeCaptureFile(path.filename().string())) return;
  if (path.parent_path() != fs::weakly_canonical(fs::absolute(folder, error), error)) return;
  throw THostError(EExitStatus::kUsage,
                   file.name + " names " + file.path + ", which a capture file of --capture-dir could overwrite");
}

}  // namespace

void RefuseClashingFiles(const TCommandLine& commandLine, const TInstallation& installation) {
  const TFiles outputs = OutputsOf(commandLine);
  TFiles others = InputsOf(commandLine, installation);
  for (const TNamedFile& output : outputs) {
    const TIdentity identity = IdentityOf(output.path);
    for (const TNamedFile& other : others) {
      if (identity == IdentityOf(other.path)) Refuse(output, other);
    }
    others.push_back(output);
  }
  if (commandLine.collect.captureDir.empty()) return;
  for (const TNamedFile& other : others) RefuseInCaptureFolder(commandLine.collect.captureDir, other);
}

}  // namespace NKROVEL20
