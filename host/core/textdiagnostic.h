// Diagnostics of text inputs (schemas, server files, recordings): place, message, the line, a caret.
#pragma once

#include <string>
#include <string_view>

#include "host/core/classdefinition.h"
#include "nkrovel20/api.h"

namespace NKROVEL20 {

enum class EDiagnosticSeverity { kError, kWarning };

struct TTextDiagnostic {
  EDiagnosticSeverity severity = EDiagnosticSeverity::kError;
  TSourceLocation location;
  std::string message;     ///< what was found against what was expected, without a full stop
  std::string sourceLine;  ///< the line it stands on, without its end; empty where there is none
};

/// "FILE:LINE:COLUMN: error: MESSAGE\n", then, where the source line is known, the line and a caret
/// under the column (columns count bytes; a tab shows as one blank). A line that does not fit 80
/// columns is cut around the column, with "..." on a side that is cut; a line of 0 gives
/// "FILE: error: MESSAGE\n".
NKROVEL20_API std::string FormatDiagnostic(const TTextDiagnostic& diagnostic);

/// Line `number` (from 1) of a text, without its end; empty past the last one.
NKROVEL20_API std::string_view LineOf(std::string_view text, std::uint32_t number);

}  // namespace NKROVEL20
