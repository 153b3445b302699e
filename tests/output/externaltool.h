// Runs external tools that validate an output format against its published grammar.
#pragma once

#include <string>

#include "tests/support/namespaces.h"

namespace tests {

struct TToolResult {
  int exitStatus;      ///< -1 if it was ended by a signal
  std::string output;  ///< standard output and standard error
};

/// Runs a shell command.
TToolResult RunTool(const std::string& command);

}  // namespace tests
