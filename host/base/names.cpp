#include "host/base/names.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstddef>
#include <utility>

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

namespace {

constexpr std::size_t kLongestName = 128;  // anything longer is not a typing mistake
constexpr std::size_t kShortestBeginning = 4;

bool Same(char a, char b) { return FoldCase(a) == FoldCase(b); }

using TRow = std::array<std::size_t, kLongestName + 1>;

// Optimal string alignment distance: edits and swaps of neighbours. Gives up once it is at least `enough`.
std::size_t Distance(std::string_view a, std::string_view b, std::size_t enough, std::size_t& steps) {
  if (std::max(a.size(), b.size()) - std::min(a.size(), b.size()) >= enough) return enough;
  std::array<TRow, 3> rows;
  std::size_t* beforePrevious = rows[0].data();
  std::size_t* previous = rows[1].data();
  std::size_t* current = rows[2].data();
  for (std::size_t j = 0; j <= b.size(); ++j) current[j] = j;
  std::size_t leastBefore = 0;  // of the row above; later rows cannot go below the lesser of the last two
  for (std::size_t i = 1; i <= a.size(); ++i) {
    if (steps < b.size()) return enough;
    steps -= b.size();
    std::swap(beforePrevious, previous);
    std::swap(previous, current);
    current[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const std::size_t change = previous[j - 1] + (Same(a[i - 1], b[j - 1]) ? 0 : 1);
      current[j] = std::min({previous[j] + 1, current[j - 1] + 1, change});
      if (i > 1 && j > 1 && Same(a[i - 1], b[j - 2]) && Same(a[i - 2], b[j - 1])) {
        current[j] = std::min(current[j], beforePrevious[j - 2] + 1);
      }
    }
    const std::size_t least = *std::min_element(current, current + b.size() + 1);
    if (std::min(least, leastBefore) >= enough) return enough;
    leastBefore = least;
  }
  return current[b.size()];
}

bool BeginsWith(std::string_view name, std::string_view beginning) {
  return name.size() >= beginning.size() && std::equal(beginning.begin(), beginning.end(), name.begin(), Same);
}

// The only candidate that begins with `beginning`; empty if there is none or more than one.
std::string_view OnlyContinuation(std::string_view beginning, std::span<const std::string_view> candidates) {
  if (beginning.size() < kShortestBeginning) return {};
  const auto begins = [beginning](std::string_view candidate) { return BeginsWith(candidate, beginning); };
  const auto first = std::find_if(candidates.begin(), candidates.end(), begins);
  if (first == candidates.end() || std::any_of(first + 1, candidates.end(), begins)) return {};
  return *first;
}

}  // namespace

std::string_view NearestName(std::string_view name, std::span<const std::string_view> candidates) {
  std::size_t steps = kNameSearchSteps;
  return NearestName(name, candidates, steps);
}

std::string_view NearestName(std::string_view name, std::span<const std::string_view> candidates, std::size_t& steps) {
  if (name.size() > kLongestName) return {};
  std::string_view nearest;
  std::size_t least = std::max<std::size_t>(name.size() / 3, 1) + 1;
  for (const std::string_view candidate : candidates) {
    if (candidate.size() > kLongestName) continue;
    const std::size_t distance = Distance(name, candidate, least, steps);
    if (distance < least) {
      least = distance;
      nearest = candidate;
    }
  }
  return nearest.empty() ? OnlyContinuation(name, candidates) : nearest;
}

std::string Suggestion(std::string_view nearest, std::string_view quote) {
  if (nearest.empty()) return {};
  return std::string("; did you mean ").append(quote).append(nearest).append(quote).append("?");
}

}  // namespace velhost
