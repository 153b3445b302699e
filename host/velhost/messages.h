// The messages of velhost on standard error.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "host/base/textdiagnostic.h"

namespace velhost {

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
