#include "host/velhost/inputs.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <utility>

#include "host/base/caseinsensitive.h"
#include "host/base/unsafetext.h"

namespace velhost {

namespace {

// How much of a file's beginning is examined. A result of any format identifies itself well before that.
constexpr std::size_t kFileKindBytes = 4096;
constexpr std::string_view kCompressedStart = "\x1f\x8b";

const char* NameOf(EFileKind kind) {
  switch (kind) {
    case EFileKind::kSchema: return "a schema";
    case EFileKind::kServerFile: return "a server file";
    case EFileKind::kRecording: return "a recording";
    case EFileKind::kResult: return "a result";
    case EFileKind::kCompressed: return "a compressed file";
    case EFileKind::kUnknown: break;
  }
  return "a file";
}

std::string HintFor(EFileKind kind, const std::string& safePath) {
  switch (kind) {
    case EFileKind::kSchema: return "; give it as --schema " + safePath;
    case EFileKind::kServerFile: return "; give it as --sp sim:" + safePath;
    case EFileKind::kRecording: return "; give it as --sp replay:" + safePath;
    case EFileKind::kResult: return "; \"velhost collect --record FILE\" makes a recording";
    default: return {};
  }
}

bool Mentions(std::string_view content, std::string_view text) {
  return content.substr(0, kFileKindBytes).find(text) != std::string_view::npos;
}

EFileKind KindByContent(std::string_view content) {
  if (content.starts_with(kCompressedStart)) return EFileKind::kCompressed;
  if (!content.starts_with('{')) return EFileKind::kUnknown;
  if (Mentions(content, "\"format\":\"velhost-recording\"")) return EFileKind::kRecording;
  for (const std::string_view kind :
       {"\"kind\":\"instancecollection\"", "\"kind\":\"instance\"", "\"kind\":\"summary\""}) {
    if (Mentions(content, kind)) return EFileKind::kResult;
  }
  return EFileKind::kUnknown;
}

EFileKind KindOfFile(std::string_view path, std::string_view content) {
  const EFileKind kind = KindByContent(content);
  if (kind != EFileKind::kUnknown) return kind;
  const std::string suffix = std::filesystem::path(path).extension().string();
  if (EqualNames(suffix, ".toml")) return EFileKind::kServerFile;
  return EqualNames(suffix, ".mof") ? EFileKind::kSchema : EFileKind::kUnknown;
}

// Empty unless the file is certainly of another kind than the one wanted.
std::string WrongKindText(EFileKind wanted, const std::string& path, std::string_view content) {
  const EFileKind found = KindOfFile(path, content);
  if (found == EFileKind::kUnknown || found == wanted) return {};
  const std::string safePath = SafeText(path);
  return safePath + " is " + NameOf(found) + ", not " + NameOf(wanted) + HintFor(found, safePath);
}

}  // namespace

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
  if (inputs_.Files().size() == noted) {  // a plain file, which has not been noted yet
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
  if (!wrong.empty()) throw TEndedReading(EFailure::kMalformed, wrong);
}

void TInputReader::CheckStop() {
  const TStopSignal& stop = inputs_.Stop();
  if (!stop.IsStopped()) return;
  const std::string why = stop.WasRequested() ? "interrupted" : "deadline reached";
  throw TEndedReading(EFailure::kStopped, why + " while reading " + use_.what + "; nothing was collected");
}

}  // namespace velhost
