// Comparison of a whole trace with a file, and the trace's decimal dumps, implemented independently for the tests.
#pragma once

#include <string>
#include <vector>

#include "tests/support/namespaces.h"
#include "tests/support/recordinglogger.h"
#include "tests/support/scriptedserviceprocessor.h"

namespace tests {

/// The lines as text. Each line starts with its severity's number and a colon; further lines of a message start with
/// a blank and a colon. Every line ends with "$", which makes trailing blanks and newlines visible.
std::string TraceText(const std::vector<TLine>& lines);

/// Fails at the first line in which the trace differs from the file.
void ExpectTrace(const std::vector<TLine>& lines, const std::string& path);

/// The first `count` bytes, padded with zeros, eight per line, between two newlines.
inline std::string DumpText(const TBytes& bytes, std::size_t count) {
  std::string text;
  for (std::size_t i = 0; i < count; ++i) {
    if (i % 8 == 0) text += "\n";
    text += std::to_string(i < bytes.size() ? bytes[i] : 0) + " ";
  }
  return text + "\n";
}

}  // namespace tests
