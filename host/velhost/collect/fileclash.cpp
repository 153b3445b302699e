#include "host/velhost/collect/fileclash.h"

#include <sys/stat.h>

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/base/hosterror.h"
#include "host/base/names.h"
#include "host/base/text.h"
#include "host/output/capturefiles.h"
#include "host/velhost/collect/outputtarget.h"
#include "host/velhost/schemaloading.h"
#include "host/velhost/serverconnection.h"

namespace velhost {

namespace {

namespace fs = std::filesystem;

using TFiles = std::vector<TNamedFile>;

struct TIdentity {
  std::optional<std::pair<dev_t, ino_t>> inode;  // of an existing regular file
  fs::path path;                                 // of a file that does not exist

  bool operator==(const TIdentity& other) const {
    return inode ? inode == other.inode : !other.inode && !path.empty() && path == other.path;
  }
};

// Empty if the path exists and is not a regular file: there is nothing to overwrite.
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
  if (commandLine.verb != EVerb::kCollect && commandLine.verb != EVerb::kShow) return files;
  const TCollectOptions& options = commandLine.collect;
  const std::string& output = commandLine.verb == EVerb::kShow ? commandLine.show.output : options.output;
  const bool toStandardOutput = IsStandardOutput(output);
  Add(files, toStandardOutput ? "standard output" : "--output", toStandardOutput ? "/dev/stdout" : output);
  Add(files, "--record", options.record);
  Add(files, "--capture-dir", options.captureDir);
  return files;
}

void AddSchema(TFiles& files, const std::string& path) {
  std::error_code error;
  if (!fs::is_directory(path, error)) return Add(files, "--schema", path);
  for (const auto& entry : fs::directory_iterator(path, error)) {
    if (EqualNames(entry.path().extension().string(), ".mof")) Add(files, "--schema", entry.path().string());
  }
}

TFiles InputsOf(const TCommandLine& commandLine, const TInstallation& installation) {
  TFiles files;
  const TCommonOptions& options = commandLine.common;
  Add(files, "--plugin", options.plugin.empty() ? installation.Plugin() : options.plugin);
  for (const std::string& path : SchemaPaths(options, installation)) AddSchema(files, path);
  for (const std::string& spec : options.serviceProcessors) {
    if (SchemeOf(spec) == "sim" && !RestOf(spec).empty()) Add(files, "--sp", installation.FindServer(RestOf(spec)));
    if (SchemeOf(spec) == "replay") Add(files, "--sp", RestOf(spec));
  }
  Add(files, "--password-file", options.passwordFile);
  return files;
}

[[noreturn]] void Refuse(const TNamedFile& output, const TNamedFile& other) {
  throw THostError(EFailure::kInvalidArgument,
                   output.name + " and " + other.name + " are the same file, which would be overwritten: " +
                       SafeText(output.name == "standard output" ? other.path : output.path));
}

// "node1-cpu_err-0.bin", or the same with the suffix of a file that is not complete
bool LooksLikeCaptureFile(std::string_view name) {
  if (name.ends_with(kPartialSuffix)) name.remove_suffix(kPartialSuffix.size());
  return name.starts_with("node") && name.ends_with(".bin") && name.find('-') != name.rfind('-');
}

void RefuseSame(const TNamedFile& output, const TFiles& others) {
  const TIdentity identity = IdentityOf(output.path);
  for (const TNamedFile& other : others) {
    if (identity == IdentityOf(other.path)) Refuse(output, other);
  }
}

void RefuseInCaptureFolder(const std::string& folder, const TFiles& files) {
  if (folder.empty()) return;
  std::error_code error;
  const fs::path whole = fs::weakly_canonical(fs::absolute(folder, error), error);
  for (const TNamedFile& file : files) {
    const fs::path path = fs::weakly_canonical(fs::absolute(file.path, error), error);
    if (!LooksLikeCaptureFile(path.filename().string()) || path.parent_path() != whole) continue;
    throw THostError(EFailure::kInvalidArgument,
                     "a capture file of --capture-dir could overwrite " + SafeText(file.path) + " (" + file.name + ")");
  }
}

}  // namespace

void RefuseClashingFiles(const TCommandLine& commandLine, const TInstallation& installation) {
  const TFiles outputs = OutputsOf(commandLine);
  TFiles others = InputsOf(commandLine, installation);
  for (const TNamedFile& output : outputs) {
    RefuseSame(output, others);
    others.push_back(output);
  }
  RefuseInCaptureFolder(commandLine.collect.captureDir, others);
}

void RefuseClashWithInputs(const TCommandLine& commandLine, const std::vector<TNamedFile>& inputs) {
  for (const TNamedFile& output : OutputsOf(commandLine)) RefuseSame(output, inputs);
  RefuseInCaptureFolder(commandLine.collect.captureDir, inputs);
}

}  // namespace velhost
