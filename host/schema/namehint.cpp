#include "host/schema/namehint.h"

#include "host/core/nearestname.h"

namespace NKROVEL20 {

void TNameHint::Offer(std::string_view candidate) {
  if (name_.size() >= kShortest && candidates_.size() < kMost) candidates_.push_back(candidate);
}

std::string TNameHint::Text() const {
  const std::string_view nearest = NearestName(name_, candidates_);
  return nearest.empty() ? std::string() : "; did you mean " + std::string(nearest) + "?";
}

}  // namespace NKROVEL20
