// Runs a fuzz target over each file in the given folders, seeds and grown inputs alike. Works with any
// compiler.
#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

std::vector<std::uint8_t> ReadAll(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw std::runtime_error("cannot open " + path.string());
  return std::vector<std::uint8_t>(std::istreambuf_iterator<char>(file), {});
}

std::vector<std::filesystem::path> FilesIn(const char* folder) {
  std::vector<std::filesystem::path> files;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) files.push_back(entry.path());
  std::sort(files.begin(), files.end());
  return files;
}

}  // namespace

int main(int argc, char** argv) {
  int count = 0;
  for (int i = 1; i < argc; ++i) {
    const std::vector<std::filesystem::path> files = FilesIn(argv[i]);
    if (files.empty()) {
      std::cerr << argv[i] << " has no inputs\n";
      return 1;
    }
    for (const std::filesystem::path& path : files) {
      std::cout << path.filename().string() << std::endl;  // printed first, so that a crash names its file
      const std::vector<std::uint8_t> bytes = ReadAll(path);
      LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
      ++count;
    }
  }
  std::cout << count << " inputs\n";
  return count == 0 ? 1 : 0;
}
