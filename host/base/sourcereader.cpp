#include "host/base/sourcereader.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <filesystem>

#include "host/base/descriptor.h"
#include "host/base/hosterror.h"
#include "host/base/text.h"

namespace velhost {

void ThrowUnreadable(const std::string& path, const char* action, int error) {
  throw THostError(error == EACCES || error == EPERM ? EFailure::kDenied : EFailure::kAbsent,
                   std::string("cannot ") + action + " " + SafeText(path) + ": " + std::strerror(error));
}

void ThrowTooLarge(const std::string& path, std::size_t limit) {
  throw THostError(EFailure::kTooLarge,
                   SafeText(path) + " is larger than the limit of " + std::to_string(limit) + " bytes");
}

namespace {

using std::chrono::milliseconds;

constexpr milliseconds kStep{100};
constexpr std::size_t kPiece = std::size_t{4} << 20U;  // bytes between two checks for a stop
constexpr std::size_t kPipePiece = 65536;

// The path of the file that is open. The name it was opened by may lead elsewhere by now.
std::string RealPathOf(int descriptor) {
  std::error_code failed;
  return std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(descriptor), failed).string();
}

bool IsBelow(const std::string& path, std::string folder) {
  if (path.empty() || folder.empty()) return false;
  if (folder.back() != '/') folder += '/';
  return path.compare(0, folder.size(), folder) == 0;
}

}  // namespace

TEndedReading::~TEndedReading() = default;

ISourceReader::~ISourceReader() = default;

bool ISourceReader::LiesIn(const std::string& /*folder*/) { return false; }

void ISourceReader::CheckStop() {}

std::string TFileReader::ReadPipe(int descriptor, const std::string& path, std::size_t limit) {
  // A text that fits the first piece is read in place and never moved: it may be a password, and this leaves no
  // copies of it.
  std::string content;
  content.reserve(std::min(limit, kPipePiece) + 1);
  milliseconds silence{0};
  while (silence < patience_) {
    CheckStop();
    const std::size_t before = content.size();
    content.resize(before + std::min(limit + 1 - before, kPipePiece));
    const ssize_t n = read(descriptor, content.data() + before, content.size() - before);
    const int error = n < 0 ? errno : 0;
    content.resize(before + static_cast<std::size_t>(std::max<ssize_t>(n, 0)));
    if (n < 0 && error != EAGAIN && error != EINTR) ThrowUnreadable(path, "read", error);
    if (n > 0) {
      if (content.size() > limit) ThrowTooLarge(path, limit);
      silence = {};
      continue;
    }
    if (n == 0 && !content.empty()) return content;
    // End of file before any byte: the writers have gone, or none has come yet.
    pollfd waiter = {descriptor, POLLIN, 0};
    const int found = poll(&waiter, 1, static_cast<int>(kStep.count()));
    if (found < 0 && errno != EINTR) ThrowUnreadable(path, "read", errno);
    if (n == 0 && found >= 0 && (waiter.revents & POLLHUP) != 0) return content;
    silence += kStep;
  }
  throw THostError(EFailure::kAbsent, "cannot read " + SafeText(path) + ": nothing was written to the pipe");
}

std::string TFileReader::Read(const std::string& path, std::size_t limit) {
  // Non-blocking, so that opening a pipe returns; it is refused below, or waited for there.
  realPath_.clear();
  readPipe_ = false;
  const TDescriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  if (!file) ThrowUnreadable(path, "open", errno);
  struct stat status = {};
  if (fstat(file.Get(), &status) != 0) ThrowUnreadable(path, "read", errno);
  if (S_ISDIR(status.st_mode)) ThrowUnreadable(path, "read", EISDIR);
  if (S_ISFIFO(status.st_mode) && std::find(pipes_.begin(), pipes_.end(), path) != pipes_.end()) {
    readPipe_ = true;
    return ReadPipe(file.Get(), path, limit);
  }
  if (!S_ISREG(status.st_mode))
    throw THostError(EFailure::kAbsent, "cannot read " + SafeText(path) + ": not a regular file");
  if (static_cast<std::uint64_t>(status.st_size) > limit) ThrowTooLarge(path, limit);
  realPath_ = RealPathOf(file.Get());
  std::string content(static_cast<std::size_t>(status.st_size), '\0');
  std::size_t got = 0;
  while (got < content.size()) {
    CheckStop();
    const ssize_t n = read(file.Get(), content.data() + got, std::min(content.size() - got, kPiece));
    if (n < 0 && errno == EINTR) continue;
    if (n < 0) ThrowUnreadable(path, "read", errno);
    if (n == 0) break;
    got += static_cast<std::size_t>(n);
  }
  content.resize(got);
  return content;
}

bool TFileReader::LiesIn(const std::string& folder) {
  if (readPipe_) return true;
  const auto [known, isNew] = realPaths_.emplace(folder, std::string());
  if (isNew) {
    std::error_code failed;
    known->second = std::filesystem::canonical(folder.empty() ? "." : folder, failed).string();
  }
  return IsBelow(realPath_, known->second);
}

}  // namespace velhost
