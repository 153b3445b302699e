#include "host/readback/jsoncursor.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <initializer_list>
#include <optional>
#include <span>
#include <utility>

#include "host/base/digits.h"
#include "host/base/hosterror.h"
#include "host/base/names.h"
#include "host/base/text.h"
#include "host/base/utf8.h"

namespace velhost {

namespace {

constexpr std::size_t kLongestNumber = 400;
constexpr std::size_t kMostExactDigits = 19;  // any number of so many digits fits into 64 bits

// Bytes that end a run of a string's plain characters.
constexpr std::array<bool, 256> kEndsRun = [] {
  std::array<bool, 256> ends{};
  for (std::size_t i = 0; i < 0x20; ++i) ends[i] = true;
  ends['"'] = ends['\\'] = true;
  return ends;
}();

bool IsInNumber(int c) {
  return c >= 0 && (IsDigit(static_cast<char>(c)) || c == '-' || c == '+' || c == '.' || c == 'e' || c == 'E');
}

std::string_view TakeDigits(std::string_view& text) {
  const auto* const end = std::find_if_not(text.begin(), text.end(), IsDigit);
  const std::string_view digits = text.substr(0, static_cast<std::size_t>(end - text.begin()));
  text.remove_prefix(digits.size());
  return digits;
}

bool TakeOne(std::string_view& text, std::string_view characters) {
  if (text.empty() || characters.find(text.front()) == std::string_view::npos) return false;
  text.remove_prefix(1);
  return true;
}

// Empty unless the text is a JSON number.
std::optional<TJsonNumber> NumberOf(std::string_view text) {
  const std::string_view whole = text;
  TJsonNumber number;
  number.isNegative = TakeOne(text, "-");
  const std::string_view digits = TakeDigits(text);
  if (digits.empty() || (digits.size() > 1 && digits.front() == '0')) return std::nullopt;
  if (TakeOne(text, ".")) {
    number.isInteger = false;
    if (TakeDigits(text).empty()) return std::nullopt;
  }
  if (TakeOne(text, "eE")) {
    number.isInteger = false;
    TakeOne(text, "+-");
    if (TakeDigits(text).empty()) return std::nullopt;
  }
  if (!text.empty()) return std::nullopt;
  if (number.isInteger) {
    const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), number.magnitude);
    const std::uint64_t most = number.isNegative ? std::uint64_t{1} << 63U : UINT64_MAX;
    number.isInteger = result.ec == std::errc() && number.magnitude <= most;
  }
  std::from_chars(whole.data(), whole.data() + whole.size(), number.real);
  return number;
}

// "33", "-1", "a number that is not an integer of 64 bits"
std::string Shown(const TJsonNumber& number) {
  if (!number.isInteger) return "a number that is not an integer of 64 bits";
  return (number.isNegative ? "-" : "") + std::to_string(number.magnitude);
}

}  // namespace

TEndOfJson::~TEndOfJson() = default;

TJsonCursor::TJsonCursor(const std::string& file, TStoredBytes text, ISourceReader* reader)
    : file_(file), text_(std::move(text)), reader_(reader) {}

void TJsonCursor::GoTo(const TJsonPlace& place) {
  lineStart_ = place.lineStart;
  line_ = place.line;
  isAfterValue_ = false;
  if (place.offset >= start_ && place.offset - start_ <= buffer_.size()) {
    at_ = static_cast<std::size_t>(place.offset - start_);
    return;
  }
  start_ = place.offset;
  at_ = 0;
  buffer_.clear();
}

bool TJsonCursor::Refill() {
  if (reader_ != nullptr) reader_->CheckStop();
  start_ += buffer_.size();
  at_ = 0;
  buffer_.resize(kBufferSize);
  auto* const bytes = reinterpret_cast<std::uint8_t*>(buffer_.data());
  buffer_.resize(text_.Read(static_cast<std::size_t>(start_), {bytes, kBufferSize}));
  return !buffer_.empty();
}

void TJsonCursor::SkipSpace() {
  for (int c = Peek(); c == ' ' || c == '\n' || c == '\t' || c == '\r'; c = Peek()) {
    ++at_;
    if (c != '\n') continue;
    ++line_;
    lineStart_ = Offset();
  }
}

int TJsonCursor::PeekToken() {
  const int c = Peek();
  if (c > ' ') return c;
  SkipSpace();
  return Peek();
}

TJsonPlace TJsonCursor::Place() {
  SkipSpace();
  return {Offset(), lineStart_, line_};
}

bool TJsonCursor::IsAtEnd() { return PeekToken() < 0; }

