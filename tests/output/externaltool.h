// Runs external tools that validate an output format against its published grammar.
#pragma once

#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <stdexcept>
#include <string>

#include "tests/support/namespaces.h"

namespace tests {

struct TToolResult {
  int exitStatus;      ///< -1 if it was ended by a signal
  std::string output;  ///< standard output and standard error
};

/// Runs a shell command.
inline TToolResult RunTool(const std::string& command) {
  std::FILE* pipe = popen((command + " 2>&1").c_str(), "r");
  if (pipe == nullptr) throw std::runtime_error("cannot run " + command);
  TToolResult result{-1, {}};
  std::array<char, 4096> part;
  for (std::size_t size = std::fread(part.data(), 1, part.size(), pipe); size > 0;
       size = std::fread(part.data(), 1, part.size(), pipe)) {
    result.output.append(part.data(), size);
  }
  const int status = pclose(pipe);
  if (WIFEXITED(status)) result.exitStatus = WEXITSTATUS(status);
  return result;
}

}  // namespace tests
