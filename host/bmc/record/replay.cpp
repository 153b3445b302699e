#include "host/bmc/record/replay.h"

#include <chrono>
#include <utility>

#include "host/bmc/record/recordedexchange.h"

namespace velhost {

namespace {

constexpr std::int64_t kUsPerMs = 1000;

}  // namespace

TReplay::TReplay(const std::string& path, const TStoredBytes& recording, ISourceReader* reader)
    : recording_(path, recording, reader), lines_(recording, kLongestRecordingLine), now_(recording_.Start()) {
  if (!recording_.HasHeader()) return;
  lines_.Next();
  number_ = 1;
  Advance();
}

TReplay::TReplay(const std::string& path, ISourceReader& reader)
    : TReplay(path, TCheckedRecording::Open(path, reader), &reader) {}

TReplay::~TReplay() = default;

// The recording was checked at the start; a change since then must not disturb the collection.
void TReplay::Advance() {
  answering_ = std::move(next_);
  const auto line = lines_.Next();
  if (!line || !line->isWhole) return;
  try {
    next_ = std::make_unique<TRecordedLine>(ParseRecordedLine(recording_.Path(), line->text, ++number_));
  } catch (const THostError& error) {
    mismatch_ = error.what();
  }
}

std::optional<TTextDiagnostic> TReplay::CutWarning() const {
  if (auto warning = recording_.CutWarning()) return warning;
  if (!ranOut_) return std::nullopt;
  return recording_.Diagnostic(
      EDiagnosticSeverity::kWarning, recording_.WholeLines(),
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
  if (!AskTheSame(asked, *next_)) {
    mismatch_ = FormatDiagnostic(
        recording_.Diagnostic(EDiagnosticSeverity::kError, next_->number,
                              "found " + DescribeAsked(asked) + ", expected " + DescribeAsked(*next_)));
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
  const TRecordedLine* line = Next(LineAsking(request));
  if (line == nullptr || !Wait(*line, stop) || !line->answered) return std::nullopt;
  return IpmiAnswerOf(*line);
}

std::optional<TDotAnswer> TReplay::SendDot(const TDotRequest& request, const TStopSignal& stop) {
  const TRecordedLine* line = Next(LineAsking(request));
  if (line == nullptr || !Wait(*line, stop) || !line->answered) return std::nullopt;
  return DotAnswerOf(*line, request.capacity);
}

TCIMDateTime TReplay::LocalTime() {
  if (const TRecordedLine* line = Next(LineAskingTheTime())) now_ = *line->localTime;
  return now_;
}

}  // namespace velhost
