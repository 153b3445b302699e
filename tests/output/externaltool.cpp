#include "tests/output/externaltool.h"

#include <stdlib.h>
#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <set>
#include <stdexcept>

namespace tests {

TToolResult RunTool(const std::string& command) {
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

TTemporaryFolder::TTemporaryFolder() {
  std::string pattern = (std::filesystem::temp_directory_path() / "velhost-output-XXXXXX").string();
  if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("cannot create " + pattern);
  path_ = pattern;
}

TTemporaryFolder::~TTemporaryFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

std::string TTemporaryFolder::Write(const std::string& name, const std::string& content) const {
  std::ofstream file(path_ / name, std::ios::binary);
  file << content;
  if (!file.flush()) throw std::runtime_error("cannot write " + name);
  return path_ / name;
}

std::string TTemporaryFolder::Read(const std::string& name) const {
  std::ifstream file(path_ / name, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::string TTemporaryFolder::Names() const {
  std::set<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(path_)) names.insert(entry.path().filename());
  std::string text;
  for (const std::string& name : names) text += (text.empty() ? "" : " ") + name;
  return text;
}

}  // namespace tests
