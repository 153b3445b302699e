// "did you mean": the declared name that is nearest to an undeclared one.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "host/model/cimclass.h"
#include "host/schema/schemalog.h"

namespace velhost {

/// Takes the declared names one by one. Gives no hint for very short names, because everything is close to them, and
/// looks at only the first few thousand names of a huge schema.
class TNameHint {
 public:
  /// `steps`: see NearestName.
  TNameHint(std::string_view name, std::size_t& steps) : name_(name), steps_(steps) {}
  /// Whether another candidate could still matter.
  bool Wants() const { return name_.size() >= kShortest && candidates_.size() < kMost && steps_ > 0; }
  /// The candidate must outlive this.
  void Offer(std::string_view candidate);
  /// "; did you mean NAME?", or empty if no candidate is close.
  std::string Text() const;

 private:
  static constexpr std::size_t kShortest = 3;
  static constexpr std::size_t kMost = 5000;

  std::string_view name_;
  std::size_t& steps_;
  std::vector<std::string_view> candidates_;
};

/// Offers those names of a class's properties that may be shown.
void OfferProperties(const TCIMClass& cimClass, const TSchemaLog& log, TNameHint& hint);

}  // namespace velhost
