#include "host/output/scalartext.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <string>

namespace velhost {

namespace {

struct TShortText {
  std::array<char, 3> characters{};
  std::uint8_t size = 0;
};

constexpr std::array<TShortText, 256> MakeByteTexts() {
  std::array<TShortText, 256> texts{};
  for (std::size_t byte = 0; byte < texts.size(); ++byte) {
    TShortText& text = texts[byte];
    if (byte >= 100) text.characters[text.size++] = static_cast<char>('0' + byte / 100);
    if (byte >= 10) text.characters[text.size++] = static_cast<char>('0' + byte / 10 % 10);
    text.characters[text.size++] = static_cast<char>('0' + byte % 10);
  }
  return texts;
}

constexpr std::array<std::array<char, 2>, 256> MakeHexPairs() {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::array<std::array<char, 2>, 256> pairs{};
  for (std::size_t byte = 0; byte < pairs.size(); ++byte) pairs[byte] = {kDigits[byte / 16], kDigits[byte % 16]};
  return pairs;
}

constexpr std::array<TShortText, 256> kByteTexts = MakeByteTexts();
constexpr std::array<std::array<char, 2>, 256> kHexPairs = MakeHexPairs();

bool IsSigned(TCIMValue::TCIMType type) {
  using TType = TCIMValue::TCIMType;
  return type == TType::kSint8 || type == TType::kSint16 || type == TType::kSint32 || type == TType::kSint64;
}

// Puts ".0" behind the whole digits where there is no point; returns the new end.
char* AddPoint(char* first, char* last) {
  char* const exponent = std::find(first, last, 'e');
  if (std::find(first, exponent, '.') != exponent) return last;
  std::copy_backward(exponent, last, last + 2);
  exponent[0] = '.';
  exponent[1] = '0';
  return last + 2;
}

bool IsTwoDigitField(std::string_view text, int low, int high) {
  if (text == "**") return true;
  const int number = (text[0] - '0') * 10 + (text[1] - '0');
  return number >= low && number <= high;
}

}  // namespace

std::string_view ByteText(std::uint8_t byte) {
  const TShortText& text = kByteTexts[byte];
  return {text.characters.data(), text.size};
}

std::string_view HexPair(std::uint8_t byte) { return {kHexPairs[byte].data(), 2}; }

std::string_view TNumberText::Integer(const TCIMValue& value) {
  const std::uint64_t bits = value.ToInteger();
  return IsSigned(value.GetType()) ? Signed(static_cast<std::int64_t>(bits)) : Unsigned(bits);
}

std::string_view TNumberText::Unsigned(std::uint64_t number) {
  const auto result = std::to_chars(digits_.begin(), digits_.end(), number);
  return {digits_.data(), static_cast<std::size_t>(result.ptr - digits_.data())};
}

std::string_view TNumberText::Signed(std::int64_t number) {
  const auto result = std::to_chars(digits_.begin(), digits_.end(), number);
  return {digits_.data(), static_cast<std::size_t>(result.ptr - digits_.data())};
}

std::string_view TNumberText::Real(const TCIMValue& value) {
  const double number = value.ToReal();
  if (!std::isfinite(number)) return {};
  char* const limit = digits_.end() - 2;  // room for AddPoint
  const auto result = value.GetType() == TCIMValue::TCIMType::kReal32
                          ? std::to_chars(digits_.begin(), limit, static_cast<float>(number))
                          : std::to_chars(digits_.begin(), limit, number);
  const char* const last = AddPoint(digits_.data(), result.ptr);
  return {digits_.data(), static_cast<std::size_t>(last - digits_.data())};
}

bool IsCimDateTime(std::string_view text) {
  constexpr std::size_t kSize = 25;
  constexpr std::size_t kSign = 21;
  if (text.size() != kSize) return false;
  const bool time = IsTwoDigitField(text.substr(8, 2), 0, 23) && IsTwoDigitField(text.substr(10, 2), 0, 59) &&
                    IsTwoDigitField(text.substr(12, 2), 0, 59);
  if (text[kSign] == ':') return time;
  return time && IsTwoDigitField(text.substr(4, 2), 1, 12) && IsTwoDigitField(text.substr(6, 2), 1, 31);
}

}  // namespace velhost
