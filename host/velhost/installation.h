// Where velhost finds the files that are installed or built with it, and other programs.
#pragma once

#include <string>
#include <utility>

namespace velhost {

/// Files relative to the running program, in the same layout in a build tree and after installation.
class TInstallation {
 public:
  /// Locates the files from the path of the running program.
  TInstallation();
  explicit TInstallation(std::string programFolder) : folder_(std::move(programFolder)) {}

  std::string Plugin() const;
  std::string SchemaFolder() const;
  std::string ServerFolder() const;
  /// The path of a server file that the user named. A plain file name that does not exist in the current folder refers
  /// to a shipped server file. Throws THostError (kAbsent) that names both places if it is in neither.
  std::string FindServer(const std::string& name) const;
  std::string ModuleFolder() const;

 private:
  std::string Path(const char* relative) const;
  std::string folder_;
};

/// The path of a program in the folders of PATH, without those that are empty or relative, which depend on the current
/// folder. Empty if no folder has it.
std::string FindProgram(const std::string& name);

}  // namespace velhost
