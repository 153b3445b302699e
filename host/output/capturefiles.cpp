#include "host/output/capturefiles.h"

#include <fmt/format.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

#include "host/core/hosterror.h"
#include "host/core/unsafetext.h"
#include "host/core/utf8.h"
#include "host/output/outputfile.h"

namespace NKROVEL20 {

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
  if (::mkdir(path.c_str(), 0777) == 0) return;
  const int error = errno;
  if (error == EEXIST && std::filesystem::is_directory(path)) return;
  const char* reason = error == EEXIST ? "it is there and is no folder" : std::strerror(error);
  throw THostError(EExitStatus::kCannotCreate, fmt::format("cannot create the folder {}: {}", path, reason));
}

std::optional<std::string> TCaptureFolder::Write(const TInstance& instance) const {
  const auto capture = CaptureFileOf(instance);
  if (!capture) return std::nullopt;
  const std::string path = std::filesystem::path(path_) / CaptureFileName(*capture);
  const std::string content(capture->data.begin(), capture->data.end());
  TOutputFile file(path);
  file.Write(content);
  file.Commit();
  return path;
}

}  // namespace NKROVEL20
