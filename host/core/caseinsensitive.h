// CIM names are ASCII letters, digits and underscores as far as their case goes: comparing them
// without regard to case touches only A to Z, whatever the locale.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

namespace NKROVEL20 {

constexpr char FoldCase(char c) noexcept { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

inline bool EqualNames(std::string_view a, std::string_view b) noexcept {
  if (a.size() != b.size()) return false;
  if (a == b) return true;  // names are mostly asked for as they are spelt
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (FoldCase(a[i]) != FoldCase(b[i])) return false;
  }
  return true;
}

inline std::string FoldName(std::string_view name) {
  std::string folded(name);
  for (char& c : folded) c = FoldCase(c);
  return folded;
}

/// Hash and equality for unordered containers keyed by CIM names.
struct TNameHash {
  using is_transparent = void;
  std::size_t operator()(std::string_view name) const noexcept {
    std::uint64_t hash = name.size();
    std::uint64_t word = 0;
    for (; name.size() >= sizeof word; name.remove_prefix(sizeof word)) {
      std::memcpy(&word, name.data(), sizeof word);
      hash = Mixed(hash, word);
    }
    word = 0;
    for (const char c : name) word = word << 8U | static_cast<unsigned char>(c);
    return Mixed(hash, word);
  }

 private:
  // The bit that tells capital letters from small ones is taken away from all characters alike.
  static std::uint64_t Mixed(std::uint64_t hash, std::uint64_t word) noexcept {
    const std::uint64_t mixed = (hash ^ (word | 0x2020202020202020ULL)) * 0x9E3779B97F4A7C15ULL;
    return mixed ^ mixed >> 32U;
  }
};
struct TNameEqual {
  using is_transparent = void;
  bool operator()(std::string_view a, std::string_view b) const noexcept { return EqualNames(a, b); }
};

}  // namespace NKROVEL20
