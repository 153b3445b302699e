// Runs the tools that hold an output form against its published grammar.
#pragma once

#include <string>

#include "tests/support/namespaces.h"

namespace tests {

struct TToolResult {
  int exitStatus;      ///< -1 where it did not end by itself
  std::string output;  ///< both of its streams
};

/// Runs a shell command.
TToolResult RunTool(const std::string& command);

}  // namespace tests
