#include "host/bmc/record/recording.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <utility>

#include "host/base/digits.h"
#include "host/base/text.h"
#include "host/bmc/record/recordingline.h"

namespace velhost {

namespace {

constexpr int kSecondsPerMinute = 60;
constexpr int kMinutesPerHour = 60;
constexpr mode_t kPermissions = 0666;  // less the umask

std::string BufferText(const wire::TCommandBuffer& buffer) {
  std::size_t size = wire::TCommandBuffer::kSize;
  while (size > 0 && buffer[size - 1] == 0) --size;
  return FormatHexPairs({buffer.Data(), size});
}

const char* Boolean(bool value) { return value ? "true" : "false"; }

}  // namespace

int ProcessUtcOffsetMinutes() {
  tzset();
  return static_cast<int>(-timezone / kSecondsPerMinute);
}

void ApplyUtcOffset(int minutes) {
  // In TZ the offset is what must be added to local time to get UTC, so its sign is inverted.
  const int hours = std::abs(minutes) / kMinutesPerHour;
  const int rest = std::abs(minutes) % kMinutesPerHour;
  const char sign = minutes < 0 ? '-' : '+';
  const char opposite = minutes < 0 ? '+' : '-';
  setenv("TZ", fmt::format("<{}{:02}{:02}>{}{:02}:{:02}", sign, hours, rest, opposite, hours, rest).c_str(), 1);
  tzset();
}

TRecordingFile::TRecordingFile(const std::string& path) : path_(path) {
  struct stat status {};
  if (::stat(path.c_str(), &status) == 0) {
    // With O_CREAT the kernel guards folders where others may write (fs.protected_regular).
    descriptor_ = TDescriptor(open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, kPermissions));
    if (!descriptor_) Fail(EFailure::kNotCreated, errno);
    return;
  }
  const std::string folder = std::filesystem::path(path).parent_path().string();
  const bool isMissing = errno == ENOENT;
  if (!isMissing || faccessat(AT_FDCWD, folder.empty() ? "." : folder.c_str(), W_OK | X_OK, AT_EACCESS) != 0) {
    Fail(EFailure::kNotCreated, errno);
  }
}

void TRecordingFile::Begin() {
  if (!descriptor_) {
    descriptor_ = TDescriptor(open(path_.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, kPermissions));
    if (!descriptor_) Fail(EFailure::kNotCreated, errno);
  }
  struct stat status {};
  const bool isFile = fstat(descriptor_.Get(), &status) == 0 && S_ISREG(status.st_mode);
  if (isFile && ftruncate(descriptor_.Get(), 0) != 0) Fail(EFailure::kNotWritten, errno);
  hasBegun_ = true;
}

void TRecordingFile::Write(std::string_view text) {
  if (!hasBegun_) Begin();
  const int error = WriteAll(descriptor_.Get(), text);
  if (error != 0) Fail(EFailure::kNotWritten, error);
}

void TRecordingFile::Fail(EFailure kind, int error) const {
  const std::string action = kind == EFailure::kNotCreated ? "cannot create " : "cannot write to ";
  throw THostError(kind, action + SafeText(path_) + ": " + std::strerror(error));
}

TRecorder::TRecorder(ITextSink& sink, const TRecordingHeader& header)
    : sink_(sink), firstLine_(FormatRecordingHeader(header) + "\n") {}

void TRecorder::OnIpmi(const TIpmiExchange& exchange) {
  if (IsLeftOut(exchange.WasAttempted())) return;
  std::string line = fmt::format(R"({{"kind":"ipmi","node":{},"request":"{}","ok":{})", exchange.request.Node(),
                                 BufferText(exchange.request.Buffer()), Boolean(exchange.answer != nullptr));
  if (exchange.answer != nullptr) {
    line += fmt::format(R"(,"response":"{}","length":{})", BufferText(exchange.answer->InBufferOf(exchange.request)),
                        exchange.answer->Length());
  }
  WriteLine(line + fmt::format(R"(,"us":{}}})", exchange.duration.count()));
}

void TRecorder::OnDot(const TDotExchange& exchange) {
  if (IsLeftOut(exchange.WasAttempted())) return;
  const dotCmd& command = exchange.request.command;
  std::string line =
      fmt::format(R"({{"kind":"dot","sp":{},"command":{},"identifier":"{}","parameters":"{}","ok":{})",
                  exchange.request.serviceProcessor, command.GetCommand(), FormatHexPairs(command.GetIdentifier()),
                  FormatHexPairs(command.GetParameters()), Boolean(exchange.answer != nullptr));
  if (exchange.answer != nullptr) {
    line += fmt::format(R"(,"response":"{}","length":{})", FormatHexPairs(exchange.answer->data),
                        exchange.answer->Length());
  }
  WriteLine(line + fmt::format(R"(,"us":{}}})", exchange.duration.count()));
}

void TRecorder::OnClock(const TCIMDateTime& localTime) {
  WriteLine(fmt::format(R"({{"kind":"clock","local_time":"{}"}})", localTime.ToIso8601()));
}

void TRecorder::WriteLine(const std::string& line) {
  if (failure_) return;
  try {
    if (!firstLine_.empty()) sink_.Write(std::exchange(firstLine_, {}));
    sink_.Write(line + "\n");
  } catch (const THostError& error) {
    failure_ = error;
  }
}

TCIMDateTime TRecordingEnvironment::LocalTime() {
  const TCIMDateTime now = inner_.LocalTime();
  recorder_.OnClock(now);
  return now;
}

}  // namespace velhost
