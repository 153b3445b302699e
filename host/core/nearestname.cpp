#include "host/core/nearestname.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace NKROVEL20 {

namespace {

constexpr std::size_t kLongestName = 128;  // anything longer is no slip of the finger

char Lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }
bool Same(char a, char b) { return Lower(a) == Lower(b); }

// Optimal string alignment: edits and swaps of neighbours. Gives up once it is at least `enough`.
std::size_t Distance(std::string_view a, std::string_view b, std::size_t enough) {
  if (std::max(a.size(), b.size()) - std::min(a.size(), b.size()) >= enough) return enough;
  std::vector<std::size_t> beforePrevious(b.size() + 1);
  std::vector<std::size_t> previous(b.size() + 1);
  std::vector<std::size_t> current(b.size() + 1);
  for (std::size_t j = 0; j <= b.size(); ++j) current[j] = j;
  std::size_t leastBefore = 0;  // of the row above: no later one is less than the least of two rows
  for (std::size_t i = 1; i <= a.size(); ++i) {
    beforePrevious.swap(previous);
    previous.swap(current);
    current[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const std::size_t change = previous[j - 1] + (Same(a[i - 1], b[j - 1]) ? 0 : 1);
      current[j] = std::min({previous[j] + 1, current[j - 1] + 1, change});
      if (i > 1 && j > 1 && Same(a[i - 1], b[j - 2]) && Same(a[i - 2], b[j - 1])) {
        current[j] = std::min(current[j], beforePrevious[j - 2] + 1);
      }
    }
    const std::size_t least = *std::min_element(current.begin(), current.end());
    if (std::min(least, leastBefore) >= enough) return enough;
    leastBefore = least;
  }
  return current[b.size()];
}

}  // namespace

std::string_view NearestName(std::string_view name, std::span<const std::string_view> candidates) {
  if (name.size() > kLongestName) return {};
  std::string_view nearest;
  std::size_t least = std::max<std::size_t>(name.size() / 3, 1) + 1;
  for (const std::string_view candidate : candidates) {
    if (candidate.size() > kLongestName) continue;
    const std::size_t distance = Distance(name, candidate, least);
    if (distance < least) {
      least = distance;
      nearest = candidate;
    }
  }
  return nearest;
}

}  // namespace NKROVEL20
