// What velhost says on standard error.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "host/base/textdiagnostic.h"

namespace velhost {

/// "velhost: " and the text on a line of its own. The text may have further lines, which belong to the
/// first. What could disturb a terminal shows as escapes (SafeLines). Failed writes are ignored:
/// nobody is left to tell.
void Say(std::string_view text);

/// Says the text and ends the process as a defect, without running anything else of it.
[[noreturn]] void SayAndEndAtOnce(const std::string& text);

/// Each diagnostic as FormatDiagnostic has it, behind "velhost: ".
void SayDiagnostics(const std::vector<TTextDiagnostic>& diagnostics);

/// Bytes as they are, whole lines: the collector's trace. Escaped as Say does where standard error is a
/// terminal.
void WriteToStandardError(std::string_view text);

/// While it lives, `before` is called before anything of the above is written: what else stands on the
/// terminal can be taken away. One at a time.
class TMessageHook {
 public:
  explicit TMessageHook(std::function<void()> before);
  ~TMessageHook();
  TMessageHook(const TMessageHook&) = delete;
  TMessageHook& operator=(const TMessageHook&) = delete;
};

}  // namespace velhost
