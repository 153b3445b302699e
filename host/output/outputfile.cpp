#include "host/output/outputfile.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <optional>
#include <utility>

namespace NKROVEL20 {

namespace {

constexpr std::size_t kPendingLimit = std::size_t{64} * 1024;
constexpr int kTemporaryNames = 100;
constexpr std::size_t kLongestNamePart = 200;  // a name of 255 bytes and what is added to it

void WriteAll(int descriptor, std::string_view text, const std::string& name) {
  while (!text.empty()) {
    const ssize_t written = ::write(descriptor, text.data(), text.size());
    if (written >= 0) {
      text.remove_prefix(static_cast<std::size_t>(written));
    } else if (errno == EAGAIN) {
      pollfd ready{descriptor, POLLOUT, 0};
      ::poll(&ready, 1, -1);
    } else if (errno == EPIPE) {
      throw TClosedPipe(name);
    } else if (errno == EBADF) {
      throw THostError(EExitStatus::kWriteFailed, fmt::format("{} is closed", name));
    } else if (errno != EINTR) {
      throw THostError(EExitStatus::kWriteFailed, fmt::format("cannot write {}: {}", name, std::strerror(errno)));
    }
  }
}

// The descriptor that a path such as /dev/stdout stands for. Opening such a path anew would lose the
// place in a file that the descriptor has.
std::optional<int> DescriptorOfPath(std::string_view path) {
  if (path == "/dev/stdout") return STDOUT_FILENO;
  if (path == "/dev/stderr") return STDERR_FILENO;
  for (const std::string_view folder : {"/dev/fd/", "/proc/self/fd/"}) {
    if (path.substr(0, folder.size()) != folder) continue;
    const std::string_view digits = path.substr(folder.size());
    int number = 0;
    const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    if (result.ec == std::errc() && result.ptr == digits.data() + digits.size() && number >= 0) return number;
  }
  return std::nullopt;
}

// Follows symbolic links, also one whose target is not there yet.
std::filesystem::path BehindLinks(std::filesystem::path path) {
  constexpr int kMostLinks = 40;
  std::error_code error;
  for (int i = 0; i < kMostLinks && std::filesystem::is_symlink(path, error); ++i) {
    const auto next = std::filesystem::read_symlink(path, error);
    if (error) break;
    path = path.parent_path() / next;
  }
  return path;
}

void SyncFolder(const std::filesystem::path& folder) {
  const int descriptor = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (descriptor < 0) return;
  ::fsync(descriptor);
  ::close(descriptor);
}

std::filesystem::path FolderOf(const std::filesystem::path& path) {
  const auto folder = path.parent_path();
  return folder.empty() ? std::filesystem::path(".") : folder;
}

// What a file without a name is linked from. Linking the descriptor itself takes a privilege.
std::string LinkOf(int descriptor) { return fmt::format("/proc/self/fd/{}", descriptor); }

bool GiveName(int descriptor, const std::string& name) {
  return ::linkat(AT_FDCWD, LinkOf(descriptor).c_str(), AT_FDCWD, name.c_str(), AT_SYMLINK_FOLLOW) == 0;
}

}  // namespace

TClosedPipe::TClosedPipe(const std::string& name)
    : THostError(EExitStatus::kWriteFailed, fmt::format("nobody reads {} any more", name)) {}

void IgnoreBrokenPipeSignal() { std::signal(SIGPIPE, SIG_IGN); }

TDescriptorSink::TDescriptorSink(int descriptor, std::string name) : descriptor_(descriptor), name_(std::move(name)) {}

void TDescriptorSink::Write(std::string_view text) {
  if (pending_.size() + text.size() > kPendingLimit) Flush();
  if (text.size() > kPendingLimit) return WriteAll(descriptor_, text, name_);
  pending_ += text;
}

void TDescriptorSink::Flush() {
  // Taken first, so that a failure is reported once and not again by the next flush.
  const std::string text = std::exchange(pending_, {});
  WriteAll(descriptor_, text, name_);
}

TOutputFile::TOutputFile(const std::string& path, EUnfinished unfinished) : path_(path) {
  if (path.empty()) FailToCreate("the name is empty");
  if (const auto descriptor = DescriptorOfPath(path)) {
    OpenDirectly(::fcntl(*descriptor, F_DUPFD_CLOEXEC, 0));
    return;
  }
  target_ = BehindLinks(path);
  struct stat status {};
  const bool exists = ::stat(target_.c_str(), &status) == 0;
  if (!exists && errno != ENOENT) FailToCreate(std::strerror(errno));
  if (exists && S_ISDIR(status.st_mode)) FailToCreate("it is a folder");
  if (exists && !S_ISREG(status.st_mode)) {
    OpenDirectly(::open(target_.c_str(), O_WRONLY | O_NOCTTY | O_CLOEXEC));
    return;
  }
  // Renaming would replace a file that its owner has protected.
  if (exists && ::faccessat(AT_FDCWD, target_.c_str(), W_OK, AT_EACCESS) != 0) FailToCreate(std::strerror(errno));
  if (unfinished == EUnfinished::kNamed || !OpenNameless()) OpenTemporary();
  sink_ = std::make_unique<TDescriptorSink>(descriptor_, path_);
  if (exists) KeepAttributesOfTarget();
}

TOutputFile::~TOutputFile() { Discard(); }

void TOutputFile::OpenDirectly(int descriptor) {
  if (descriptor < 0) FailToCreate(std::strerror(errno));
  descriptor_ = descriptor;
  sink_ = std::make_unique<TDescriptorSink>(descriptor_, path_);
}

// Not every file system has nameless files, and without /proc one could not be given its name later.
bool TOutputFile::OpenNameless() {
  const std::filesystem::path target(target_);
  if (target.filename().empty()) return false;
  descriptor_ = ::open(FolderOf(target).c_str(), O_WRONLY | O_TMPFILE | O_CLOEXEC, 0666);
  if (descriptor_ < 0) return false;
  nameless_ = ::access(LinkOf(descriptor_).c_str(), F_OK) == 0;
  if (!nameless_) ::close(std::exchange(descriptor_, -1));
  return nameless_;
}

void TOutputFile::OpenTemporary() {
  if (std::filesystem::path(target_).filename().empty()) FailToCreate("it names no file");
  const bool opened = TakeTemporaryName([this](const std::string& name) {
    descriptor_ = ::open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    return descriptor_ >= 0;
  });
  if (!opened) FailToCreate(std::strerror(errno));
}

bool TOutputFile::TakeTemporaryName(const std::function<bool(const std::string&)>& take) {
  const std::filesystem::path target(target_);
  const std::string name = target.filename().string().substr(0, kLongestNamePart);
  for (int i = 0; i < kTemporaryNames; ++i) {
    temporary_ = FolderOf(target) / fmt::format(".{}.{}-{}.tmp", name, ::getpid(), i);
    if (take(temporary_)) return true;
    if (errno != EEXIST) break;
  }
  temporary_.clear();
  return false;
}

void TOutputFile::KeepAttributesOfTarget() {
  struct stat status {};
  if (::stat(target_.c_str(), &status) != 0) return;
  // The owner can only be kept by a privileged process; another one owns what it writes.
  if (::fchown(descriptor_, status.st_uid, status.st_gid) != 0) errno = 0;
  if (::fchmod(descriptor_, status.st_mode & 07777) != 0) {
    const int error = errno;
    Discard();
    FailToCreate(std::strerror(error));
  }
}

void TOutputFile::Commit() {
  sink_->Flush();
  if (!nameless_ && temporary_.empty()) return;
  if (::fsync(descriptor_) != 0 && errno != EINVAL) FailToWrite(errno);
  const bool isInPlace = std::exchange(nameless_, false) && NameAsTarget();
  const int closed = ::close(std::exchange(descriptor_, -1));
  if (closed != 0 && errno != EINTR) FailToWrite(errno);
  if (!isInPlace && ::rename(temporary_.c_str(), target_.c_str()) != 0) FailToWrite(errno);
  temporary_.clear();
  SyncFolder(FolderOf(target_));
}

// False where the target is there: a file in its place is only put there by renaming, for which the
// nameless one has a temporary name then.
bool TOutputFile::NameAsTarget() {
  if (GiveName(descriptor_, target_)) return true;
  if (errno != EEXIST) FailToWrite(errno);
  if (!TakeTemporaryName([this](const std::string& name) { return GiveName(descriptor_, name); })) FailToWrite(errno);
  return false;
}

void TOutputFile::Discard() noexcept {
  if (descriptor_ >= 0) ::close(std::exchange(descriptor_, -1));
  if (!temporary_.empty()) ::unlink(temporary_.c_str());
  temporary_.clear();
}

void TOutputFile::FailToCreate(const std::string& reason) const {
  throw THostError(EExitStatus::kCannotCreate, fmt::format("cannot create {}: {}", path_, reason));
}

void TOutputFile::FailToWrite(int error) const {
  throw THostError(EExitStatus::kWriteFailed, fmt::format("cannot write {}: {}", path_, std::strerror(error)));
}

}  // namespace NKROVEL20
