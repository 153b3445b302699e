// Searches this process's memory for a text, as someone who reads its memory would.
#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include "tests/support/namespaces.h"

namespace tests {

/// A text that is stored encoded, so that the search does not find it here.
class THiddenText {
 public:
  static constexpr std::uint8_t kCode = 0xA5;

  /// "Qz7!vK2#mW9?pL4%", each character XOR 0xA5.
  static constexpr std::array<std::uint8_t, 16> kCoded = {0xF4, 0xDF, 0x92, 0x84, 0xD3, 0xEE, 0x97, 0x86,
                                                          0xC8, 0xF2, 0x9C, 0x9A, 0xD5, 0xE9, 0x91, 0x80};

  static std::string Decoded() {
    std::string text;
    for (const std::uint8_t byte : kCoded) text += static_cast<char>(byte ^ kCode);
    return text;
  }
  static bool IsAt(const std::uint8_t* place) {
    for (std::size_t i = 0; i < kCoded.size(); ++i) {
      if ((place[i] ^ kCode) != kCoded[i]) return false;
    }
    return true;
  }
};

/// Reads through the kernel, so that no sanitizer objects to the bytes read.
class TMemorySearch {
 public:
  TMemorySearch() : memory_(open("/proc/self/mem", O_RDONLY | O_CLOEXEC)) {}
  ~TMemorySearch() { close(memory_); }
  TMemorySearch(const TMemorySearch&) = delete;
  TMemorySearch& operator=(const TMemorySearch&) = delete;

  /// "ADDRESS MAPPING" for each occurrence of THiddenText.
  std::vector<std::string> Places() {
    std::vector<std::string> found;
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
      unsigned long start = 0;
      unsigned long end = 0;
      std::array<char, 5> rights{};
      if (std::sscanf(line.c_str(), "%lx-%lx %4s", &start, &end, rights.data()) != 3 || rights[1] != 'w') continue;
      // Skip stacks, where the dynamic linker and others save whatever is in registers, and a sanitizer's tables.
      const bool stack = line.ends_with("[stack]");
      if (!stack && end - start <= kLargest) Search(start, end, line, found);
    }
    return found;
  }

 private:
  static constexpr unsigned long kLargest = 1UL << 22U;

  void Search(unsigned long start, unsigned long end, const std::string& line, std::vector<std::string>& found) {
    constexpr std::size_t kLength = THiddenText::kCoded.size();
    for (unsigned long at = start; at < end; at += piece_.size() - kLength) {
      const ssize_t got =
          pread(memory_, piece_.data(), std::min<unsigned long>(piece_.size(), end - at), static_cast<off_t>(at));
      for (std::size_t i = 0; got > 0 && i + kLength <= static_cast<std::size_t>(got); ++i) {
        const auto* const place = piece_.data() + i;
        // Skip what this search has read itself.
        const auto address = at + i;
        const auto own = reinterpret_cast<unsigned long>(piece_.data());
        if (THiddenText::IsAt(place) && (address < own || address >= own + piece_.size())) {
          found.push_back(std::to_string(address) + " " + line);
        }
      }
    }
  }

  int memory_;
  std::array<std::uint8_t, 65536> piece_{};
};

}  // namespace tests
