// The standard streams: makes them safe at the start, tells what they are connected to, and writes to them: data to
// standard output, messages to standard error.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "host/base/textdiagnostic.h"
#include "host/velhost/commandline.h"

namespace velhost {

/// Call this first. Replaces each closed standard stream with /dev/null; otherwise a file opened later would get its
/// number, and be read or written as that stream. Makes writes to a closed pipe or beyond the file size limit fail with
/// an error instead of ending the process.
void PrepareStandardStreams();

/// Writes all of it. Throws TClosedPipe, or THostError (kNotWritten) if standard output is closed or full.
void WriteToStandardOutput(std::string_view text);

/// Whether the descriptor is a terminal.
bool IsTerminal(int descriptor);

/// The columns of the descriptor's terminal; else those in the environment variable COLUMNS; else 80.
int TerminalWidth(int descriptor);

inline constexpr int kNoTerminal = -1;
/// Whether to colour what goes to the descriptor, or to a file (kNoTerminal). kAuto: if it is a terminal that is not
/// "dumb" and NO_COLOR is not set in the environment.
bool UseColor(EWhen when, int descriptor);

// The following functions write to standard error, or to the pager if one runs on the same terminal.

/// Writes "velhost: " and the text on a line of its own. Further lines of the text are written as continuation lines.
/// Anything that could disturb a terminal is escaped (SafeLines). Failed writes are ignored: there is nowhere left to
/// report them.
void Say(std::string_view text);

/// Says the text if details are shown.
void SayDetail(std::string_view text);
/// Whether details are shown from now on; at first they are not.
void ShowDetails(bool shown);

/// Says the text and ends the process with the status of a defect, without running anything else, not even
/// destructors.
[[noreturn]] void SayAndEndAtOnce(const std::string& text);

/// Writes each diagnostic as FormatDiagnostic formats it, after "velhost: ".
void SayDiagnostics(const std::vector<TTextDiagnostic>& diagnostics);

/// Writes whole lines unchanged: the collector's trace. If standard error is a terminal, they are escaped as in Say.
void WriteToStandardError(std::string_view text);

/// While it lives, `before` is called before any of the functions above writes, so that a progress line can be
/// removed. Only one may exist at a time.
class TMessageHook {
 public:
  explicit TMessageHook(std::function<void()> before);
  ~TMessageHook();
  TMessageHook(const TMessageHook&) = delete;
  TMessageHook& operator=(const TMessageHook&) = delete;
};

}  // namespace velhost
