// What kind of input a file is.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace velhost {

enum class EFileKind { kUnknown, kSchema, kServerFile, kRecording, kResult, kMofResult, kXmlResult, kXml, kCompressed };

/// How much of a file's beginning and end is examined.
inline constexpr std::size_t kFileKindBytes = 4096;

/// The kind as the content shows it, or else the suffix (.toml, .mof). `start` is the beginning of the content, and
/// `end` the end of it, which is needed to recognise a table; either may be all of it.
EFileKind KindOfFile(std::string_view path, std::string_view start, std::string_view end);

/// "a recording"; "a file" for kUnknown.
const char* NameOf(EFileKind kind);

/// Empty unless the file is certainly of another kind than the one wanted: "a.toml is a server file, not a schema; give
/// it as --sp sim:a.toml".
std::string WrongKindText(EFileKind wanted, const std::string& path, std::string_view start, std::string_view end);

}  // namespace velhost
