#include "host/output/outputfile.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <climits>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <optional>
#include <utility>

#include "host/base/descriptor.h"
#include "host/base/text.h"

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

namespace {

constexpr std::size_t kPendingLimit = std::size_t{64} * 1024;
constexpr int kTemporaryNames = 100;
constexpr std::size_t kLongestNamePart = 200;  // leaves room for a suffix within the 255 bytes of a name

void WriteOut(int descriptor, std::string_view text, const std::string& name) {
  switch (const int error = WriteAll(descriptor, text)) {
    case 0: return;
    case EPIPE: throw TClosedPipe(name);
    case EBADF: throw THostError(EFailure::kNotWritten, fmt::format("{} is closed", SafeText(name)));
    default:
      throw THostError(EFailure::kNotWritten, fmt::format("cannot write {}: {}", SafeText(name), std::strerror(error)));
  }
}

// The descriptor that a path such as /dev/stdout names. Opening such a path again would lose the descriptor's
// position in a file.
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

void SyncFolder(int folder) {
  const TDescriptor readable(::openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (readable) ::fsync(readable.Get());
}

// The path that a nameless file is linked from. Linking the descriptor itself requires a privilege.
std::string LinkOf(int descriptor) { return fmt::format("/proc/self/fd/{}", descriptor); }

// The permissions of a file that replaces another. If the owner or the group could not be kept, the former owner or
// group members may now be among the others and must not gain access, so others keep only what everybody had.
mode_t ModeInPlaceOf(const struct stat& old, const struct stat& now) {
  const mode_t owner = old.st_mode >> 6 & 7;
  const mode_t group = old.st_mode >> 3 & 7;
  const mode_t everybody = owner & group & old.st_mode & 7;
  if (now.st_gid != old.st_gid) return owner << 6 | everybody << 3 | everybody;
  if (now.st_uid != old.st_uid) return owner << 6 | group << 3 | everybody;
  return old.st_mode & 0777;
}

}  // namespace

TClosedPipe::TClosedPipe(const std::string& name)
    : THostError(EFailure::kNotWritten, fmt::format("{} was closed by its reader", SafeText(name))) {}

void IgnoreBrokenPipeSignal() { std::signal(SIGPIPE, SIG_IGN); }

TDescriptorSink::TDescriptorSink(int descriptor, std::string name) : descriptor_(descriptor), name_(std::move(name)) {}

void TDescriptorSink::Write(std::string_view text) {
  if (pending_.size() + text.size() > kPendingLimit) Flush();
  if (text.size() > kPendingLimit) return WriteOut(descriptor_, text, name_);
  pending_ += text;
}

void TDescriptorSink::Flush() {
  // Cleared first, so that a failure is reported once and not again by the next flush.
  const std::string text = std::exchange(pending_, {});
  WriteOut(descriptor_, text, name_);
}

TOutputFile::TOutputFile(const std::string& path, EUnfinished unfinished) : path_(path) {
  if (path.empty()) FailToCreate("the name is empty");
  if (const auto descriptor = DescriptorOfPath(path)) {
    OpenDirectly(TDescriptor(::fcntl(*descriptor, F_DUPFD_CLOEXEC, 0)));
    return;
  }
  try {
    place_ = FindOutputPlace(path);
  } catch (const TNoPlace& failure) {
    FailToCreate(failure.reason);
  }
  if (!place_.existing) {
    OpenUnfinished(unfinished);
  } else if (S_ISDIR(place_.existing->st_mode)) {
    FailToCreate("is a folder");
  } else if (TDescriptor opened = OpenExisting(); !S_ISREG(place_.existing->st_mode)) {
    OpenDirectly(std::move(opened));
  } else {
    OpenUnfinished(unfinished);
    KeepAttributesOfTarget();
  }
}

TOutputFile::TOutputFile(int folder, const std::string& name, const std::string& path) : path_(path) {
  place_.folder = TDescriptor(::fcntl(folder, F_DUPFD_CLOEXEC, 0));
  place_.name = name;
  OpenUnfinished(EUnfinished::kNameless);
}

TOutputFile::~TOutputFile() { Discard(); }

// Renaming would replace a file that its owner has write-protected, so the target is opened to let the kernel check.
// O_CREAT makes the kernel refuse another user's file or pipe in a folder such as /tmp if its rules are enabled.
TDescriptor TOutputFile::OpenExisting() const {
  const bool isRegular = S_ISREG(place_.existing->st_mode);
  const int flags = O_WRONLY | O_CREAT | O_NOCTTY | O_CLOEXEC | (isRegular ? O_NOFOLLOW | O_NONBLOCK : 0);
  TDescriptor opened(::openat(place_.folder.Get(), place_.name.c_str(), flags, 0600));
  if (!opened) FailToCreate(std::strerror(errno));
  struct stat status {};
  if (::fstat(opened.Get(), &status) != 0) FailToCreate(std::strerror(errno));
  const bool isSame = status.st_dev == place_.existing->st_dev && status.st_ino == place_.existing->st_ino;
  if (!isSame) FailToCreate("changed while being looked up");
  return opened;
}

void TOutputFile::OpenDirectly(TDescriptor descriptor) {
  if (!descriptor) FailToCreate(std::strerror(errno));
  descriptor_ = std::move(descriptor);
  sink_ = std::make_unique<TDescriptorSink>(descriptor_.Get(), path_);
}

void TOutputFile::OpenUnfinished(EUnfinished unfinished) {
  if (unfinished == EUnfinished::kNamed || !OpenNameless()) OpenTemporary();
  sink_ = std::make_unique<TDescriptorSink>(descriptor_.Get(), path_);
}

// A replacement is private until it gets the permissions of the file it replaces.
mode_t TOutputFile::FirstMode() const { return place_.existing ? 0600 : 0666; }

// Not every file system supports nameless files, and without /proc a nameless file could not be linked later.
bool TOutputFile::OpenNameless() {
  descriptor_ = TDescriptor(::openat(place_.folder.Get(), ".", O_WRONLY | O_TMPFILE | O_CLOEXEC, FirstMode()));
  if (!descriptor_) return false;
  nameless_ = ::access(LinkOf(descriptor_.Get()).c_str(), F_OK) == 0;
  if (!nameless_) descriptor_.Close();
  return nameless_;
}

void TOutputFile::OpenTemporary() {
  const bool opened = TakeTemporaryName([this](const std::string& name) {
    const int flags = O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC;
    descriptor_ = TDescriptor(::openat(place_.folder.Get(), name.c_str(), flags, FirstMode()));
    return static_cast<bool>(descriptor_);
  });
  if (!opened) FailToCreate(std::strerror(errno));
}

bool TOutputFile::TakeTemporaryName(const std::function<bool(const std::string&)>& take) {
  const std::string name = place_.name.substr(0, kLongestNamePart);
  for (int i = 0; i < kTemporaryNames; ++i) {
    temporary_ = fmt::format(".{}.{}-{}.tmp", name, ::getpid(), i);
    if (take(temporary_)) return true;
    if (errno != EEXIST) break;
  }
  temporary_.clear();
  return false;
}

void TOutputFile::KeepAttributesOfTarget() {
  const struct stat& old = *place_.existing;
  // Only a privileged process can keep the owner; any other owns what it writes.
  const bool kept = ::fchown(descriptor_.Get(), old.st_uid, old.st_gid) == 0 ||
                    ::fchown(descriptor_.Get(), static_cast<uid_t>(-1), old.st_gid) == 0;
  struct stat now {};
  const bool known = ::fstat(descriptor_.Get(), &now) == 0;
  if (!kept) errno = 0;
  if (known && ::fchmod(descriptor_.Get(), ModeInPlaceOf(old, now)) == 0) return;
  const int error = errno;
  Discard();
  FailToCreate(std::strerror(error));
}

void TOutputFile::Commit() {
  sink_->Flush();
  if (!nameless_ && temporary_.empty()) return;
  if (::fsync(descriptor_.Get()) != 0 && errno != EINVAL) FailToWrite(errno);
  const bool isInPlace = std::exchange(nameless_, false) && NameAsTarget();
  if (descriptor_.Close() != 0 && errno != EINTR) FailToWrite(errno);
  const int folder = place_.folder.Get();
  if (!isInPlace && ::renameat(folder, temporary_.c_str(), folder, place_.name.c_str()) != 0) FailToWrite(errno);
  temporary_.clear();
  SyncFolder(folder);
}

bool TOutputFile::GiveName(const std::string& name) const {
  const std::string link = LinkOf(descriptor_.Get());
  return ::linkat(AT_FDCWD, link.c_str(), place_.folder.Get(), name.c_str(), AT_SYMLINK_FOLLOW) == 0;
}

// Returns false if the target exists: only renaming can replace it, for which the nameless file gets a temporary name
// first.
bool TOutputFile::NameAsTarget() {
  if (GiveName(place_.name)) return true;
  if (errno != EEXIST) FailToWrite(errno);
  if (!TakeTemporaryName([this](const std::string& name) { return GiveName(name); })) FailToWrite(errno);
  return false;
}

void TOutputFile::Discard() noexcept {
  descriptor_.Close();
  if (!temporary_.empty()) ::unlinkat(place_.folder.Get(), temporary_.c_str(), 0);
  temporary_.clear();
}

void TOutputFile::FailToCreate(const std::string& reason) const {
  throw THostError(EFailure::kNotCreated, fmt::format("cannot create {}: {}", SafeText(path_), reason));
}

void TOutputFile::FailToWrite(int error) const {
  throw THostError(EFailure::kNotWritten, fmt::format("cannot write {}: {}", SafeText(path_), std::strerror(error)));
}

}  // namespace velhost
