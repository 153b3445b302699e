#include "host/output/outputplace.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <cstring>
#include <filesystem>
#include <utility>

namespace velhost {

namespace {

constexpr int kMostLinks = 40;  // the kernel's limit

[[noreturn]] void Fail(int error) { throw TNoPlace{std::strerror(error)}; }

bool IsSame(const struct stat& a, const struct stat& b) { return a.st_dev == b.st_dev && a.st_ino == b.st_ino; }

struct stat StatusOf(int descriptor) {
  struct stat status {};
  if (::fstat(descriptor, &status) != 0) Fail(errno);
  return status;
}

std::string TargetOf(int link) {
  std::array<char, PATH_MAX> target{};
  const ssize_t size = ::readlinkat(link, "", target.data(), target.size());
  if (size < 0) Fail(errno);
  return {target.data(), static_cast<std::size_t>(size)};
}

TOutputPlace PlaceIn(int start, const std::string& path) {
  const std::filesystem::path whole(path);
  const std::string name = whole.filename();
  if (name.empty() || name == "." || name == "..") {
    struct stat status {};
    const bool exists = ::fstatat(start, path.c_str(), &status, 0) == 0;
    throw TNoPlace{exists && S_ISDIR(status.st_mode) ? "is a folder" : "does not name a file"};
  }
  const std::string folder = whole.parent_path();
  TOutputPlace place;
  place.folder = TDescriptor(::openat(start, folder.empty() ? "." : folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  if (!place.folder) Fail(errno);
  place.name = name;
  return place;
}

// The target of the name, with links followed by the kernel; empty if it does not exist.
std::optional<struct stat> LookUp(const TOutputPlace& place) {
  const TDescriptor found(::openat(place.folder.Get(), place.name.c_str(), O_PATH | O_CLOEXEC));
  if (found) return StatusOf(found.Get());
  if (errno != ENOENT) Fail(errno);
  return std::nullopt;
}

}  // namespace

TOutputPlace FolderAndName(const std::string& path) { return PlaceIn(AT_FDCWD, path); }

TOutputPlace FindOutputPlace(const std::string& path) {
  TOutputPlace place = FolderAndName(path);
  place.existing = LookUp(place);
  // Only a regular file is replaced, so only then must its own folder be found.
  if (place.existing && !S_ISREG(place.existing->st_mode)) return place;
  for (int i = 0; i <= kMostLinks; ++i) {
    // The link is held open while the kernel checks its name, so the link that is followed is the one that was
    // checked.
    const TDescriptor entry(::openat(place.folder.Get(), place.name.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
    if (!entry && errno != ENOENT) Fail(errno);
    const bool isLink = entry && S_ISLNK(StatusOf(entry.Get()).st_mode);
    const auto found = LookUp(place);
    const bool isSame = found.has_value() == place.existing.has_value() && (!found || IsSame(*found, *place.existing));
    if (!isSame) throw TNoPlace{"changed while being looked up"};
    if (!isLink) return place;
    TOutputPlace next = PlaceIn(place.folder.Get(), TargetOf(entry.Get()));
    next.existing = place.existing;
    place = std::move(next);
  }
  Fail(ELOOP);
}

}  // namespace velhost
