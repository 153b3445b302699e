#include "host/velhost/filekind.h"

#include <array>
#include <filesystem>

#include "host/base/caseinsensitive.h"
#include "host/base/unsafetext.h"

namespace velhost {

namespace {

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

}  // namespace

EFileKind KindOfFile(std::string_view path, std::string_view content) {
  const EFileKind kind = KindByContent(content);
  if (kind != EFileKind::kUnknown) return kind;
  const std::string suffix = std::filesystem::path(path).extension().string();
  if (EqualNames(suffix, ".toml")) return EFileKind::kServerFile;
  return EqualNames(suffix, ".mof") ? EFileKind::kSchema : EFileKind::kUnknown;
}

std::string WrongKindText(EFileKind wanted, const std::string& path, std::string_view content) {
  const EFileKind found = KindOfFile(path, content);
  if (found == EFileKind::kUnknown || found == wanted) return {};
  const std::string safePath = SafeText(path);
  return safePath + " is " + NameOf(found) + ", not " + NameOf(wanted) + HintFor(found, safePath);
}

}  // namespace velhost
