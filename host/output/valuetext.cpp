#include "host/output/valuetext.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstddef>

namespace velhost {

void TTextBuffer::HandOver() {
  // Reset before the sink is called: if the sink throws, the text is not written a second time.
  const std::size_t size = size_;
  size_ = 0;
  if (size > 0) sink_.Write(std::string_view(text_.data(), size));
}

void TTextBuffer::Flush() {
  HandOver();
  sink_.Flush();
}

void TTextBuffer::AppendLong(std::string_view text) {
  HandOver();
  if (text.size() > kCapacity) return sink_.Write(text);
  Append(text);
}

namespace {

bool IsSigned(TCIMValue::TCIMType type) {
  using TType = TCIMValue::TCIMType;
  return type == TType::kSint8 || type == TType::kSint16 || type == TType::kSint32 || type == TType::kSint64;
}

// Inserts ".0" after the integer digits if the decimal point is missing; returns the new end.
char* AddPoint(char* first, char* last) {
  char* const exponent = std::find(first, last, 'e');
  if (std::find(first, exponent, '.') != exponent) return last;
  std::copy_backward(exponent, last, last + 2);
  exponent[0] = '.';
  exponent[1] = '0';
  return last + 2;
}

}  // namespace

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

}  // namespace velhost
