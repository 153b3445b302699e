#include "nkrovel20/tcimdatetime.h"

#include <fmt/format.h>

#include <cstddef>
#include <cstdlib>

#include "host/base/cimdatetime.h"
#include "host/model/failures.h"
#include "nkrovel20/tvelexception.h"

namespace NKROVEL20 {

using namespace velhost;

namespace {

constexpr std::size_t kPoint = kCimDateTimePoint;
constexpr std::size_t kSign = kCimDateTimeSign;

[[noreturn]] void ThrowMalformed(const std::string& text) {
  ThrowHostFailure(TVELStatusCode::kTypeMismatch, "\"" + text + "\" is not a CIM datetime");
}

unsigned int Field(const std::string& text, std::size_t start, std::size_t size) {
  unsigned int value = 0;
  for (std::size_t i = start; i < start + size; ++i) value = value * 10 + static_cast<unsigned int>(text[i] - '0');
  return value;
}

unsigned short ShortField(const std::string& text, std::size_t start, std::size_t size) {
  return static_cast<unsigned short>(Field(text, start, size));
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
  if (!IsCimDateTime(text)) ThrowMalformed(text);
  if (text.find('*') != std::string::npos || text[kSign] == ':') {
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
