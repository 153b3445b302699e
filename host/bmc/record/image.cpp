#include "host/bmc/record/image.h"

#include <cstdint>
#include <string_view>
#include <vector>

#include "host/base/hosterror.h"
#include "host/base/textdiagnostic.h"
#include "host/bmc/record/recordedexchange.h"

namespace velhost {

namespace {

[[noreturn]] void FailAsTooLarge(const std::string& path, std::uint32_t line, std::size_t limit, const char* what) {
  TTextDiagnostic diagnostic;
  diagnostic.location = {path, line, 1};
  diagnostic.message = "found more than " + std::to_string(limit) + " " + what + ", expected at most " +
                       std::to_string(limit) + " in a recording that is used as an image";
  throw TDiagnosedError(EFailure::kTooLarge, diagnostic);
}

}  // namespace

TImage::TImage(const std::string& path, const TStoredBytes& recording, ISourceReader* reader,
               const TImageLimits& limits)
    : bytes_(recording),
      recording_(path, recording, reader, [&](const TRecordedLine& line, std::string_view text, std::size_t start) {
        if (index_.Size() == limits.lines) FailAsTooLarge(path, line.number, limits.lines, "lines");
        OnLine(line, {start, text.size()});
        if (handles_.Count() > limits.handles) {
          FailAsTooLarge(path, line.number, limits.handles, "handles of storage areas");
        }
      }) {
  index_.Complete();
  handles_ = {};
}

TImage::~TImage() = default;

void TImage::OnLine(const TRecordedLine& line, const TLinePlace& place) {
  std::optional<std::string> area;
  if (line.kind == TRecordedLine::EKind::kIpmi) {
    const TIpmiRequest request = IpmiRequestOf(line);
    area = handles_.AreaRead(request);
    if (line.answered) handles_.OnAnswer(request, IpmiAnswerOf(line));
  }
  index_.Add(KeyOf(line, area), place);
}

std::optional<TRecordedLine> TImage::Next(const TRecordedLine& asked, const std::optional<std::string>& area) {
  whyNoAnswer_ = ENoAnswer::kNotRecorded;
  const TAskedKey key = KeyOf(asked, area);
  const auto place = index_.Next(key);
  if (!place) return std::nullopt;
  auto line = LineAt(*place);
  if (!line || KeyOf(*line, area) != key) return std::nullopt;
  if (!line->answered) whyNoAnswer_ = ENoAnswer::kLost;
  return line;
}

// The recording was checked at the start; a change since then must not disturb the collection.
std::optional<TRecordedLine> TImage::LineAt(const TLinePlace& place) const {
  const std::vector<std::uint8_t> text = bytes_.Read(place.start, place.size);
  try {
    return ParseRecordedLine(recording_.Path(), {reinterpret_cast<const char*>(text.data()), text.size()}, 0);
  } catch (const THostError&) {
    return std::nullopt;
  }
}

std::optional<TIpmiAnswer> TImage::SendIpmi(const TIpmiRequest& request, const TStopSignal& stop) {
  whyNoAnswer_ = ENoAnswer::kNotSent;
  if (stop.IsStopped()) return std::nullopt;
  const auto line = Next(LineAsking(request), handles_.AreaRead(request));
  if (!line || !line->answered) return std::nullopt;
  TIpmiAnswer answer = IpmiAnswerOf(*line);
  handles_.OnAnswer(request, answer);
  return answer;
}

std::optional<TDotAnswer> TImage::SendDot(const TDotRequest& request, const TStopSignal& stop) {
  whyNoAnswer_ = ENoAnswer::kNotSent;
  if (stop.IsStopped()) return std::nullopt;
  const auto line = Next(LineAsking(request), std::nullopt);
  if (!line || !line->answered) return std::nullopt;
  return DotAnswerOf(*line, request.capacity);
}

TCIMDateTime TImage::LocalTime() {
  const auto line = Next(LineAskingTheTime(), std::nullopt);
  return line ? *line->localTime : recording_.Start();
}

}  // namespace velhost
