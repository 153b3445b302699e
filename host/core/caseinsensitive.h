// CIM names are ASCII letters, digits and underscores as far as their case goes: comparing them
// without regard to case touches only A to Z, whatever the locale.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace NKROVEL20 {

constexpr char FoldCase(char c) noexcept { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

inline bool EqualNames(std::string_view a, std::string_view b) noexcept {
  if (a.size() != b.size()) return false;
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
    std::size_t hash = 14695981039346656037ULL;
    for (const char c : name) hash = (hash ^ static_cast<unsigned char>(FoldCase(c))) * 1099511628211ULL;
    return hash;
  }
};
struct TNameEqual {
  using is_transparent = void;
  bool operator()(std::string_view a, std::string_view b) const noexcept { return EqualNames(a, b); }
};

}  // namespace NKROVEL20
