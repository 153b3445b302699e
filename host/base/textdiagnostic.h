// Diagnostics of text inputs (schemas, server files, recordings): place, message, the line, a caret.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "host/base/api.h"

namespace velhost {

/// A place in a text input. `file` is a display name; line and column count from 1, 0 is unknown.
struct TSourceLocation {
  std::string file;
  std::uint32_t line = 0;
  std::uint32_t column = 0;
};

enum class EDiagnosticSeverity { kError, kWarning };

struct TTextDiagnostic {
  EDiagnosticSeverity severity = EDiagnosticSeverity::kError;
  TSourceLocation location;
  std::string message;     ///< what was found against what was expected, without a full stop
  std::string sourceLine;  ///< the line it stands on, without its end; empty where there is none
  // Of a long line `sourceLine` may be a part, as SetSourceLine makes it.
  std::size_t sourceStart = 0;  ///< bytes of the line before that part
  std::size_t sourceSize = 0;   ///< bytes of the line; 0 where `sourceLine` is all of it
};

/// Keeps of the line as much as FormatDiagnostic shows at the column, at most 78 bytes: a text of one line of
/// megabytes may have thousands of diagnostics.
VELHOST_API void SetSourceLine(TTextDiagnostic& diagnostic, std::string_view line);

/// "FILE:LINE:COLUMN: error: MESSAGE\n", then, where the source line is known, the line and a caret
/// under the column (columns count bytes; a tab shows as one blank). A line that does not fit 80
/// columns is cut around the column, with "..." on a side that is cut; a line of 0 gives
/// "FILE: error: MESSAGE\n".
VELHOST_API std::string FormatDiagnostic(const TTextDiagnostic& diagnostic);

/// Line `number` (from 1) of a text, without its end; empty past the last one.
VELHOST_API std::string_view LineOf(std::string_view text, std::uint32_t number);

}  // namespace velhost
