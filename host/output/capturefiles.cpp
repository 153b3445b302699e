#include "host/output/capturefiles.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <utility>

#include "host/base/digits.h"
#include "host/base/hosterror.h"
#include "host/base/names.h"
#include "host/base/text.h"
#include "host/base/utf8.h"
#include "host/output/outputfile.h"
#include "host/profile/collectorprofile.h"

namespace velhost {

namespace {

std::string TextOf(const TInstance& instance, std::string_view property) {
  const TCIMValue* value = instance.Find(property);
  return value != nullptr && !value->IsNull() ? value->ToString(10) : std::string();
}

std::string TimeOf(const TInstance& instance, std::string_view property) {
  const TCIMValue* value = instance.Find(property);
  const bool isTime =
      value != nullptr && !value->IsNull() && !value->IsArray() && value->GetType() == TCIMValue::TCIMType::kDateTime;
  return isTime ? value->ToDateTime().ToIso8601() : std::string();
}

}  // namespace

std::optional<std::vector<std::uint8_t>> DecodeHexPairs(std::string_view text) {
  if (!text.empty() && text.back() == ' ') text.remove_suffix(1);
  for (std::size_t i = 2; i < text.size(); i += 3) {
    if (text[i] != ' ') return std::nullopt;
  }
  THexPairs pairs = ParseHexPairs(text);
  const bool hasBlanksOnlyThere = text.empty() || pairs.bytes.size() * 3 == text.size() + 1;
  if (pairs.errorAt != std::string_view::npos || !hasBlanksOnlyThere) return std::nullopt;
  return std::move(pairs.bytes);
}

std::optional<TCaptureFile> CaptureFileOf(const TInstance& instance) {
  if (!EqualNames(instance.Class().Name(), CollectorProfile::kCaptureClass)) return std::nullopt;
  const TCIMValue* content = instance.Find(kCaptureDataProperty);
  if (content == nullptr || content->IsNull() || content->IsArray()) return std::nullopt;
  auto data = DecodeHexPairs(content->ToString(10));
  if (!data) return std::nullopt;
  return TCaptureFile{TextOf(instance, "FileName"), TextOf(instance, "SourceNode"), TextOf(instance, "RecordID"),
                      TimeOf(instance, "MessageTimestamp"), std::move(*data)};
}

namespace {

constexpr std::size_t kLongestPart = 76;

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
  if (!folder_) FailToCreate(errno == ENOTDIR ? "exists and is not a folder" : std::strerror(errno));
}

std::optional<std::string> TCaptureFolder::Write(const TInstance& instance, bool isCut) const {
  const auto capture = CaptureFileOf(instance);
  if (!capture) return std::nullopt;
  const std::string whole = CaptureFileName(*capture);
  const std::string partial = whole + std::string(kPartialSuffix);
  const std::string& name = isCut ? partial : whole;
  const std::string path = std::filesystem::path(path_) / name;
  const std::string content(capture->data.begin(), capture->data.end());
  TOutputFile file(folder_.Get(), name, path);
  file.Write(content);
  file.Commit();
  Remove(isCut ? whole : partial);
  return path;
}

void TCaptureFolder::Remove(const std::string& name) const {
  if (::unlinkat(folder_.Get(), name.c_str(), 0) == 0 || errno == ENOENT) return;
  const int error = errno;
  throw THostError(EFailure::kNotWritten,
                   fmt::format("cannot remove {}: {}", SafeText((std::filesystem::path(path_) / name).string()),
                               std::strerror(error)));
}

void TCaptureFolder::FailToCreate(const std::string& reason) const {
  throw THostError(EFailure::kNotCreated, fmt::format("cannot create the folder {}: {}", SafeText(path_), reason));
}

}  // namespace velhost
