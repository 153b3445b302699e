#include "host/bmc/sim/datafolder.h"

#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <utility>

#include "host/base/hosterror.h"
#include "host/base/sourcereader.h"
#include "host/base/text.h"

namespace velhost {

namespace {

// Non-blocking, so that opening a pipe returns; it is refused afterwards.
constexpr int kOpenFlags = O_RDONLY | O_CLOEXEC | O_NONBLOCK;
constexpr int kMostTries = 100;  // others may rename folders along the path meanwhile

int OpenBeneath(int folder, const std::string& name) {
  open_how how = {};
  how.flags = static_cast<std::uint64_t>(kOpenFlags);
  how.resolve = RESOLVE_BENEATH | RESOLVE_NO_MAGICLINKS;
  for (int tries = 0; tries < kMostTries; ++tries) {
    const long descriptor = syscall(SYS_openat2, folder, name.c_str(), &how, sizeof how);
    if (descriptor >= 0 || (errno != EAGAIN && errno != EINTR)) return static_cast<int>(descriptor);
  }
  return -1;
}

bool IsLink(int folder, const std::string& name) {
  struct stat status = {};
  return fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0 && S_ISLNK(status.st_mode);
}

[[noreturn]] void ThrowLink(const std::string& path, const char* what) {
  throw THostError(EFailure::kMalformed,
                   "found " + Quoted(path) + ", " + what + ", expected a file in the server file's folder or below");
}

}  // namespace

IDataFolder::~IDataFolder() = default;

TDataFolder::TDataFolder(const std::string& path, EWay way)
    : file_(path), prefix_(path.substr(0, path.rfind('/') + 1)), way_(way) {}

TDescriptor TDataFolder::OpenStepByStep(const std::string& name) const {
  TDescriptor folder(openat(folder_.Get(), ".", O_PATH | O_DIRECTORY | O_CLOEXEC));
  std::size_t start = 0;
  for (std::size_t end = name.find('/'); end != std::string::npos; end = name.find('/', start)) {
    const std::string part = name.substr(start, end - start);
    start = end + 1;
    if (part.empty()) continue;
    TDescriptor next(openat(folder.Get(), part.c_str(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!next) {
      const int error = errno;
      if (IsLink(folder.Get(), part)) ThrowLink(name, "which goes through a symbolic link");
      ThrowUnreadable(prefix_ + name, "open", error);
    }
    folder = std::move(next);
  }
  TDescriptor file(openat(folder.Get(), name.substr(start).c_str(), kOpenFlags | O_NOFOLLOW));
  if (!file && errno == ELOOP) ThrowLink(name, "which is a symbolic link");
  if (!file) ThrowUnreadable(prefix_ + name, "open", errno);
  return file;
}

TDescriptor TDataFolder::OpenFile(const std::string& name) {
  if (way_ == EWay::kKernel) {
    TDescriptor file(OpenBeneath(folder_.Get(), name));
    if (file) return file;
    if (errno == EXDEV) ThrowLink(name, "which is outside the folder because of a symbolic link");
    // The call is unknown to the kernel or blocked by a container's system call filter.
    if (errno != ENOSYS && errno != EPERM) ThrowUnreadable(prefix_ + name, "open", errno);
  }
  return OpenStepByStep(name);
}

TStoredBytes TDataFolder::Open(const std::string& name, std::size_t limit) {
  if (!folder_) {
    struct stat status = {};
    if (stat(file_.c_str(), &status) == 0 && S_ISFIFO(status.st_mode)) {
      throw THostError(EFailure::kMalformed,
                       "found a data file, but the server file comes from a pipe, which has no folder, expected a "
                       "server file in a regular file, or the bytes themselves");
    }
    folder_ = TDescriptor(open(prefix_.empty() ? "." : prefix_.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (!folder_) ThrowUnreadable(prefix_, "open", errno);
  }
  TDescriptor file = OpenFile(name);
  struct stat status = {};
  if (fstat(file.Get(), &status) != 0) ThrowUnreadable(prefix_ + name, "open", errno);
  if (!S_ISREG(status.st_mode)) {
    throw THostError(EFailure::kAbsent, "cannot read " + prefix_ + name + ": not a regular file");
  }
  const auto size = static_cast<std::size_t>(status.st_size);
  if (size > limit) ThrowTooLarge(prefix_ + name, limit);
  return {std::move(file), size};
}

}  // namespace velhost
