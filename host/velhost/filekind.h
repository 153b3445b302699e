// What kind of file an input is, to say so of one in the wrong place.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace velhost {

enum class EFileKind { kUnknown, kSchema, kServerFile, kRecording, kResult, kCompressed };

/// How much of a content's beginning is looked at: a result of any form says what it is well before.
inline constexpr std::size_t kFileKindBytes = 4096;

/// By the content's beginning where that tells, else by the name's suffix (.toml, .mof).
EFileKind KindOfFile(std::string_view path, std::string_view content);

/// Empty unless the file is surely of another kind than `wanted`: "a.toml is a server file, not a schema; ...",
/// with what it is for.
std::string WrongKindText(EFileKind wanted, const std::string& path, std::string_view content);

}  // namespace velhost
