// CIM names: case-insensitive comparison and hashing, and suggestions for mistyped ones.
//
// Only A to Z fold, whatever the locale.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string>
#include <string_view>

#include "host/base/api.h"

namespace velhost {

constexpr char FoldCase(char c) noexcept { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

inline bool EqualNames(std::string_view a, std::string_view b) noexcept {
  if (a.size() != b.size()) return false;
  if (a == b) return true;  // most lookups use the declared spelling
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

/// Whether the word has a '*' or a '?', which no name has.
constexpr bool IsNamePattern(std::string_view word) noexcept { return word.find_first_of("*?") != word.npos; }

/// Whether the pattern describes the whole name: '*' stands for any number of characters, '?' for one, and any other
/// character for itself. Takes at most as many steps as the product of both sizes.
VELHOST_API bool MatchesNamePattern(std::string_view name, std::string_view pattern) noexcept;

/// Random, and fixed for the life of the process, so that nobody can craft names that all collide.
struct TNameHashKey {
  std::uint64_t start;
  std::uint64_t factor;
};
VELHOST_API const TNameHashKey& NameHashKey() noexcept;

/// Hash and equality for unordered containers keyed by CIM names.
struct TNameHash {
  using is_transparent = void;
  std::size_t operator()(std::string_view name) const noexcept {
    const TNameHashKey& key = NameHashKey();
    std::uint64_t hash = key.start ^ name.size();
    std::uint64_t word = 0;
    for (; name.size() >= sizeof word; name.remove_prefix(sizeof word)) {
      std::memcpy(&word, name.data(), sizeof word);
      hash = Mixed(hash ^ Lower(word), key.factor);
    }
    word = 0;
    for (const char c : name) word = word << 8U | static_cast<unsigned char>(c);
    return Mixed(hash ^ Lower(word), key.factor);
  }

 private:
  // Both halves of the product: the high one depends on every bit of the key.
  static std::uint64_t Mixed(std::uint64_t value, std::uint64_t factor) noexcept {
    __extension__ using TWide = unsigned __int128;
    const TWide product = TWide{value} * factor;
    return static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64U);
  }
  // Lowercases A to Z in eight bytes at once.
  static std::uint64_t Lower(std::uint64_t word) noexcept {
    constexpr std::uint64_t kOnes = 0x0101010101010101;
    const std::uint64_t low = word & kOnes * 0x7F;
    const std::uint64_t fromA = low + kOnes * (0x80 - 'A');
    const std::uint64_t behindZ = low + kOnes * (0x7F - 'Z');
    return word | (((fromA ^ behindZ) & ~word & kOnes * 0x80) >> 2U);
  }
};
struct TNameEqual {
  using is_transparent = void;
  bool operator()(std::string_view a, std::string_view b) const noexcept { return EqualNames(a, b); }
};

/// The candidate that `name` was probably meant to be: the first of those with the fewest inserted, omitted, changed
/// or swapped characters, ignoring case. At most a third of the name's characters (at least one) may differ. If no
/// candidate is that close and the name has at least four characters, the only candidate that begins with it.
/// Otherwise empty.
VELHOST_API std::string_view NearestName(std::string_view name, std::span<const std::string_view> candidates);

/// The step limit of one search. A step compares two characters; this many take less than a tenth of a second.
inline constexpr std::size_t kNameSearchSteps = 16U << 20U;

/// As above, limited to `steps` comparisons; those used are subtracted. A candidate that would exceed the limit is
/// skipped, so that many searches together, or one among many similar names, take bounded time.
VELHOST_API std::string_view NearestName(std::string_view name, std::span<const std::string_view> candidates,
                                         std::size_t& steps);

/// "; did you mean NAME?", to be appended to a message, with `quote` on both sides of the name; empty if `nearest`
/// is.
VELHOST_API std::string Suggestion(std::string_view nearest, std::string_view quote = "");

}  // namespace velhost
