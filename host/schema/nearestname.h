// "did you mean": the declared name that is closest to a misspelled one.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace NKROVEL20 {

/// Keeps the candidate with the fewest single-character changes (insert, drop, replace, swap of two
/// neighbours; without regard to case) from the name looked for. At most a third of the name's
/// characters, and at most three, may differ. The first of equally close ones wins. After 5,000
/// candidates no more are looked at.
class TNearestName {
 public:
  explicit TNearestName(std::string_view name);
  void Offer(std::string_view candidate);
  /// "; did you mean NAME?", or empty when nothing comes close.
  std::string Hint() const;
  const std::string& Best() const { return best_; }

 private:
  std::string name_;
  std::string best_;
  std::size_t offers_ = 0;
  std::size_t allowed_;  // changes that a candidate may still need
};

}  // namespace NKROVEL20
