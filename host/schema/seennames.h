// Finds duplicate names in a list.
#pragma once

#include <algorithm>
#include <string_view>
#include <vector>

#include "host/schema/mofsyntax.h"

namespace velhost {

/// Most lists are short, and for a few names a linear search is faster than a set.
class TSeenNames {
 public:
  /// Whether the name is new, ignoring case. The text must outlive this.
  bool Add(std::string_view name) {
    if (few_.size() == kFew) return many_.insert(name).second && !IsFew(name);
    if (IsFew(name)) return false;
    few_.push_back(name);
    return true;
  }

 private:
  static constexpr std::size_t kFew = 24;

  bool IsFew(std::string_view name) const {
    return std::any_of(few_.begin(), few_.end(), [name](std::string_view seen) { return EqualNames(seen, name); });
  }

  std::vector<std::string_view> few_;
  Mof::TNameSet many_;
};

}  // namespace velhost
