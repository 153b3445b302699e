#include "host/bmc/record/checkedrecording.h"

#include <algorithm>
#include <utility>

namespace velhost {

namespace {

// Whether a text without a newline is a first line that was cut.
bool BeginsAsRecording(std::string_view text) {
  const std::size_t size = std::min(text.size(), kRecordingStart.size());
  return text.substr(0, size) == kRecordingStart.substr(0, size);
}

}  // namespace

TCheckedRecording::TCheckedRecording(std::string path, const TStoredBytes& recording, ISourceReader* reader,
                                     const TLineCallback& onLine)
    : path_(std::move(path)) {
  Check(recording, reader, onLine);
}

TStoredBytes TCheckedRecording::Open(const std::string& path, ISourceReader& reader) {
  return TStoredBytes::OfInput(path, kLargestRecording, reader, kLargestRecordingOfAPipe);
}

void TCheckedRecording::Check(const TStoredBytes& recording, ISourceReader* reader, const TLineCallback& onLine) {
  TLineReader lines(recording, kLongestRecordingLine);
  bool isCut = false;
  for (auto line = lines.Next(); line; line = lines.Next()) {
    if (reader != nullptr) reader->CheckStop();
    isCut = !line->isWhole;
    if (isCut && !hasHeader_ && !BeginsAsRecording(line->text)) ParseRecordingHeader(path_, line->text);
    if (isCut) break;
    ++wholeLines_;
    if (!hasHeader_) {
      header_ = ParseRecordingHeader(path_, line->text);
      hasHeader_ = true;
      continue;
    }
    const TRecordedLine recorded = ParseRecordedLine(path_, line->text, wholeLines_);
    if (onLine) onLine(recorded, line->text, line->start);
  }
  if (isCut || !hasHeader_) cutLine_ = wholeLines_ + 1;
}

TCIMDateTime TCheckedRecording::Start() const {
  return ParseMoment(header_.started).value_or(TCIMDateTime(1970, 1, 1, 0, 0, 0, 0, 0));
}

TTextDiagnostic TCheckedRecording::Diagnostic(EDiagnosticSeverity severity, std::uint32_t line,
                                              const std::string& message) const {
  TTextDiagnostic diagnostic;
  diagnostic.severity = severity;
  diagnostic.location = {path_, line, 1};
  diagnostic.message = message;
  return diagnostic;
}

std::optional<TTextDiagnostic> TCheckedRecording::CutWarning() const {
  if (!hasHeader_) {
    return Diagnostic(EDiagnosticSeverity::kWarning, 1,
                      "the recording was cut in its first line; none of it can be used");
  }
  if (cutLine_ == 0) return std::nullopt;
  return Diagnostic(EDiagnosticSeverity::kWarning, cutLine_,
                    "the recording was cut in this line; it is used up to the line before");
}

}  // namespace velhost
