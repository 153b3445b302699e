#include "host/output/capturefiles.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

#include "host/base/hosterror.h"
#include "host/base/unsafetext.h"
#include "host/base/utf8.h"
#include "host/output/outputfile.h"

namespace velhost {

namespace {

constexpr std::size_t kLongestPart = 80;

std::string NamePart(const std::string& text) {
  std::string part;
  for (std::size_t at = 0; at < text.size();) {
    const TCodePoint next = NextCodePoint(text, at);
    const bool isUnfit = next.value == '/' || (next.valid && IsUnsafe(next.value));
    part += isUnfit ? "_" : text.substr(at, next.size);
    at += next.size;
  }
  return part.substr(0, kLongestPart);
}

}  // namespace

std::string CaptureFileName(const TCaptureFile& capture) {
  return fmt::format("node{}-{}-{}.bin", NamePart(capture.sourceNode), NamePart(capture.fileName),
                     NamePart(capture.recordId));
}

TCaptureFolder::TCaptureFolder(const std::string& path) : path_(path) {
  const bool isNew = ::mkdir(path.c_str(), 0777) == 0;
  if (!isNew && errno != EEXIST) FailToCreate(std::strerror(errno));
  folder_ = TDescriptor(::open(path.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  if (!folder_) FailToCreate(errno == ENOTDIR ? "it exists and is not a folder" : std::strerror(errno));
}

std::optional<std::string> TCaptureFolder::Write(const TInstance& instance) const {
  const auto capture = CaptureFileOf(instance);
  if (!capture) return std::nullopt;
  const std::string name = CaptureFileName(*capture);
  const std::string path = std::filesystem::path(path_) / name;
  const std::string content(capture->data.begin(), capture->data.end());
  TOutputFile file(folder_.Get(), name, path);
  file.Write(content);
  file.Commit();
  return path;
}

void TCaptureFolder::FailToCreate(const std::string& reason) const {
  throw THostError(EExitStatus::kCannotCreate, fmt::format("cannot create the folder {}: {}", SafeText(path_), reason));
}

}  // namespace velhost
