#include "host/output/progress.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <boost/endian/conversion.hpp>
#include <initializer_list>
#include <utility>

#include "host/base/text.h"
#include "host/base/utf8.h"
#include "host/output/tablelayout.h"
#include "wire/storagearea.h"

namespace velhost {

namespace {

using TClock = TProgressTarget::TClock;
using std::chrono::duration;

constexpr std::chrono::milliseconds kLeastTimeBetween{100};

std::string MinutesAndSeconds(std::uint64_t seconds) {
  if (seconds < 3600) return fmt::format("{}:{:02}", seconds / 60, seconds % 60);
  return fmt::format("{}:{:02}:{:02}", seconds / 3600, seconds / 60 % 60, seconds % 60);
}

double Seconds(TClock::duration time) { return std::max(duration<double>(time).count(), 0.0); }

// Below this size, kilobytes with one decimal would be too coarse.
constexpr std::uint64_t kShownAsBytes = 10'000;

double Kilobytes(std::uint64_t bytes) { return static_cast<double>(bytes) / 1000; }

std::string Bytes(std::uint64_t bytes) {
  return bytes < kShownAsBytes ? fmt::format("{} bytes", bytes) : fmt::format("{:.1f} kB", Kilobytes(bytes));
}

// The parts of the line as safe text; empty ones are left out.
struct TParts {
  static constexpr std::string_view kCutMark = "..";
  static constexpr std::size_t kShortestName = 12;

  std::string place;
  std::string name;
  std::string capture;
  std::string timeLeft;
  std::string planned;
  std::string exchanges;
  std::string rate;
  std::string elapsed;

  std::string Text() const {
    std::string text = Joined({place, name}, " ");
    text = Joined({text, Joined({capture, timeLeft}, ", ")}, "  ");
    return Joined({text, Joined({planned, exchanges, rate, elapsed}, ", ")}, "  ");
  }
  bool Fits(std::size_t room) const { return ColumnsOf(Text()) <= room; }
  void CutName(std::size_t room) {
    const std::size_t excess = ColumnsOf(Text()) - room + kCutMark.size();
    const std::size_t columns = ColumnsOf(name);
    if (columns < kShortestName + excess) return;
    name = std::string(StartThatFits(name, columns - excess)) + std::string(kCutMark);
  }

