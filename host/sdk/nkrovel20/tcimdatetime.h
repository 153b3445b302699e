// The host's date-time value: a point in time or an interval, as CIM writes them (DSP0004).
#pragma once

#include <string>

#include "nkrovel20/api.h"

namespace NKROVEL20 {

class NKROVEL20_API TCIMDateTime {
 public:
  /// A point in time. The fields are kept as given: nothing is checked or normalised, so that a
  /// service processor's impossible date still shows. `utcOffsetMinutes` is local time minus UTC.
  TCIMDateTime(unsigned short year, unsigned short month, unsigned int day, unsigned short hour, unsigned short minute,
               unsigned short second, unsigned int microseconds, short utcOffsetMinutes);
  TCIMDateTime(const TCIMDateTime& other) = default;
  TCIMDateTime& operator=(const TCIMDateTime& other) = default;
  ~TCIMDateTime() = default;

  /// Reads the 25 characters of a CIM datetime: "yyyymmddhhmmss.mmmmmmsutc", an interval
  /// "ddddddddhhmmss.mmmmmm:000", either with asterisks for fields that are not significant (whole
  /// fields and single digits of the microseconds, all the way to the sign).
  /// Any other text throws TVELException with TVELStatusCode::kTypeMismatch.
  static TCIMDateTime FromString(const std::string& text);

  /// The CIM datetime text: 25 characters for fields in their ordinary ranges, wider otherwise.
  std::string ToString() const;

  /// ISO 8601 with the offset, for people ("2026-01-31T12:34:56+01:00"); an interval or a text with
  /// asterisks is given as CIM writes it.
  std::string ToIso8601() const;

  friend bool operator==(const TCIMDateTime& a, const TCIMDateTime& b) { return a.ToString() == b.ToString(); }
  friend bool operator!=(const TCIMDateTime& a, const TCIMDateTime& b) { return !(a == b); }

 private:
  unsigned short year_;
  unsigned short month_;
  unsigned int day_;
  unsigned short hour_;
  unsigned short minute_;
  unsigned short second_;
  unsigned int microseconds_;
  short utcOffsetMinutes_;
  std::string literal_;  // intervals and texts with asterisks; empty for a point in time
};

}  // namespace NKROVEL20
