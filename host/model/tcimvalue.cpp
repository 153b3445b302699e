#include "nkrovel20/tcimvalue.h"
#include "host/base/digits.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstring>
#include <string_view>
#include <variant>

#include "host/model/failures.h"
#include "nkrovel20/tvelexception.h"

namespace NKROVEL20 {

using namespace velhost;

using TType = TCIMValue::TCIMType;

struct TCIMValue::TPayload {
  std::variant<std::string, TCIMDateTime, std::vector<TCIMValue>> content;
  bool handedOut = false;  // someone may hold a reference through which the elements can be modified
};

namespace {

enum class EKind { kNone, kInteger, kReal, kText, kDateTime };

EKind KindOf(TType type) {
  switch (type.GetCode()) {
    case TType::kNone: return EKind::kNone;
    case TType::kReal32:
    case TType::kReal64: return EKind::kReal;
    case TType::kString:
    case TType::kReference: return EKind::kText;
    case TType::kDateTime: return EKind::kDateTime;
    default: return EKind::kInteger;
  }
}

[[noreturn]] void ThrowMismatch(const std::string& detail) { ThrowHostFailure(TVELStatusCode::kTypeMismatch, detail); }

// Integers are stored in 64 bits: unsigned ones zero-extended, signed ones sign-extended.
std::uint64_t Narrow(TType type, std::uint64_t bits) {
  switch (type.GetCode()) {
    case TType::kBoolean: return bits != 0 ? 1 : 0;
    case TType::kUint8: return static_cast<std::uint8_t>(bits);
    case TType::kSint8: return static_cast<std::uint64_t>(static_cast<std::int8_t>(bits));
    case TType::kUint16:
    case TType::kChar16: return static_cast<std::uint16_t>(bits);
    case TType::kSint16: return static_cast<std::uint64_t>(static_cast<std::int16_t>(bits));
    case TType::kUint32: return static_cast<std::uint32_t>(bits);
    case TType::kSint32: return static_cast<std::uint64_t>(static_cast<std::int32_t>(bits));
    default: return bits;
  }
}

bool IsSigned(TType type) {
  switch (type.GetCode()) {
    case TType::kSint8:
    case TType::kSint16:
    case TType::kSint32:
    case TType::kSint64: return true;
    default: return false;
  }
}

double RealFromBits(std::uint64_t bits) {
  double number = 0;
  static_assert(sizeof number == sizeof bits);
  std::memcpy(&number, &bits, sizeof number);
  return number;
}

std::uint64_t BitsFromReal(double number) {
  std::uint64_t bits = 0;
  std::memcpy(&bits, &number, sizeof bits);
  return bits;
}

// A decimal number with an optional sign, or hexadecimal digits after 0x.
std::uint64_t IntegerFromText(const std::string& text) {
  std::string_view digits = text;
  const bool negative = !digits.empty() && digits.front() == '-';
  if (!digits.empty() && (digits.front() == '-' || digits.front() == '+')) digits.remove_prefix(1);
  int radix = 10;
  if (digits.size() > 2 && digits[0] == '0' && (digits[1] == 'x' || digits[1] == 'X')) {
    digits.remove_prefix(2);
    radix = 16;
  }
  std::uint64_t number = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number, radix);
  if (error != std::errc() || end != digits.data() + digits.size()) ThrowMismatch("\"" + text + "\" is not a number");
  return negative ? 0 - number : number;
}

double RealFromText(const std::string& text) {
  double number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) ThrowMismatch("\"" + text + "\" is not a number");
  return number;
}

std::uint64_t IntegerFromReal(double number) {
  if (std::isnan(number) || number < -9223372036854775808.0 || number >= 18446744073709551616.0) {
    ThrowMismatch(fmt::format("{} is outside the range of an integer", number));
  }
  return number < 0 ? static_cast<std::uint64_t>(static_cast<std::int64_t>(number))
                    : static_cast<std::uint64_t>(number);
}

constexpr std::size_t kMostByteDigits = 3;
constexpr std::size_t kMostDigits = 65;  // 64 binary digits and a sign

constexpr std::ptrdiff_t kMostGathered = kMostDigits + 2;  // plus a separator before it, or the closing brace

// Returns the end of what it wrote, at most kMostDigits characters.
char* PutInteger(char* out, std::uint64_t bits, bool isSigned, int radix) {
  if (radix == 10 && bits <= 0xFF) {
    const std::string_view text = ByteText(static_cast<std::uint8_t>(bits));
    std::memcpy(out, text.data(), kMostByteDigits);
    return out + text.size();
  }
  return isSigned ? std::to_chars(out, out + kMostDigits, static_cast<std::int64_t>(bits), radix).ptr
                  : std::to_chars(out, out + kMostDigits, bits, radix).ptr;
}

// The shortest text that parses to the same number, always recognisable as a real.
void AppendReal(std::string& text, double number, bool single) {
  std::string digits = single ? fmt::format("{}", static_cast<float>(number)) : fmt::format("{}", number);
  if (std::isfinite(number) && digits.find_first_of(".e") == std::string::npos) digits += ".0";
  text += digits;
}

}  // namespace