 private:
  static std::string Joined(std::initializer_list<std::string> parts, std::string_view between) {
    std::string joined;
    for (const std::string& part : parts) {
      if (part.empty()) continue;
      if (!joined.empty()) joined += between;
      joined += part;
    }
    return joined;
  }
};

bool Succeeded(const TIpmiExchange& exchange) {
  return exchange.answer != nullptr && exchange.answer->completionCode == wire::TCommandBuffer::kSuccess;
}

// The byte count in a read response, limited to what the response carries.
std::uint32_t BytesRead(const TIpmiAnswer& answer) {
  const std::uint32_t before = wire::StorageArea::kResponseData - wire::TCommandBuffer::kData;
  const std::uint32_t carried = answer.DataLength() > before ? answer.DataLength() - before : 0;
  const std::uint32_t count =
      boost::endian::load_little_u16(TCommandData(answer.data).Bytes<2>(wire::StorageArea::kResponseCount).data());
  return std::min(carried, count);
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

void TProgressLine::SetPlanned(std::uint64_t total, std::function<std::uint64_t()> made) {
  planned_ = total;
  plannedMade_ = std::move(made);
}

void TProgressLine::BeginClass(std::size_t number, std::size_t count, const std::string& name) {
  place_ = fmt::format("[{}/{}]", number, count);
  class_ = SafeText(name);
  capture_.reset();
  DrawWhenDue();
}

void TProgressLine::OnIpmi(const TIpmiExchange& exchange) {
  if (!exchange.WasAttempted()) return;
  switch (KindOfRequest(exchange.request)) {
    case EExchangeKind::kSize: BeginCapture(exchange); break;
    case EExchangeKind::kClose: capture_.reset(); break;
    case EExchangeKind::kRead:
      if (capture_ && Succeeded(exchange)) capture_->read += BytesRead(*exchange.answer);
      break;
    default: break;
  }
  Count();
}

void TProgressLine::OnDot(const TDotExchange& exchange) {
  if (exchange.WasAttempted()) Count();
}

void TProgressLine::Count() {
  ++exchanges_;
  DrawWhenDue();
}

void TProgressLine::BeginCapture(const TIpmiExchange& exchange) {
  capture_.reset();
  if (!Succeeded(exchange)) return;
  const std::int32_t size = SizeInAnswer(*exchange.answer);
  capture_ = TCapture{fmt::format("node {} {}", exchange.request.Node(), SafeText(AreaInSizeRequest(exchange.request))),
                      static_cast<std::uint64_t>(std::max(size, 0)), 0, target_.now()};
}

void TProgressLine::DrawWhenDue() {
  const auto now = target_.now();
  if (held_ || (drawn_ && now - *drawn_ < kLeastTimeBetween)) return;
  drawn_ = now;
  // The last column stays free: some terminals wrap when it is filled.
  const std::size_t room = static_cast<std::size_t>(std::max(target_.width(), 2)) - 1;
  const std::string line = Line(now, room);
  const std::string_view shown = StartThatFits(line, room);
  const std::size_t columns = ColumnsOf(shown);
  const std::size_t blanks = columns_ > columns ? columns_ - columns : 0;
  target_.write(fmt::format("\r{}{}", shown, std::string(blanks, ' ')));
  columns_ = columns;
}

// Parts are dropped in order of increasing importance: the time left, the end of the class name, the rate, the whole
// class name, the number of exchanges, the planned reads, the capture file.
std::string TProgressLine::Line(TClock::time_point now, std::size_t room) const {
  const double elapsed = Seconds(now - start_);
  TParts parts;
  parts.place = place_;
  parts.name = class_;
  if (capture_) parts.capture = CaptureText();
  if (capture_) parts.timeLeft = TimeLeftText(now);
  parts.planned = PlannedText();
  parts.exchanges = Counted(exchanges_, "exchange");
  // A rate over less than a second is meaningless.
  if (elapsed >= 1) parts.rate = fmt::format("{:.0f}/s", static_cast<double>(exchanges_) / elapsed);
  parts.elapsed = MinutesAndSeconds(static_cast<std::uint64_t>(elapsed));
  if (!parts.Fits(room)) parts.timeLeft.clear();
  if (!parts.Fits(room)) parts.CutName(room);
  if (!parts.Fits(room)) parts.rate.clear();
  if (!parts.Fits(room)) parts.name.clear();
  if (!parts.Fits(room)) parts.exchanges.clear();
  if (!parts.Fits(room)) parts.planned.clear();
  if (!parts.Fits(room)) parts.capture.clear();
  return parts.Text();
}

std::string TProgressLine::CaptureText() const {
  if (capture_->size == 0) return capture_->name + " " + Bytes(capture_->read);
  if (capture_->size < kShownAsBytes) {
    return fmt::format("{} {} of {} bytes", capture_->name, capture_->read, capture_->size);
  }
  return fmt::format("{} {:.1f} of {:.1f} kB", capture_->name, Kilobytes(capture_->read), Kilobytes(capture_->size));
}

std::string TProgressLine::PlannedText() const {
  return planned_ == 0 ? std::string() : fmt::format("reads {} of {}", plannedMade_(), planned_);
}

std::string TProgressLine::TimeLeftText(TClock::time_point now) const {
  const double elapsed = Seconds(now - capture_->start);
  if (elapsed < 1 || capture_->read == 0 || capture_->read > capture_->size) return {};
  const double bytesPerSecond = static_cast<double>(capture_->read) / elapsed;
  const double left = static_cast<double>(capture_->size - capture_->read) / bytesPerSecond;
  return MinutesAndSeconds(static_cast<std::uint64_t>(left)) + " left";
}

void TProgressLine::Clear() {
  if (columns_ > 0) target_.write(fmt::format("\r{}\r", std::string(columns_, ' ')));
  columns_ = 0;
}

void TProgressLine::Hold() {
  Clear();
  held_ = true;
}

void TProgressLine::Resume() {
  held_ = false;
  drawn_.reset();
}

}  // namespace velhost
