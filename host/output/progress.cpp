#include "host/output/progress.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>

#include "host/output/tablelayout.h"
#include "nkrovel20/storageareacommands.h"

namespace NKROVEL20 {

namespace {

using TClock = TProgressTarget::TClock;
using std::chrono::duration;

constexpr std::chrono::milliseconds kLeastTimeBetween{100};

std::string MinutesAndSeconds(std::uint64_t seconds) {
  if (seconds < 3600) return fmt::format("{}:{:02}", seconds / 60, seconds % 60);
  return fmt::format("{}:{:02}:{:02}", seconds / 3600, seconds / 60 % 60, seconds % 60);
}

double Seconds(TClock::duration time) { return std::max(duration<double>(time).count(), 0.0); }

double Kilobytes(std::uint64_t bytes) { return static_cast<double>(bytes) / 1000; }

bool Succeeded(const TIpmiExchange& exchange) {
  return exchange.answered && exchange.response.CompletionCode() == TIPMICommandBuffer::kSuccess;
}

// The name in a size request, which is padded with zero bytes.
std::string AreaName(const TIPMICommandBuffer& request) {
  std::string name;
  for (std::size_t i = 0; i < StorageAreaCommands::kNameSize; ++i) {
    const std::uint8_t byte = request[StorageAreaCommands::kQueryName + i];
    if (byte == 0) break;
    name += static_cast<char>(byte);
  }
  return SafeText(name);
}

std::uint32_t ReadLittleEndian(const TIPMICommandBuffer& buffer, std::size_t offset, std::size_t size) {
  std::uint32_t number = 0;
  for (std::size_t i = size; i > 0; --i) number = number << 8 | buffer[offset + i - 1];
  return number;
}

// The bytes that a read response says it carries, but no more than it does.
std::uint32_t BytesRead(const TIPMICommandBuffer& response) {
  const std::uint32_t before = StorageAreaCommands::kResponseData - TIPMICommandBuffer::kData;
  const std::uint32_t carried = response.DataLength() > before ? response.DataLength() - before : 0;
  return std::min(carried, ReadLittleEndian(response, StorageAreaCommands::kResponseCount, 2));
}

}  // namespace

TProgressTarget TProgressTarget::StandardError(std::function<int()> width) {
  const auto write = [](std::string_view text) {
    const ssize_t ignored = ::write(STDERR_FILENO, text.data(), text.size());
    static_cast<void>(ignored);
  };
  return {write, std::move(width), TClock::now};
}

TProgressLine::TProgressLine(TProgressTarget target) : target_(std::move(target)), start_(target_.now()) {}

TProgressLine::~TProgressLine() { Clear(); }

void TProgressLine::BeginClass(std::size_t number, std::size_t count, const std::string& name) {
  class_ = fmt::format("[{}/{}] {}", number, count, SafeText(name));
  capture_.reset();
  DrawWhenDue();
}

void TProgressLine::OnIpmi(const TIpmiExchange& exchange) {
  if (!exchange.attempted) return;
  switch (KindOfRequest(exchange.request)) {
    case EExchangeKind::kSize: BeginCapture(exchange); break;
    case EExchangeKind::kClose: capture_.reset(); break;
    case EExchangeKind::kRead:
      if (capture_ && Succeeded(exchange)) capture_->read += BytesRead(exchange.response);
      break;
    default: break;
  }
  Count();
}

void TProgressLine::OnDot(const TDotExchange& exchange) {
  if (exchange.attempted) Count();
}

void TProgressLine::Count() {
  ++exchanges_;
  DrawWhenDue();
}

void TProgressLine::BeginCapture(const TIpmiExchange& exchange) {
  capture_.reset();
  if (!Succeeded(exchange)) return;
  const std::uint32_t size = ReadLittleEndian(exchange.response, StorageAreaCommands::kResponseSize, 4);
  const bool negative = size > 0x7FFFFFFF;  // sizes are signed, and no file is smaller than nothing
  capture_ = TCapture{fmt::format("node {} {}", exchange.node, AreaName(exchange.request)), negative ? 0 : size, 0,
                      target_.now()};
}

void TProgressLine::DrawWhenDue() {
  const auto now = target_.now();
  if (drawn_ && now - *drawn_ < kLeastTimeBetween) return;
  drawn_ = now;
  // The last column stays free: a terminal may go to the next line when it is filled.
  const std::size_t room = static_cast<std::size_t>(std::max(target_.width(), 2)) - 1;
  const std::string line = Line(now);
  const std::string_view shown = StartThatFits(line, room);
  const std::size_t columns = ColumnsOf(shown);
  const std::size_t blanks = columns_ > columns ? columns_ - columns : 0;
  target_.write(fmt::format("\r{}{}", shown, std::string(blanks, ' ')));
  columns_ = columns;
}

std::string TProgressLine::Line(TClock::time_point now) const {
  const double elapsed = Seconds(now - start_);
  std::string line = class_ + (class_.empty() ? "" : "  ");
  if (capture_) line += CaptureText(now) + "  ";
  line += fmt::format("{} exchange{}", exchanges_, exchanges_ == 1 ? "" : "s");
  // A rate over less than a second says nothing.
  if (elapsed >= 1) line += fmt::format(", {:.0f}/s", static_cast<double>(exchanges_) / elapsed);
  return line + ", " + MinutesAndSeconds(static_cast<std::uint64_t>(elapsed));
}

std::string TProgressLine::CaptureText(TClock::time_point now) const {
  if (capture_->size == 0) return fmt::format("{} {:.1f} kB", capture_->name, Kilobytes(capture_->read));
  std::string text =
      fmt::format("{} {:.1f} of {:.1f} kB", capture_->name, Kilobytes(capture_->read), Kilobytes(capture_->size));
  const double elapsed = Seconds(now - capture_->start);
  if (elapsed < 1 || capture_->read == 0 || capture_->read > capture_->size) return text;
  const double bytesPerSecond = static_cast<double>(capture_->read) / elapsed;
  const double left = static_cast<double>(capture_->size - capture_->read) / bytesPerSecond;
  return text + fmt::format(", {} left", MinutesAndSeconds(static_cast<std::uint64_t>(left)));
}

void TProgressLine::Clear() {
  if (columns_ > 0) target_.write(fmt::format("\r{}\r", std::string(columns_, ' ')));
  columns_ = 0;
}

}  // namespace NKROVEL20
