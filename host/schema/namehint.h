// "did you mean": the declared name that is closest to one that is not declared.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace NKROVEL20 {

/// Takes the declared names one by one. Very short names are left alone, since everything is close
/// to them; and of a huge schema only the first few thousand names are looked at.
class TNameHint {
 public:
  explicit TNameHint(std::string_view name) : name_(name) {}
  /// The candidate must outlive this.
  void Offer(std::string_view candidate);
  /// "; did you mean NAME?", or empty when nothing comes close.
  std::string Text() const;

 private:
  static constexpr std::size_t kShortest = 3;
  static constexpr std::size_t kMost = 5000;

  std::string_view name_;
  std::vector<std::string_view> candidates_;
};

}  // namespace NKROVEL20
