// Runs the tools that hold an output form against its published grammar.
#pragma once

#include <filesystem>
#include <string>

#include "tests/support/namespaces.h"

namespace tests {

struct TToolResult {
  int exitStatus;      ///< -1 where it did not end by itself
  std::string output;  ///< both of its streams
};

/// Runs a shell command.
TToolResult RunTool(const std::string& command);

/// A new folder, removed with everything in it.
class TTemporaryFolder {
 public:
  TTemporaryFolder();
  ~TTemporaryFolder();
  TTemporaryFolder(const TTemporaryFolder&) = delete;
  TTemporaryFolder& operator=(const TTemporaryFolder&) = delete;

  const std::filesystem::path& Path() const { return path_; }
  /// Writes a file into it and returns its path.
  std::string Write(const std::string& name, const std::string& content) const;
  /// The content of a file in it.
  std::string Read(const std::string& name) const;
  /// The names in it, in order, with a blank between.
  std::string Names() const;

 private:
  std::filesystem::path path_;
};

}  // namespace tests
