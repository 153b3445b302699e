#include "host/schema/namehint.h"

#include "host/base/nearestname.h"

namespace velhost {

void TNameHint::Offer(std::string_view candidate) {
  if (Wants()) candidates_.push_back(candidate);
}

std::string TNameHint::Text() const { return Suggestion(NearestName(name_, candidates_, steps_)); }

void OfferProperties(const TCIMClass& cimClass, const TSchemaLog& log, TNameHint& hint) {
  for (const auto& property : cimClass.Properties()) {
    if (!hint.Wants()) return;
    if (!log.Hides(property->Definition().location.file)) hint.Offer(property->Definition().name);
  }
}

}  // namespace velhost
