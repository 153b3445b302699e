#include "host/velhost/optionvalues.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <string_view>
#include <system_error>
#include <utility>

#include "host/base/digits.h"
#include "host/base/hosterror.h"
#include "host/base/utf8.h"
#include "host/velhost/commandline.h"

namespace velhost {

namespace {

constexpr double kLeastSeconds = 0.001;
constexpr double kMostSeconds = 1e9;
constexpr std::size_t kLongestKey = 64;

[[noreturn]] void Fail(const std::string& message) { throw THostError(EFailure::kInvalidArgument, message); }

// 0 if there is no such unit.
double SecondsOfUnit(std::string_view unit) {
  if (unit.empty() || unit == "s") return 1;
  if (unit == "m") return 60;
  return unit == "h" ? 3600 : 0;
}

bool IsLetter(char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_'; }

bool IsKey(std::string_view text) {
  const bool startsWell = !text.empty() && IsLetter(text.front()) && !text.starts_with("__");
  return startsWell && text.size() <= kLongestKey &&
         std::all_of(text.begin(), text.end(), [](char c) { return IsLetter(c) || IsDigit(c); });
}

// Empty if the text is a value.
std::string ProblemOfValue(std::string_view text) {
  std::size_t at = 0;
  while (at < text.size()) {
    const TCodePoint character = NextCodePoint(text, at);
    if (!character.valid) return "is not UTF-8 text";
    const bool isControl = character.value < 0x20 || (character.value >= 0x7F && character.value <= 0x9F);
    if (isControl) return "has a control character";
    at += character.size;
  }
  return {};
}

}  // namespace

std::optional<double> SecondsOf(const std::string& text) {
  double number = 0;
  const char* const end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, number);
  if (result.ec != std::errc()) return std::nullopt;
  const double seconds = number * SecondsOfUnit({result.ptr, static_cast<std::size_t>(end - result.ptr)});
  const bool isInRange = seconds >= kLeastSeconds && seconds <= kMostSeconds;  // false for "nan"
  return isInRange ? std::optional(seconds) : std::nullopt;
}

void AddLabel(std::map<std::string, std::string>& labels, const std::string& given) {
  const std::size_t equals = given.find('=');
  if (equals == std::string::npos) Fail("--label takes KEY=VALUE, not " + QuotedWord(given));
  const std::string key = given.substr(0, equals);
  const std::string value = given.substr(equals + 1);
  if (!IsKey(key)) {
    Fail("--label cannot use the key " + QuotedWord(key) +
         ": a key has letters, digits and _, at most 64 of them, and begins neither with a digit nor with __");
  }
  const std::string problem = ProblemOfValue(value);
  if (!problem.empty()) Fail("--label cannot use the value of the key " + key + ": it " + problem);
  if (!labels.emplace(key, value).second) Fail("--label gives the key " + key + " twice");
}

}  // namespace velhost
