#include "host/base/cimdatetime.h"

#include <array>

#include "host/base/digits.h"
#include "host/base/text.h"

namespace velhost {

namespace {

constexpr std::size_t kPoint = kCimDateTimePoint;
constexpr std::size_t kSign = kCimDateTimeSign;
constexpr const char* kForms = "\"yyyymmddhhmmss.mmmmmmsutc\" or \"ddddddddhhmmss.mmmmmm:000\"";

// Two digits.
struct TField {
  const char* name;
  std::size_t start;
  const char* low;
  const char* high;
};
constexpr std::array kDate = {TField{"month", 4, "01", "12"}, TField{"day", 6, "01", "31"}};
constexpr std::array kTime = {TField{"hour", 8, "00", "23"}, TField{"minute", 10, "00", "59"},
                              TField{"second", 12, "00", "59"}};

// Places count from 1. A byte that is not ASCII is not shown: it may be part of a longer character.
std::string Found(std::string_view text, std::size_t index, const char* expected) {
  const bool isPlain = text[index] >= ' ' && text[index] <= '~';
  return "found " + (isPlain ? SingleQuoted(text.substr(index, 1)) : std::string("another character")) +
         " at position " + std::to_string(index + 1) + " of the datetime, expected " + expected;
}

std::string ShapeProblem(std::string_view text) {
  for (std::size_t i = 0; i < kCimDateTimeSize; ++i) {
    if (i == kPoint) {
      if (text[i] != '.') return Found(text, i, "'.'");
    } else if (i == kSign) {
      if (text[i] != '+' && text[i] != '-' && text[i] != ':') return Found(text, i, "'+', '-' or ':'");
    } else if (!IsDigit(text[i]) && (text[i] != '*' || i > kSign)) {
      return Found(text, i, "a digit");
    }
  }
  return {};
}

template <typename TFields>
std::string RangeProblem(std::string_view text, const TFields& fields) {
  for (const TField& field : fields) {
    const std::string_view value = text.substr(field.start, 2);
    if (!IsDigit(value[0]) || !IsDigit(value[1]) || (value >= field.low && value <= field.high)) continue;
    return "found the " + std::string(field.name) + " " + SingleQuoted(value) + " in the datetime, expected " +
           field.low + " to " + field.high;
  }
  return {};
}

bool MayBeginAsterisks(std::size_t position, bool isInterval) {
  if (position > kPoint || position == 0) return true;
  if (!isInterval && (position == 4 || position == 6)) return true;
  return position == 8 || position == 10 || position == 12;
}

// Whether the asterisks, if any, begin with a field and run up to the sign.
bool AsterisksAreInPlace(std::string_view text, bool isInterval) {
  const std::size_t first = text.find('*');
  if (first == std::string_view::npos) return true;
  if (!MayBeginAsterisks(first, isInterval)) return false;
  for (std::size_t i = first; i < kSign; ++i) {
    if (i != kPoint && text[i] != '*') return false;
  }
  return true;
}

}  // namespace

std::string CimDateTimeProblem(std::string_view text) {
  if (text.size() != kCimDateTimeSize) {
    return "found " + std::to_string(text.size()) + " characters, expected a datetime of 25 characters, " + kForms;
  }
  std::string problem = ShapeProblem(text);
  const bool isInterval = text[kSign] == ':';
  if (problem.empty() && !isInterval) problem = RangeProblem(text, kDate);
  if (problem.empty()) problem = RangeProblem(text, kTime);
  const std::string_view end = text.substr(kSign + 1);
  if (problem.empty() && isInterval && end != "000") {
    problem = "found " + SingleQuoted(end) + " after ':', expected '000'";
  }
  if (problem.empty() && !AsterisksAreInPlace(text, isInterval)) {
    problem = "found " + SingleQuoted(text) +
              ", expected asterisks from the start of a field up to position 21 of the datetime";
  }
  return problem;
}

}  // namespace velhost
