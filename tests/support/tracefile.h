// A whole trace held against a file.
#pragma once

#include <string>
#include <vector>

#include "tests/support/namespaces.h"
#include "tests/support/recordinglogger.h"

namespace tests {

/// The lines as text: each with its severity's number and a colon in front, the further lines of a
/// message with a blank and a colon, and every line closed by "$", so that blanks at its end and
/// newlines at the end of a message show.
std::string TraceText(const std::vector<TLine>& lines);

/// Reports the first line in which the trace differs from the file.
void ExpectTrace(const std::vector<TLine>& lines, const std::string& path);

}  // namespace tests
