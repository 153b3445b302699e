#include "host/velhost/inputs.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <filesystem>
#include <utility>

#include "host/base/hosterror.h"
#include "host/base/names.h"
#include "host/base/text.h"

namespace velhost {

namespace {

constexpr std::string_view kCompressedStart = "\x1f\x8b";
constexpr std::string_view kResultComment = " Instances collected by velhost";

std::string HintFor(EFileKind kind, const std::string& safePath) {
  switch (kind) {
    case EFileKind::kSchema: return "; give it as --schema " + safePath;
    case EFileKind::kServerFile: return "; give it as --sp sim:" + safePath;
    case EFileKind::kRecording: return "; give it as --sp replay:" + safePath;
    case EFileKind::kResult:
    case EFileKind::kMofResult:
    case EFileKind::kXmlResult: return "; \"velhost collect --record FILE\" makes a recording";
    default: return {};
  }
}

bool Contains(std::string_view text, std::string_view part) { return text.find(part) != std::string_view::npos; }

EFileKind KindOfJson(std::string_view start) {
  if (Contains(start, "\"format\":\"velhost-recording\"")) return EFileKind::kRecording;
  for (const std::string_view kind :
       {"\"kind\":\"instancecollection\"", "\"kind\":\"instance\"", "\"kind\":\"summary\""}) {
    if (Contains(start, kind)) return EFileKind::kResult;
  }
  return EFileKind::kUnknown;
}

// Whether the first comment lines of a MOF text say that it is a result.
bool IsMofResult(std::string_view start) {
  while (start.starts_with("//")) {
    if (start.substr(2).starts_with(kResultComment)) return true;
    start.remove_prefix(std::min(start.find('\n'), start.size() - 1) + 1);
  }
  return false;
}

// The beginning of a table does not identify it. But it ends in a summary, and does not begin with a word that MOF
// begins with.
bool IsTable(std::string_view start, std::string_view end) {
  static constexpr std::array<std::string_view, 3> kMofWords = {"class", "instance", "qualifier"};
  const auto isLetter = [](char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); };
  const auto* const wordEnd = std::find_if_not(start.begin(), start.end(), isLetter);
  const std::string_view word = start.substr(0, static_cast<std::size_t>(wordEnd - start.begin()));
  const auto isWord = [word](std::string_view mofWord) { return EqualNames(word, mofWord); };
  if (word.empty() || std::any_of(kMofWords.begin(), kMofWords.end(), isWord)) return false;
  return end.starts_with("Summary\n") || Contains(end, "\nSummary\n");
}

EFileKind KindByContent(std::string_view start, std::string_view end) {
  if (start.starts_with(kCompressedStart)) return EFileKind::kCompressed;
  if (start.starts_with('{')) return KindOfJson(start);
  if (start.starts_with("<?xml") || start.starts_with("<CIM")) {
    return Contains(start, kResultComment) ? EFileKind::kXmlResult : EFileKind::kXml;
  }
  if (IsMofResult(start)) return EFileKind::kMofResult;
  return IsTable(start, end) ? EFileKind::kResult : EFileKind::kUnknown;
}

}  // namespace

EFileKind KindOfFile(std::string_view path, std::string_view start, std::string_view end) {
  end.remove_prefix(end.size() - std::min(end.size(), kFileKindBytes));
  const EFileKind kind = KindByContent(start.substr(0, kFileKindBytes), end);
  if (kind != EFileKind::kUnknown) return kind;
  const std::string suffix = std::filesystem::path(path).extension().string();
  if (EqualNames(suffix, ".toml")) return EFileKind::kServerFile;
  return EqualNames(suffix, ".mof") ? EFileKind::kSchema : EFileKind::kUnknown;
}

const char* NameOf(EFileKind kind) {
  switch (kind) {
    case EFileKind::kSchema: return "a schema";
    case EFileKind::kServerFile: return "a server file";
    case EFileKind::kRecording: return "a recording";
    case EFileKind::kResult: return "a result";
    case EFileKind::kMofResult: return "a result in MOF";
    case EFileKind::kXmlResult: return "a result in CIM-XML";
    case EFileKind::kXml: return "an XML file";
    case EFileKind::kCompressed: return "a compressed file";
    case EFileKind::kUnknown: break;
  }
  return "a file";
}

std::string WrongKindText(EFileKind wanted, const std::string& path, std::string_view start, std::string_view end) {
  const EFileKind found = KindOfFile(path, start, end);
  const bool isMof = found == EFileKind::kMofResult && wanted == EFileKind::kSchema;
  if (found == EFileKind::kUnknown || found == wanted || isMof) return {};
  const std::string safePath = SafeText(path);
  return safePath + " is " + NameOf(found) + ", not " + NameOf(wanted) + HintFor(found, safePath);
}

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
