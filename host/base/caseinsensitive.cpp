#include "host/base/caseinsensitive.h"

#include <unistd.h>

#include <chrono>
#include <cstddef>

namespace velhost {

namespace {

TNameHashKey DrawKey() noexcept {
  TNameHashKey key = {};
  if (getentropy(&key, sizeof key) != 0) {
    key.start = static_cast<std::uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count());
    key.factor = key.start * 0x9E3779B97F4A7C15ULL;
  }
  key.factor |= 1U;
  return key;
}

}  // namespace

bool MatchesNamePattern(std::string_view name, std::string_view pattern) noexcept {
  std::size_t at = 0;
  std::size_t in = 0;
  // If a match fails, the last '*' takes one more character. What an earlier one took need not change: whatever the
  // text between the two matches later in the name, it has matched already.
  std::size_t afterStar = std::string_view::npos;
  std::size_t taken = 0;
  while (at < name.size()) {
    if (in < pattern.size() && pattern[in] == '*') {
      afterStar = ++in;
      taken = at;
    } else if (in < pattern.size() && (pattern[in] == '?' || FoldCase(pattern[in]) == FoldCase(name[at]))) {
      ++in;
      ++at;
    } else if (afterStar != std::string_view::npos) {
      in = afterStar;
      at = ++taken;
    } else {
      return false;
    }
  }
  return pattern.find_first_not_of('*', in) == std::string_view::npos;
}

const TNameHashKey& NameHashKey() noexcept {
  static const TNameHashKey key = DrawKey();
  return key;
}

}  // namespace velhost
