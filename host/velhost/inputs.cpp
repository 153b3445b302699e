#include "host/velhost/inputs.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include "host/base/hosterror.h"

namespace velhost {

TInputReader::TInputReader(TInputs& inputs, TInputUse use, const std::vector<std::string>& paths)
    : TFileReader(use.mayBePipe ? paths : std::vector<std::string>()),
      inputs_(inputs),
      use_(std::move(use)),
      paths_(paths) {}

std::string TInputReader::Read(const std::string& path, std::size_t limit) {
  std::string text = TFileReader::Read(path, limit);
  NoteAndJudge(path, text, text);
  return text;
}

TStoredBytes TInputReader::Open(const std::string& path, std::size_t limit, std::size_t limitOfOthers) {
  const std::size_t noted = inputs_.Files().size();
  TStoredBytes bytes = TStoredBytes::OfInput(path, limit, *this, limitOfOthers);
  if (inputs_.Files().size() == noted) {  // a plain file, which has not been noted yet
    const std::vector<std::uint8_t> start = bytes.Read(0, kFileKindBytes);
    NoteAndJudge(path, std::string(start.begin(), start.end()), {});
  }
  return bytes;
}

void TInputReader::NoteAndJudge(const std::string& path, std::string_view start, std::string_view end) {
  inputs_.Note(use_.option, path);
  const bool isNamed = std::find(paths_.begin(), paths_.end(), path) != paths_.end();
  const std::string wrong =
      isNamed && use_.kind != EFileKind::kUnknown ? WrongKindText(use_.kind, path, start, end) : std::string();
  if (!wrong.empty()) throw TEndedReading(EFailure::kMalformed, wrong);
}

void TInputReader::CheckStop() {
  const TStopSignal& stop = inputs_.Stop();
  if (!stop.IsStopped()) return;
  const std::string why = stop.WasRequested() ? "interrupted" : "deadline reached";
  throw TEndedReading(EFailure::kStopped, why + " while reading " + use_.what + "; nothing was collected");
}

}  // namespace velhost
