#include "nkrovel20/tcimdatetime.h"

#include <fmt/format.h>

#include <array>
#include <cstddef>
#include <cstdlib>

#include "host/model/failuredetail.h"
#include "nkrovel20/tvelexception.h"

namespace NKROVEL20 {

using namespace velhost;

namespace {

constexpr std::size_t kTextSize = 25;
constexpr std::size_t kPoint = 14;  // the full stop before the microseconds
constexpr std::size_t kSign = 21;   // '+' or '-' of a point in time, ':' of an interval

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

[[noreturn]] void ThrowMalformed(const std::string& text) {
  ThrowHostFailure(TVELStatusCode::kTypeMismatch, "\"" + text + "\" is not a CIM datetime");
}

// Asterisks replace what is not significant: whole fields, except that microseconds may be replaced digit by
// digit.
bool MayBeginAsterisks(std::size_t position, bool isInterval) {
  if (position > kPoint || position == 0) return true;
  if (!isInterval && (position == 4 || position == 6)) return true;
  return position == 8 || position == 10 || position == 12;
}

// Digits everywhere except at the two separators; after the first asterisk, only asterisks up to the sign.
bool HasShape(const std::string& text, bool& asterisks) {
  if (text.size() != kTextSize || text[kPoint] != '.') return false;
  const char sign = text[kSign];
  if (sign != '+' && sign != '-' && sign != ':') return false;
  for (std::size_t i = 0; i < kTextSize; ++i) {
    if (i == kPoint || i == kSign) continue;
    const bool begins = text[i] == '*' && !asterisks;
    if (begins && (i > kSign || !MayBeginAsterisks(i, sign == ':'))) return false;
    asterisks = asterisks || begins;
    const bool wantsAsterisk = asterisks && i < kSign;
    if (wantsAsterisk ? text[i] != '*' : !IsDigit(text[i])) return false;
  }
  return true;
}

unsigned int Field(const std::string& text, std::size_t start, std::size_t size) {
  unsigned int value = 0;
  for (std::size_t i = start; i < start + size; ++i) value = value * 10 + static_cast<unsigned int>(text[i] - '0');
  return value;
}

unsigned short ShortField(const std::string& text, std::size_t start, std::size_t size) {
  return static_cast<unsigned short>(Field(text, start, size));
}

// Whether the text denotes a time or interval that can exist. FromString checks this, the constructor does
// not.
bool FieldsInRange(const std::string& text) {
  const auto ok = [&text](std::size_t start, unsigned int low, unsigned int high) {
    if (text[start] == '*') return true;
    const unsigned int value = Field(text, start, 2);
    return value >= low && value <= high;
  };
  const bool time = ok(8, 0, 23) && ok(10, 0, 59) && ok(12, 0, 59);
  if (text[kSign] == ':') return time && text.compare(kSign + 1, 3, "000") == 0;
  return time && ok(4, 1, 12) && ok(6, 1, 31);
}

}  // namespace

TCIMDateTime::TCIMDateTime(unsigned short year, unsigned short month, unsigned int day, unsigned short hour,
                           unsigned short minute, unsigned short second, unsigned int microseconds,
                           short utcOffsetMinutes)
    : year_(year),
      month_(month),
      day_(day),
      hour_(hour),
      minute_(minute),
      second_(second),
      microseconds_(microseconds),
      utcOffsetMinutes_(utcOffsetMinutes) {}

TCIMDateTime TCIMDateTime::FromString(const std::string& text) {
  bool asterisks = false;
  if (!HasShape(text, asterisks) || !FieldsInRange(text)) ThrowMalformed(text);
  if (asterisks || text[kSign] == ':') {
    TCIMDateTime value(0, 0, 0, 0, 0, 0, 0, 0);
    value.literal_ = text;
    return value;
  }
  const int offset = static_cast<int>(Field(text, kSign + 1, 3));
  return TCIMDateTime(ShortField(text, 0, 4), ShortField(text, 4, 2), Field(text, 6, 2), ShortField(text, 8, 2),
                      ShortField(text, 10, 2), ShortField(text, 12, 2), Field(text, kPoint + 1, 6),
                      static_cast<short>(text[kSign] == '-' ? -offset : offset));
}

std::string TCIMDateTime::ToString() const {
  if (!literal_.empty()) return literal_;
  return fmt::format("{:04}{:02}{:02}{:02}{:02}{:02}.{:06}{}{:03}", year_, month_, day_, hour_, minute_, second_,
                     microseconds_, utcOffsetMinutes_ < 0 ? '-' : '+', std::abs(int{utcOffsetMinutes_}));
}

std::string TCIMDateTime::ToIso8601() const {
  if (!literal_.empty()) return literal_;
  const int offset = std::abs(int{utcOffsetMinutes_});
  const std::string fraction = microseconds_ == 0 ? std::string() : fmt::format(".{:06}", microseconds_);
  return fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}{}{}{:02}:{:02}", year_, month_, day_, hour_, minute_, second_,
                     fraction, utcOffsetMinutes_ < 0 ? '-' : '+', offset / 60, offset % 60);
}

}  // namespace NKROVEL20
