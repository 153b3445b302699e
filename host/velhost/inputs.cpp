#include "host/velhost/inputs.h"

#include <algorithm>
#include <utility>

namespace velhost {

TInputReader::TInputReader(TInputs& inputs, TInputUse use, const std::vector<std::string>& paths)
    : TFileReader(use.mayBePipe ? paths : std::vector<std::string>()),
      inputs_(inputs),
      use_(std::move(use)),
      paths_(paths) {}

std::string TInputReader::Read(const std::string& path, std::size_t limit) {
  std::string text = TFileReader::Read(path, limit);
  NoteAndJudge(path, text);
  return text;
}

TStoredBytes TInputReader::Open(const std::string& path, std::size_t limit, std::size_t limitOfOthers) {
  const std::size_t noted = inputs_.Files().size();
  TStoredBytes bytes = TStoredBytes::OfInput(path, limit, *this, limitOfOthers);
  if (inputs_.Files().size() == noted) {  // a file, of which nothing was read yet
    const std::vector<std::uint8_t> start = bytes.Read(0, kFileKindBytes);
    NoteAndJudge(path, std::string(start.begin(), start.end()));
  }
  return bytes;
}

void TInputReader::NoteAndJudge(const std::string& path, std::string_view start) {
  inputs_.Note(use_.option, path);
  const bool isNamed = std::find(paths_.begin(), paths_.end(), path) != paths_.end();
  const std::string wrong =
      isNamed && use_.kind != EFileKind::kUnknown ? WrongKindText(use_.kind, path, start) : std::string();
  if (!wrong.empty()) throw TEndedReading(EExitStatus::kBadData, wrong);
}

void TInputReader::CheckStop() {
  const TStopSignal& stop = inputs_.Stop();
  if (!stop.IsStopped()) return;
  const std::string why = stop.WasRequested() ? "interrupted" : "deadline reached";
  throw TEndedReading(EExitStatus::kPartial, why + " while " + use_.what + " was read; nothing was collected");
}

}  // namespace velhost
