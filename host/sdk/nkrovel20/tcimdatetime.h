// The host's date-time value: a point in time or an interval, as in CIM (DSP0004).
#pragma once

#include <string>

#include "nkrovel20/api.h"

namespace NKROVEL20 {

class NKROVEL20_API TCIMDateTime {
 public:
  /// A point in time. The fields are stored as given, without checking or normalising, so that an impossible
  /// date from a service processor remains visible. `utcOffsetMinutes` is local time minus UTC.
  TCIMDateTime(unsigned short year, unsigned short month, unsigned int day, unsigned short hour, unsigned short minute,
               unsigned short second, unsigned int microseconds, short utcOffsetMinutes);
  TCIMDateTime(const TCIMDateTime& other) = default;
  TCIMDateTime& operator=(const TCIMDateTime& other) = default;
  ~TCIMDateTime() = default;

  /// Parses the 25 characters of a CIM datetime: a point in time "yyyymmddhhmmss.mmmmmmsutc" or an interval
  /// "ddddddddhhmmss.mmmmmm:000". In either, insignificant digits may be asterisks: from the start of a field
  /// or from any digit of the microseconds, up to the sign. Throws TVELException with
  /// TVELStatusCode::kTypeMismatch for any other text.
  static TCIMDateTime FromString(const std::string& text);

  /// The CIM datetime text: 25 characters if all fields are in their usual ranges, more otherwise.
  std::string ToString() const;

  /// ISO 8601 with the UTC offset ("2026-01-31T12:34:56+01:00"); intervals, and texts with asterisks, remain
  /// in CIM format.
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
