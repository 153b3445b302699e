#include "host/bmc/record/recording.h"

#include <fcntl.h>
#include <fmt/format.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include "host/base/hex.h"
#include "host/base/unsafetext.h"
#include "host/bmc/record/recordingline.h"

namespace velhost {

namespace {

constexpr int kSecondsPerMinute = 60;
constexpr int kMinutesPerHour = 60;

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

TRecordingFile::TRecordingFile(const std::string& path)
    : path_(path), descriptor_(open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666)) {
  if (descriptor_) return;
  throw THostError(EFailure::kNotCreated, "cannot create " + SafeText(path) + ": " + std::strerror(errno));
}

void TRecordingFile::Write(std::string_view text) {
  const int error = WriteAll(descriptor_.Get(), text);
  if (error == 0) return;
  throw THostError(EFailure::kNotWritten, "cannot write to " + SafeText(path_) + ": " + std::strerror(error));
}

TRecorder::TRecorder(ITextSink& sink, const TRecordingHeader& header) : sink_(sink) {
  sink_.Write(FormatRecordingHeader(header) + "\n");
}

void TRecorder::OnIpmi(const TIpmiExchange& exchange) {
  std::string line = fmt::format(R"({{"kind":"ipmi","node":{},"request":"{}","ok":{})", exchange.request.Node(),
                                 BufferText(exchange.request.Buffer()), Boolean(exchange.answer != nullptr));
  if (exchange.answer != nullptr) {
    line += fmt::format(R"(,"response":"{}","length":{})", BufferText(exchange.answer->InBufferOf(exchange.request)),
                        exchange.answer->Length());
  }
  WriteLine(line + fmt::format(R"(,"us":{}}})", exchange.duration.count()));
}

void TRecorder::OnDot(const TDotExchange& exchange) {
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
