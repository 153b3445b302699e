#include "host/schema/nearestname.h"

#include <algorithm>
#include <array>
#include <vector>

#include "host/core/caseinsensitive.h"

namespace NKROVEL20 {

namespace {

constexpr std::size_t kMostChanges = 3;
constexpr std::size_t kLongestName = 128;
constexpr std::size_t kMostOffers = 5000;

// The number of changes from `a` to `b`, or some number above `limit` when there are more. Only the
// diagonal band that can stay within the limit is worked out.
std::size_t Distance(std::string_view a, std::string_view b, std::size_t limit) {
  const std::size_t far = limit + 1;
  std::array<std::vector<std::size_t>, 3> rows;  // of a[i-2], a[i-1] and a[i]
  for (auto& row : rows) row.assign(b.size() + 1, far);
  for (std::size_t j = 0; j <= std::min(limit, b.size()); ++j) rows[0][j] = j;
  for (std::size_t i = 1; i <= a.size(); ++i) {
    auto& row = rows.at(i % 3);
    const auto& above = rows.at((i + 2) % 3);
    const auto& twoAbove = rows.at((i + 1) % 3);
    std::fill(row.begin(), row.end(), far);
    if (i <= limit) row[0] = i;
    const std::size_t from = i > limit ? i - limit : 1;
    for (std::size_t j = from; j <= std::min(b.size(), i + limit); ++j) {
      const std::size_t change = FoldCase(a[i - 1]) == FoldCase(b[j - 1]) ? 0 : 1;
      row[j] = std::min({above[j - 1] + change, above[j] + 1, row[j - 1] + 1});
      const bool swapped =
          i > 1 && j > 1 && FoldCase(a[i - 1]) == FoldCase(b[j - 2]) && FoldCase(a[i - 2]) == FoldCase(b[j - 1]);
      if (swapped) row[j] = std::min(row[j], twoAbove[j - 2] + 1);
    }
  }
  return rows.at(a.size() % 3)[b.size()];
}

}  // namespace

TNearestName::TNearestName(std::string_view name)
    : name_(name.substr(0, kLongestName)), allowed_(std::min(kMostChanges, name_.size() / 3)) {}

void TNearestName::Offer(std::string_view candidate) {
  const std::size_t longer = std::max(candidate.size(), name_.size());
  const std::size_t shorter = std::min(candidate.size(), name_.size());
  if (longer - shorter > allowed_ || (allowed_ == 0 && !best_.empty())) return;
  if (++offers_ > kMostOffers) return;
  const std::size_t distance = Distance(name_, candidate, allowed_);
  if (distance > allowed_) return;
  if (distance == allowed_ && !best_.empty()) return;
  best_ = candidate;
  allowed_ = distance;
}

std::string TNearestName::Hint() const { return best_.empty() ? std::string() : "; did you mean " + best_ + "?"; }

}  // namespace NKROVEL20