void TJsonCursor::FailAt(const TJsonPlace& place, const std::string& message) const {
  constexpr std::size_t kAround = 200;  // more than is shown of a line on either side
  const std::uint64_t from = std::max(place.lineStart, place.offset - std::min<std::uint64_t>(place.offset, kAround));
  const auto bytes =
      text_.Read(static_cast<std::size_t>(from), static_cast<std::size_t>(place.offset - from) + kAround);
  const std::string_view known(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  TTextDiagnostic diagnostic;
  const auto column = static_cast<std::uint32_t>(place.offset - place.lineStart + 1);
  diagnostic.location = {file_, place.line, column};
  diagnostic.message = message;
  diagnostic.sourceLine = known.substr(0, known.find('\n'));
  diagnostic.sourceStart = static_cast<std::size_t>(from - place.lineStart);
  diagnostic.sourceSize = diagnostic.sourceStart + diagnostic.sourceLine.size();
  const bool isEnd = place.offset >= text_.Size();
  if (isEnd) throw TEndOfJson(EFailure::kMalformed, diagnostic);
  throw TDiagnosedError(EFailure::kMalformed, diagnostic);
}

std::string TJsonCursor::Found() {
  const int c = Peek();
  switch (c) {
    case -1: return "the end of the text";
    case '{': return "an object";
    case '[': return "an array";
    case '"': return "a string";
    case 't': return "true";
    case 'f': return "false";
    case 'n': return "null";
    default: break;
  }
  if (c == '-' || IsDigit(static_cast<char>(c))) return "a number";
  if (c >= 0x80) return "a byte that is not ASCII";
  return Quoted(std::string(1, static_cast<char>(c)));
}

void TJsonCursor::FailHere(std::string_view expected) {
  const std::string found = Found();
  FailAt({Offset(), lineStart_, line_}, "found " + found + ", expected " + std::string(expected));
}

TJsonCursor::EKind TJsonCursor::Kind() {
  switch (PeekToken()) {
    case '{': return EKind::kObject;
    case '[': return EKind::kArray;
    case '"': return EKind::kString;
    case 't':
    case 'f': return EKind::kBoolean;
    case 'n': return EKind::kNull;
    case '-': return EKind::kNumber;
    default: break;
  }
  const int c = Peek();
  if (c < 0 || !IsDigit(static_cast<char>(c))) FailHere("a value");
  return EKind::kNumber;
}

void TJsonCursor::BeginValue(bool isExpected, std::string_view what) {
  if (!isExpected) FailHere(what);
  last_ = {Offset(), lineStart_, line_};
  isAfterValue_ = true;
}

void TJsonCursor::Enter(char open, std::string_view what) {
  BeginValue(PeekToken() == open, what);
  ++at_;
  isAfterValue_ = false;
}

void TJsonCursor::EnterObject(std::string_view what) { Enter('{', what); }
void TJsonCursor::EnterArray(std::string_view what) { Enter('[', what); }

// Whether another member or element follows; takes the comma before it, or the end.
bool TJsonCursor::Next(char close, std::string_view what) {
  const int c = PeekToken();
  if (c == close) {
    ++at_;
    isAfterValue_ = true;
    return false;
  }
  if (!isAfterValue_) return true;
  if (c != ',') FailHere(what);
  ++at_;
  isAfterValue_ = false;
  if (PeekToken() == close) FailHere("a value after the comma");
  return true;
}

bool TJsonCursor::NextMember(std::string_view& name) {
  if (!Next('}', "a comma or the object's end")) return false;
  BeginValue(PeekToken() == '"', "a member's name in quotes");
  name = QuotedText();
  // The name may lie in the buffer, which looking for the colon can replace.
  if (at_ == buffer_.size() || buffer_[at_] != ':') {
    scratch_ = std::string(name);
    name = scratch_;
    if (PeekToken() != ':') FailHere("a colon after the member's name");
  }
  ++at_;
  isAfterValue_ = false;
  return true;
}

bool TJsonCursor::NextElement() { return Next(']', "a comma or the array's end"); }

std::string_view TJsonCursor::Text(std::string_view what) {
  BeginValue(PeekToken() == '"', what);
  return QuotedText();
}

// Takes characters until a quote, a backslash or the end of the buffer; whether the run ended in one of the former.
bool TJsonCursor::TakePlain(bool& isAscii) {
  const std::size_t from = at_;
  unsigned char all = 0;
  while (at_ < buffer_.size()) {
    const auto c = static_cast<unsigned char>(buffer_[at_]);
    if (kEndsRun[c]) break;
    all |= c;
    ++at_;
  }
  if (all >= 0x80) isAscii = false;
  if (scratch_.size() + (at_ - from) > kLongestText) {
    Fail("found a string of more than " + std::to_string(kLongestText) + " bytes");
  }
  return at_ < buffer_.size();
}

std::string_view TJsonCursor::QuotedText() {
  ++at_;
  scratch_.clear();
  bool isAscii = true;
  for (;;) {
    const std::size_t from = at_;
    const bool hasEnded = TakePlain(isAscii);
    const std::string_view run(buffer_.data() + from, at_ - from);
    if (hasEnded && buffer_[at_] == '"') {
      ++at_;
      if (!scratch_.empty()) scratch_ += run;
      const std::string_view text = scratch_.empty() ? run : std::string_view(scratch_);
      if (!isAscii) CheckUtf8(text);
      return text;
    }
    scratch_ += run;
    if (!hasEnded) {
      if (!Refill()) FailHere("the string's end");
    } else if (buffer_[at_] == '\\') {
      TakeEscape();
    } else {
      FailAt({Offset(), lineStart_, line_}, "found a control character in a string, expected an escape");
    }
  }
}

void TJsonCursor::TakeEscape() {
  ++at_;
  static constexpr std::string_view kLetters = "\"\\/bfnrt";
  static constexpr std::string_view kCharacters = "\"\\/\b\f\n\r\t";
  const int c = Peek();
  const std::size_t known = c < 0 ? std::string_view::npos : kLetters.find(static_cast<char>(c));
  if (known == std::string_view::npos && c != 'u') FailHere("an escape: one of \"\\/bfnrtu");
  ++at_;
  if (c != 'u') {
    scratch_ += kCharacters[known];
    return;
  }
  const char32_t first = HexEscape();
  if (first < 0xD800 || first > 0xDFFF) return AppendUtf8(scratch_, first);
  bool isPair = first < 0xDC00;
  for (const char sign : {'\\', 'u'}) {
    isPair = isPair && Peek() == sign;
    if (isPair) ++at_;
  }
  const char32_t second = isPair ? HexEscape() : 0;
  if (second < 0xDC00 || second > 0xDFFF) Fail("found half of a surrogate pair in a string, expected both halves");
  AppendUtf8(scratch_, 0x10000 + ((first - 0xD800) << 10U) + (second - 0xDC00));
}

char32_t TJsonCursor::HexEscape() {
  char32_t number = 0;
  for (int i = 0; i < 4; ++i) {
    const int c = Peek();
    const int digit = c < 0 ? -1 : HexDigitValue(static_cast<char>(c));
    if (digit < 0) FailHere("four hexadecimal digits after \\u");
    number = number << 4U | static_cast<char32_t>(digit);
    ++at_;
  }
  return number;
}

void TJsonCursor::CheckUtf8(std::string_view text) const {
  for (std::size_t at = 0; at < text.size();) {
    const TCodePoint next = NextCodePoint(text, at);
    if (!next.valid) Fail("found a string that is not UTF-8");
    at += next.size;
  }
}

TJsonNumber TJsonCursor::Number(std::string_view what) {
  const int first = PeekToken();
  BeginValue(first == '-' || (first >= 0 && IsDigit(static_cast<char>(first))), what);
  // Nearly all numbers are bytes, so short integers inside the buffer are read at once.
  TJsonNumber number;
  std::size_t at = at_;
  const std::size_t last = std::min(buffer_.size(), at_ + kMostExactDigits);
  while (at < last && IsDigit(buffer_[at]))
    number.magnitude = number.magnitude * 10 + static_cast<unsigned>(buffer_[at++] - '0');
  const bool isShort = at > at_ && at < last && !IsInNumber(static_cast<unsigned char>(buffer_[at]));
  if (!isShort || (buffer_[at_] == '0' && at - at_ > 1)) return LongNumber();
  at_ = at;
  return number;
}

TJsonNumber TJsonCursor::LongNumber() {
  std::string text;
  for (int c = Peek(); IsInNumber(c); c = Peek()) {
    text += static_cast<char>(c);
    ++at_;
    if (text.size() > kLongestNumber)
      Fail("found a number of more than " + std::to_string(kLongestNumber) + " characters");
  }
  if (Peek() < 0) FailHere("the number's end");  // a cut text could have cut the number too
  const auto number = NumberOf(text);
  if (!number) Fail("found " + Quoted(text) + ", expected a number as JSON writes it");
  return *number;
}

void TJsonCursor::Word(std::string_view word) {
  for (const char letter : word) {
    if (Peek() != letter) FailHere(word);
    ++at_;
  }
}

bool TJsonCursor::Boolean() {
  const int c = PeekToken();
  BeginValue(c == 't' || c == 'f', "true or false");
  Word(c == 't' ? "true" : "false");
  return c == 't';
}

void TJsonCursor::Null() {
  BeginValue(PeekToken() == 'n', "null");
  Word("null");
}

std::uint64_t TJsonCursor::Unsigned(std::uint64_t least, std::uint64_t most) {
  const auto expected = [&] { return "an integer from " + std::to_string(least) + " to " + std::to_string(most); };
  if (Kind() != EKind::kNumber) FailHere(expected());
  const TJsonNumber number = Number({});
  const bool fits = number.isInteger && !number.isNegative && number.magnitude >= least && number.magnitude <= most;
  if (!fits) Fail("found " + Shown(number) + ", expected " + expected());
  return number.magnitude;
}

std::int64_t TJsonCursor::Signed(std::int64_t least, std::int64_t most) {
  const auto expected = [&] { return "an integer from " + std::to_string(least) + " to " + std::to_string(most); };
  if (Kind() != EKind::kNumber) FailHere(expected());
  const TJsonNumber number = Number({});
  const auto value = static_cast<std::int64_t>(number.isNegative ? ~number.magnitude + 1 : number.magnitude);
  const bool hasItsSign = number.isNegative ? value <= 0 : value >= 0;
  if (!number.isInteger || !hasItsSign || value < least || value > most) {
    Fail("found " + Shown(number) + ", expected " + expected());
  }
  return value;
}

void TJsonCursor::Skip() {
  std::string_view name;
  std::array<bool, kDeepest> isObject{};
  std::size_t depth = 0;
  do {
    bool hasNext = true;
    if (depth > 0) hasNext = isObject.at(depth - 1) ? NextMember(name) : NextElement();
    if (!hasNext) {
      --depth;
      continue;
    }
    switch (Kind()) {
      case EKind::kObject:
      case EKind::kArray: {
        if (depth == isObject.size()) FailHere("values nested at most " + std::to_string(kDeepest) + " deep");
        const bool opensObject = Peek() == '{';
        isObject.at(depth++) = opensObject;
        Enter(opensObject ? '{' : '[', {});
        break;
      }
      case EKind::kString: Text({}); break;
      case EKind::kNumber: Number({}); break;
      case EKind::kBoolean: Boolean(); break;
      case EKind::kNull: Null(); break;
    }
  } while (depth > 0);
}

void TJsonCursor::SkipString() {
  for (++at_;; ++at_) {
    const int c = Peek();
    if (c < 0) FailHere("the string's end");
    if (c == '"') break;
    if (c != '\\') continue;
    ++at_;
    if (Peek() < 0) FailHere("the string's end");
  }
  ++at_;
}

void TJsonCursor::SkipChecked() {
  const EKind kind = Kind();
  if (kind != EKind::kObject && kind != EKind::kArray) return Skip();
  int depth = 0;
  do {
    const int c = Peek();
    if (c < 0) FailHere("the value's end");
    if (c == '"') {
      SkipString();
      continue;
    }
    ++at_;
    if (c == '{' || c == '[') ++depth;
    if (c == '}' || c == ']') --depth;
    if (c == '\n') {
      ++line_;
      lineStart_ = Offset();
    }
  } while (depth > 0);
  isAfterValue_ = true;
}

TJsonObject::TJsonObject(TJsonCursor& json, const std::vector<std::string_view>& names, std::string_view what)
    : json_(json), names_(names), what_(what) {
  json_.EnterObject(what);
  place_ = json_.LastPlace();
}

std::size_t TJsonObject::Find(std::string_view name) const {
  if (expected_ < names_.size() && names_[expected_] == name) return expected_;
  return static_cast<std::size_t>(std::find(names_.begin(), names_.end(), name) - names_.begin());
}

std::string_view TJsonObject::Next() {
  std::string_view name;
  if (!json_.NextMember(name)) return {};
  const std::size_t found = Find(name);
  if (found == names_.size()) {
    const std::string_view nearest = NearestName(name, names_);
    json_.Fail("found the unknown member " + Quoted(name) + " of " + std::string(what_) + ", expected one of " +
               Listed(names_, ", ") + Suggestion(nearest, "\""));
  }
  const std::uint64_t bit = std::uint64_t{1} << found;
  if ((seen_ & bit) != 0) json_.Fail("found a second " + Quoted(name) + ", expected each member once");
  seen_ |= bit;
  expected_ = found + 1;
  return names_[found];
}

bool TJsonObject::Has(std::string_view name) const {
  const auto found = static_cast<std::size_t>(std::find(names_.begin(), names_.end(), name) - names_.begin());
  return (seen_ >> found & 1U) != 0;
}

void TJsonObject::Require(std::initializer_list<std::string_view> names) const {
  for (const std::string_view name : names) {
    if (!Has(name)) json_.FailAt(place_, "found no " + Quoted(name) + ", expected it in " + std::string(what_));
  }
}

}  // namespace velhost
