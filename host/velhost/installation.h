// Where velhost finds what is installed or built with it.
#pragma once

#include <string>
#include <utility>

namespace velhost {

/// Files beside the running program, in the same places in a build tree and after installation.
class TInstallation {
 public:
  /// From the place of the running program.
  TInstallation();
  explicit TInstallation(std::string programFolder) : folder_(std::move(programFolder)) {}

  std::string Plugin() const;
  std::string SchemaFolder() const;
  std::string ServerFolder() const;
  /// The path of a server file that the user has named: of one that is shipped, if the name has no folder and
  /// nothing has it here. Throws THostError (kAbsent) with both places if it is in neither.
  std::string FindServer(const std::string& name) const;
  std::string ModuleFolder() const;

 private:
  std::string Path(const char* relative) const;
  std::string folder_;
};

}  // namespace velhost
