// A folder for the files of one test.
#pragma once

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <stdexcept>
#include <string>

#include "tests/support/namespaces.h"

namespace tests {

/// A new folder, removed with everything in it.
class TTemporaryFolder {
 public:
  TTemporaryFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "velhost-test-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("cannot create " + pattern);
    path_ = pattern;
  }
  ~TTemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  TTemporaryFolder(const TTemporaryFolder&) = delete;
  TTemporaryFolder& operator=(const TTemporaryFolder&) = delete;

  const std::filesystem::path& Path() const { return path_; }
  /// Writes a file into it and returns its path.
  std::string Write(const std::string& name, const std::string& content) const {
    std::ofstream file(path_ / name, std::ios::binary);
    file << content;
    if (!file.flush()) throw std::runtime_error("cannot write " + name);
    return path_ / name;
  }
  /// The content of a file in it.
  std::string Read(const std::string& name) const {
    std::ifstream file(path_ / name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  }
  /// The names in it, in order, separated by blanks.
  std::string Names() const {
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(path_)) names.insert(entry.path().filename());
    std::string text;
    for (const std::string& name : names) text += (text.empty() ? "" : " ") + name;
    return text;
  }

 private:
  std::filesystem::path path_;
};

}  // namespace tests
