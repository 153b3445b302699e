#include "tests/support/tracefile.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

namespace tests {

namespace {

std::vector<std::string> SplitLines(const std::string& text) {
  std::istringstream in(text);
  std::vector<std::string> lines;
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

std::string LineAt(const std::vector<std::string>& lines, std::size_t i) {
  return i < lines.size() ? lines[i] : std::string("(end)");
}

}  // namespace

std::string TraceText(const std::vector<TLine>& lines) {
  std::string text;
  for (const TLine& line : lines) {
    text += std::to_string(line.severity) + ":";
    for (const char c : line.message) text += c == '\n' ? std::string("$\n :") : std::string(1, c);
    text += "$\n";
  }
  return text;
}

void ExpectTrace(const std::vector<TLine>& lines, const std::string& path) {
  std::ifstream file(path);
  ASSERT_TRUE(file) << path;
  std::ostringstream content;
  content << file.rdbuf();
  const std::vector<std::string> expected = SplitLines(content.str());
  const std::vector<std::string> actual = SplitLines(TraceText(lines));
  ASSERT_FALSE(expected.empty());
  for (std::size_t i = 0; i < std::max(expected.size(), actual.size()); ++i) {
    ASSERT_EQ(LineAt(actual, i), LineAt(expected, i)) << "at line " << i + 1 << " of " << path;
  }
}

}  // namespace tests
