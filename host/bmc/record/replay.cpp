#include "host/bmc/record/replay.h"

#include <algorithm>
#include <string_view>
#include <utility>
#include <vector>

#include "host/base/digits.h"
#include "host/base/textdiagnostic.h"
#include "host/bmc/record/recordingline.h"

namespace velhost {

namespace {

constexpr std::int64_t kUsPerMs = 1000;

// The clock's reading if there is none to go by.
const TCIMDateTime& Epoch() {
  static const auto* const epoch = new TCIMDateTime(1970, 1, 1, 0, 0, 0, 0, 0);
  return *epoch;
}

std::vector<std::uint8_t> WithoutTrailingZeros(std::vector<std::uint8_t> bytes) {
  while (!bytes.empty() && bytes.back() == 0) bytes.pop_back();
  return bytes;
}

bool IsSame(const TRecordedLine& asked, const TRecordedLine& recorded) {
  return asked.kind == recorded.kind && asked.node == recorded.node && asked.request == recorded.request &&
         asked.command == recorded.command && asked.identifier == recorded.identifier &&
         asked.parameters == recorded.parameters;
}

std::string Described(const TRecordedLine& line) {
  switch (line.kind) {
    case TRecordedLine::EKind::kIpmi:
      return "the request \"" + FormatHexPairs(line.request) + "\" to node " + std::to_string(line.node);
    case TRecordedLine::EKind::kDot:
      return "the dot command " + std::to_string(line.command) + " \"" + FormatHexPairs(line.identifier) + "\" \"" +
             FormatHexPairs(line.parameters) + "\" to service processor " + std::to_string(line.node);
    case TRecordedLine::EKind::kClock: break;
  }
  return "a reading of the clock";
}

// Both lengths as recorded, whether or not they are true.
TIpmiAnswer AnswerIn(const TRecordedLine& line) {
  std::vector<std::uint8_t> buffer = line.response;
  buffer.resize(wire::TCommandBuffer::kSize);
  return {buffer[wire::TCommandBuffer::kCompletionCode],
          {buffer.begin() + wire::TCommandBuffer::kData, buffer.end()},
          buffer[wire::TCommandBuffer::kDataLength],
          line.length};
}

// Whether a text without a newline is a first line that was cut.
bool BeginsAsRecording(std::string_view text) {
  const std::size_t size = std::min(text.size(), kRecordingStart.size());
  return text.substr(0, size) == kRecordingStart.substr(0, size);
}

}  // namespace

TReplay::TReplay(const std::string& path, const TStoredBytes& recording, ISourceReader* reader)
    : path_(path), lines_(recording, kLongestRecordingLine), now_(Epoch()) {
  CheckAll(recording, reader);
  now_ = ParseMoment(header_.started).value_or(Epoch());
  if (!hasHeader_) return;
  lines_.Next();
  number_ = 1;
  Advance();
}

TReplay::TReplay(const std::string& path, ISourceReader& reader) : TReplay(path, Open(path, reader), &reader) {}

TStoredBytes TReplay::Open(const std::string& path, ISourceReader& reader) {
  return TStoredBytes::OfInput(path, kLargestRecording, reader, kLargestRecordingOfAPipe);
}

void TReplay::CheckAll(const TStoredBytes& recording, ISourceReader* reader) {
  TLineReader lines(recording, kLongestRecordingLine);
  bool isCut = false;
  for (auto line = lines.Next(); line; line = lines.Next()) {
    if (reader != nullptr) reader->CheckStop();
    isCut = !line->isWhole;
    if (isCut && !hasHeader_ && !BeginsAsRecording(line->text)) ParseRecordingHeader(path_, line->text);
    if (isCut) break;
    ++wholeLines_;
    if (hasHeader_) {
      ParseRecordedLine(path_, line->text, wholeLines_);
    } else {
      header_ = ParseRecordingHeader(path_, line->text);
      hasHeader_ = true;
    }
  }
  if (isCut || !hasHeader_) cutLine_ = wholeLines_ + 1;
}

// The recording was checked at the start; a change since then must not disturb the collection.
void TReplay::Advance() {
  answering_ = std::move(next_);
  const auto line = lines_.Next();
  if (!line || !line->isWhole) return;
  try {
    next_ = std::make_unique<TRecordedLine>(ParseRecordedLine(path_, line->text, ++number_));
    next_->request = WithoutTrailingZeros(std::move(next_->request));
  } catch (const THostError& error) {
    mismatch_ = error.what();
  }
}

TReplay::~TReplay() = default;

TTextDiagnostic TReplay::Diagnostic(EDiagnosticSeverity severity, std::uint32_t line,
                                    const std::string& message) const {
  TTextDiagnostic diagnostic;
  diagnostic.severity = severity;
  diagnostic.location = {path_, line, 1};
  diagnostic.message = message;
  return diagnostic;
}

std::optional<TTextDiagnostic> TReplay::CutWarning() const {
  if (!hasHeader_)
    return Diagnostic(EDiagnosticSeverity::kWarning, 1,
                      "the recording was cut in its first line; none of it can be replayed");
  if (cutLine_ != 0) {
    return Diagnostic(EDiagnosticSeverity::kWarning, cutLine_,
                      "the recording was cut in this line; it replays up to the line before");
  }
  if (!ranOut_) return std::nullopt;
  return Diagnostic(
      EDiagnosticSeverity::kWarning, wholeLines_,
      "the recording ends here, before the collection: it was cut, or less was collected when it was made");
}

/// The next recorded line, if it answers the request; otherwise null.
const TRecordedLine* TReplay::Next(const TRecordedLine& asked) {
  answering_.reset();
  if (mismatch_) return nullptr;
  if (!next_) {
    ranOut_ = true;
    return nullptr;
  }
  if (!IsSame(asked, *next_)) {
    mismatch_ = FormatDiagnostic(Diagnostic(EDiagnosticSeverity::kError, next_->number,
                                            "found " + Described(asked) + ", expected " + Described(*next_)));
    return nullptr;
  }
  Advance();
  return answering_.get();
}

bool TReplay::Wait(const TRecordedLine& line, const TStopSignal& stop) {
  if (!timing_) return !stop.IsStopped();
  owedUs_ += line.us;
  const std::int64_t wait = owedUs_ / kUsPerMs;
  owedUs_ %= kUsPerMs;
  return stop.WaitFor(std::chrono::milliseconds(wait));
}

std::optional<TIpmiAnswer> TReplay::SendIpmi(const TIpmiRequest& request, const TStopSignal& stop) {
  TRecordedLine asked;
  asked.node = request.Node();
  const unsigned char* const buffer = request.Buffer().Data();
  asked.request = WithoutTrailingZeros({buffer, buffer + wire::TCommandBuffer::kSize});
  const TRecordedLine* line = Next(asked);
  if (line == nullptr || !Wait(*line, stop) || !line->answered) return std::nullopt;
  return AnswerIn(*line);
}

std::optional<TDotAnswer> TReplay::SendDot(const TDotRequest& request, const TStopSignal& stop) {
  TRecordedLine asked;
  asked.kind = TRecordedLine::EKind::kDot;
  asked.node = request.serviceProcessor;
  asked.command = request.command.GetCommand();
  asked.identifier = request.command.GetIdentifier();
  asked.parameters = request.command.GetParameters();
  const TRecordedLine* line = Next(asked);
  if (line == nullptr || !Wait(*line, stop) || !line->answered) return std::nullopt;
  TDotAnswer answer{line->response};
  answer.data.resize(std::min(static_cast<std::size_t>(line->length), request.capacity));
  return answer;
}

TCIMDateTime TReplay::LocalTime() {
  TRecordedLine asked;
  asked.kind = TRecordedLine::EKind::kClock;
  if (const TRecordedLine* line = Next(asked)) now_ = *line->localTime;
  return now_;
}

}  // namespace velhost
