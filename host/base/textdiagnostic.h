// Diagnostics of text inputs (schemas, server files, recordings): place, message, the line, a caret.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "host/base/api.h"
#include "host/base/hosterror.h"

namespace velhost {

/// A place in a text input. `file` is a display name; line and column count from 1, and 0 means unknown.
struct TSourceLocation {
  std::string file;
  std::uint32_t line = 0;
  std::uint32_t column = 0;
};

enum class EDiagnosticSeverity { kError, kWarning };

struct TTextDiagnostic {
  EDiagnosticSeverity severity = EDiagnosticSeverity::kError;
  TSourceLocation location;
  std::string message;     ///< what was found and what was expected, without a full stop
  std::string sourceLine;  ///< the line, without its end; empty if there is none
  // `sourceLine` may be part of a long line, as SetSourceLine leaves it.
  std::size_t sourceStart = 0;  ///< bytes of the line before that part
  std::size_t sourceSize = 0;   ///< bytes of the whole line; 0 if `sourceLine` is all of it
};

/// Keeps only what FormatDiagnostic will show of the line at the column, at most 78 bytes: a text that is one line of
/// several megabytes may have thousands of diagnostics.
VELHOST_API void SetSourceLine(TTextDiagnostic& diagnostic, std::string_view line);

/// "FILE:LINE:COLUMN: error: MESSAGE\n", then, if the source line is known, the line and a caret under the column
/// (columns count bytes; a tab shows as one blank). A line that does not fit 80 columns is cut around the column,
/// with "..." on each side that is cut. For line 0: "FILE: error: MESSAGE\n".
VELHOST_API std::string FormatDiagnostic(const TTextDiagnostic& diagnostic);

/// A failure at a place in a text input. Its what() is the diagnostic as FormatDiagnostic formats it.
class VELHOST_API TDiagnosedError : public THostError {
 public:
  TDiagnosedError(EFailure kind, const TTextDiagnostic& diagnostic);
  TDiagnosedError(const TDiagnosedError&) = default;
  TDiagnosedError& operator=(const TDiagnosedError&) = default;
  ~TDiagnosedError() override;
  const TTextDiagnostic& Diagnostic() const noexcept { return diagnostic_; }

 private:
  TTextDiagnostic diagnostic_;
};

/// Line `number` (from 1) of a text, without its end; empty past the last line.
VELHOST_API std::string_view LineOf(std::string_view text, std::uint32_t number);

}  // namespace velhost