TCIMValue::TCIMValue(const char* text) : type_(TType::kString) {
  if (text == nullptr) return;
  null_ = false;
  payload_ = std::make_shared<TPayload>(TPayload{std::string(text)});
}

TCIMValue::TCIMValue(const std::string& text)
    : type_(TType::kString), null_(false), payload_(std::make_shared<TPayload>(TPayload{text})) {}

TCIMValue::TCIMValue(const TCIMDateTime& dateTime) { Set(dateTime); }

TCIMValue::TCIMValue(TCIMType type, unsigned int count, const std::vector<TCIMValue>& elements) {
  Set(type, count, elements);
}

TCIMValue::TPayloadPointer TCIMValue::Shared(const TPayloadPointer& payload) {
  if (!payload->handedOut) return payload;
  return std::make_shared<TPayload>(TPayload{payload->content});
}

TCIMValue& TCIMValue::operator=(const TCIMValue& other) {
  if (this != &other) *this = TCIMValue(other);
  return *this;
}

// Goes through a temporary, because `other` may be an element of this array and would be destroyed with the
// old payload.
TCIMValue& TCIMValue::operator=(TCIMValue&& other) noexcept {
  TCIMValue taken(std::move(other));
  type_ = taken.type_;
  array_ = taken.array_;
  null_ = taken.null_;
  declaredSize_ = taken.declaredSize_;
  bits_ = taken.bits_;
  payload_.swap(taken.payload_);
  return *this;
}

TCIMValue TCIMValue::FromInteger(TCIMType type, std::uint64_t bits) {
  if (KindOf(type) != EKind::kInteger) ThrowMismatch("an integer is not a " + type.ToString());
  TCIMValue value;
  value.type_ = type;
  value.null_ = false;
  value.bits_ = Narrow(type, bits);
  return value;
}

TCIMValue TCIMValue::FromReal(TCIMType type, double number) {
  if (KindOf(type) != EKind::kReal) ThrowMismatch("a real number is not a " + type.ToString());
  TCIMValue value;
  value.type_ = type;
  value.null_ = false;
  value.bits_ = BitsFromReal(type == TType::kReal32 ? static_cast<double>(static_cast<float>(number)) : number);
  return value;
}

TCIMValue TCIMValue::FromText(TCIMType type, const std::string& text) {
  if (KindOf(type) != EKind::kText) ThrowMismatch("a string is not a " + type.ToString());
  TCIMValue value(text);
  value.type_ = type;
  return value;
}

void TCIMValue::Set(const TCIMDateTime& dateTime) {
  auto payload = std::make_shared<TPayload>(TPayload{dateTime});
  *this = TCIMValue();
  type_ = TType::kDateTime;
  null_ = false;
  payload_ = std::move(payload);
}

void TCIMValue::Set(TCIMType type, unsigned int count, const std::vector<TCIMValue>& elements) {
  const bool isInteger = KindOf(type) == EKind::kInteger;
  std::vector<TCIMValue> converted(elements.size());
  for (std::size_t i = 0; i < elements.size(); ++i) {
    const TCIMValue& element = elements[i];
    TCIMValue& made = converted[i];
    if (element.array_ && !element.null_) ThrowMismatch("an array is not an element of an array");
    if (isInteger && !element.null_ && KindOf(element.type_) == EKind::kInteger) {
      made.type_ = type;
      made.null_ = false;
      made.bits_ = Narrow(type, element.bits_);
      continue;
    }
    made = element.type_ == type ? element : element.ConvertedTo(type);
    made.array_ = false;
    made.declaredSize_ = 0;
  }
  auto payload = std::make_shared<TPayload>(TPayload{std::move(converted)});
  *this = TCIMValue();
  type_ = type;
  array_ = true;
  null_ = false;
  declaredSize_ = count;
  payload_ = std::move(payload);
}

void TCIMValue::SetNullValue(TCIMType::ECIMType type, unsigned int count) {
  *this = TCIMValue();
  type_ = type;
  array_ = count != 0;
  declaredSize_ = count;
}

// Collects short numbers in a local buffer before appending them.
void TCIMValue::AppendElements(std::string& text, unsigned char radix) const {
  std::array<char, 256> gathered;
  char* out = gathered.data();
  *out++ = '{';
  std::string_view separator;
  for (const TCIMValue& element : static_cast<const std::vector<TCIMValue>&>(*this)) {
    out = std::copy(separator.begin(), separator.end(), out);
    separator = ", ";
    const bool isNumber = KindOf(element.type_) == EKind::kInteger && element.type_ != TType::kBoolean;
    if (isNumber && !element.null_ && !element.array_) {
      out = PutInteger(out, element.bits_, IsSigned(element.type_), radix);
    } else {
      text.append(gathered.data(), out);
      out = gathered.data();
      element.AppendTo(text, radix);
    }
    if (gathered.data() + gathered.size() - out < kMostGathered) {
      text.append(gathered.data(), out);
      out = gathered.data();
    }
  }
  *out++ = '}';
  text.append(gathered.data(), out);
}

