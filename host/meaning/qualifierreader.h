// Reads the qualifiers of one element, and notes what is wrong with them.
#pragma once

#include <boost/shared_ptr.hpp>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/base/textdiagnostic.h"
#include "host/model/cimclass.h"

namespace velhost {

/// Something wrong with a qualifier of meaning.
struct TMeaningSlip {
  EDiagnosticSeverity severity = EDiagnosticSeverity::kError;
  std::optional<std::size_t> property;            ///< index into TCIMClass::Properties(); empty: the class's own
  boost::shared_ptr<const TQualifier> qualifier;  ///< null only in a last slip, which counts those left out
  std::size_t element = 0;                        ///< index of the string if the value is an array
  std::optional<std::size_t> offset;              ///< byte of the string; empty if the whole qualifier is meant
  std::string message;                            ///< what was found and what was expected
};

/// As many slips of one class are kept; a hostile schema could have millions.
inline constexpr std::size_t kMostMeaningSlips = 1000;

class TSlipNotes {
 public:
  /// `slips` is added to; it may be null.
  explicit TSlipNotes(std::vector<TMeaningSlip>* slips) : slips_(slips) {}
  void Add(TMeaningSlip slip);
  /// Adds a slip that gives the number of those left out, if there are any.
  void Finish();

 private:
  std::vector<TMeaningSlip>* slips_;
  std::size_t kept_ = 0;
  std::size_t left_ = 0;
};

/// One string of a qualifier's value.
struct TQualifierText {
  boost::shared_ptr<const TQualifier> qualifier;
  std::size_t element = 0;
  std::string text;
};

/// Every name that it is asked for is one of Meaning::kQualifiers. One that the schema declares with another type is as
/// if it were not there.
class TQualifierReader {
 public:
  /// Nothing is owned. `property` is empty for the qualifiers of a class.
  TQualifierReader(const TQualifierSet& qualifiers, std::optional<std::size_t> property, TSlipNotes& notes)
      : qualifiers_(qualifiers), property_(property), notes_(notes) {}

  bool Has(std::string_view name) const { return Find(name) != nullptr; }
  /// The value of one that is not an array. Empty if there is none; a null is a slip.
  std::optional<TQualifierText> Text(std::string_view name) const;
  /// The elements of an array without those that are null, which are slips.
  std::vector<TQualifierText> Texts(std::string_view name) const;

  /// About a byte of a string.
  void Note(const TQualifierText& text, std::size_t offset, std::string message) const;
  /// About the whole qualifier, which must exist.
  void Note(std::string_view name, std::string message,
            EDiagnosticSeverity severity = EDiagnosticSeverity::kError) const;

 private:
  boost::shared_ptr<const TQualifier> Find(std::string_view name) const;
  boost::shared_ptr<const TQualifier> FindValue(std::string_view name) const;

  const TQualifierSet& qualifiers_;
  std::optional<std::size_t> property_;
  TSlipNotes& notes_;
};

}  // namespace velhost
