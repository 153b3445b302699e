// Comparison of a whole trace with a file.
#pragma once

#include <string>
#include <vector>

#include "tests/support/namespaces.h"
#include "tests/support/recordinglogger.h"

namespace tests {

/// The lines as text. Each line starts with its severity's number and a colon; further lines of a message start with
/// a blank and a colon. Every line ends with "$", which makes trailing blanks and newlines visible.
std::string TraceText(const std::vector<TLine>& lines);

/// Fails at the first line in which the trace differs from the file.
void ExpectTrace(const std::vector<TLine>& lines, const std::string& path);

}  // namespace tests