void TCIMValue::AppendTo(std::string& text, unsigned char radix) const {
  if (null_) return;
  if (radix < 2 || radix > 36) radix = 10;
  if (array_) return AppendElements(text, radix);
  switch (KindOf(type_)) {
    case EKind::kNone: break;
    case EKind::kInteger:
      if (type_ == TType::kBoolean) {
        text += bits_ != 0 ? "true" : "false";
      } else {
        std::array<char, kMostDigits> digits;
        text.append(digits.data(), PutInteger(digits.data(), bits_, IsSigned(type_), radix));
      }
      break;
    case EKind::kReal: AppendReal(text, RealFromBits(bits_), type_ == TType::kReal32); break;
    case EKind::kText: text += std::get<std::string>(payload_->content); break;
    case EKind::kDateTime: text += std::get<TCIMDateTime>(payload_->content).ToString(); break;
  }
}

std::string TCIMValue::ToString(unsigned char radix) const {
  std::string text;
  AppendTo(text, radix);
  return text;
}

TCIMValue::operator std::string() const { return ToString(10); }

TCIMValue::operator unsigned int() const { return static_cast<unsigned int>(ToInteger()); }

TCIMValue::operator unsigned short() const { return static_cast<unsigned short>(ToInteger()); }

TCIMValue::operator std::vector<TCIMValue>&() {
  if (!array_) ThrowMismatch("a scalar is not an array");
  if (!payload_) payload_ = std::make_shared<TPayload>(TPayload{std::vector<TCIMValue>()});
  if (payload_.use_count() > 1) payload_ = std::make_shared<TPayload>(TPayload{payload_->content});
  payload_->handedOut = true;
  return std::get<std::vector<TCIMValue>>(payload_->content);
}

TCIMValue::operator const std::vector<TCIMValue>&() const {
  static const auto* const none = new std::vector<TCIMValue>();
  if (!array_) ThrowMismatch("a scalar is not an array");
  return payload_ ? std::get<std::vector<TCIMValue>>(payload_->content) : *none;
}

std::uint64_t TCIMValue::ToInteger() const {
  if (null_) return 0;
  if (array_) ThrowMismatch("an array is not a number");
  switch (KindOf(type_)) {
    case EKind::kInteger: return bits_;
    case EKind::kReal: return IntegerFromReal(RealFromBits(bits_));
    case EKind::kText: return IntegerFromText(std::get<std::string>(payload_->content));
    default: ThrowMismatch("a datetime is not a number");
  }
}

double TCIMValue::ToReal() const {
  if (null_) return 0;
  if (array_) ThrowMismatch("an array is not a number");
  switch (KindOf(type_)) {
    case EKind::kInteger:
      return IsSigned(type_) ? static_cast<double>(static_cast<std::int64_t>(bits_)) : static_cast<double>(bits_);
    case EKind::kReal: return RealFromBits(bits_);
    case EKind::kText: return RealFromText(std::get<std::string>(payload_->content));
    default: ThrowMismatch("a " + type_.ToString() + " is not a real number");
  }
}

const TCIMDateTime& TCIMValue::ToDateTime() const {
  if (null_ || array_ || type_ != TType::kDateTime) ThrowMismatch("the value is not a datetime");
  return std::get<TCIMDateTime>(payload_->content);
}

TCIMValue TCIMValue::ConvertedTo(TCIMType type) const {
  if (null_) {
    TCIMValue value;
    value.SetNullValue(type.GetCode(), declaredSize_);
    value.array_ = array_;
    return value;
  }
  if (array_) return TCIMValue(type, declaredSize_, static_cast<const std::vector<TCIMValue>&>(*this));
  if (type == type_) return *this;
  switch (KindOf(type)) {
    case EKind::kInteger: return FromInteger(type, ToInteger());
    case EKind::kReal: return FromReal(type, ToReal());
    case EKind::kText: return FromText(type, ToString(10));
    case EKind::kDateTime:
      if (KindOf(type_) == EKind::kText) return TCIMValue(TCIMDateTime::FromString(ToString(10)));
      break;
    case EKind::kNone: break;
  }
  ThrowMismatch("a " + type_.ToString() + " is not a " + (type.ToString().empty() ? "typed value" : type.ToString()));
}

bool operator==(const TCIMValue& a, const TCIMValue& b) {
  if (a.type_ != b.type_ || a.array_ != b.array_ || a.null_ != b.null_) return false;
  if (a.null_) return true;
  if (!a.array_ && KindOf(a.type_) != EKind::kText && KindOf(a.type_) != EKind::kDateTime) return a.bits_ == b.bits_;
  return a.payload_ == b.payload_ || a.payload_->content == b.payload_->content;
}

}  // namespace NKROVEL20
