#include "host/bmc/sim/tomlscalar.h"

#include <array>
#include <cstddef>
#include <deque>
#include <string>

#include "host/base/digits.h"
#include "host/base/utf8.h"
#include "nkrovel20/tcimdatetime.h"

namespace velhost {

namespace {

using EKind = TTomlValue::EKind;

constexpr std::size_t kMicrosecondDigits = 6;

bool IsDigitOf(int base, char c) { return HexDigitValue(c) >= 0 && HexDigitValue(c) < base; }

/// Consumes parts from the front of a word.
class TWord {
 public:
  explicit TWord(std::string_view rest) : rest_(rest) {}

  bool IsEmpty() const { return rest_.empty(); }
  char Peek() const { return rest_.empty() ? '\0' : rest_.front(); }
  bool Take(char c) {
    if (Peek() != c || rest_.empty()) return false;
    rest_.remove_prefix(1);
    return true;
  }
  bool TakeOne(std::string_view characters) {
    return !rest_.empty() && characters.find(Peek()) != std::string_view::npos && Take(Peek());
  }
  /// Digits, with single underscores between them if `parted`; empty if there are none.
  std::string_view Digits(int base, bool parted) {
    const auto isDigit = [this, base](std::size_t at) { return at < rest_.size() && IsDigitOf(base, rest_[at]); };
    const auto isParting = [this, &isDigit](std::size_t at) {
      return at < rest_.size() && rest_[at] == '_' && at > 0 && rest_[at - 1] != '_' && isDigit(at + 1);
    };
    std::size_t size = 0;
    while (isDigit(size) || (parted && isParting(size))) ++size;
    const std::string_view digits = rest_.substr(0, size);
    rest_.remove_prefix(size);
    return digits;
  }
  /// A number of exactly `size` digits, within the limits.
  std::optional<int> Number(std::size_t size, int low, int high) {
    int value = 0;
    if (rest_.size() < size) return std::nullopt;
    for (std::size_t i = 0; i < size; ++i) {
      if (!IsDigit(rest_[i])) return std::nullopt;
      value = value * 10 + HexDigitValue(rest_[i]);
    }
    rest_.remove_prefix(size);
    return value >= low && value <= high ? std::optional(value) : std::nullopt;
  }

 private:
  std::string_view rest_;
};

TTomlScalar IntegerFrom(std::string_view digits, int base, bool isNegative) {
  const std::uint64_t most = (std::uint64_t{1} << 63U) - (isNegative ? 0 : 1);
  const auto radix = static_cast<std::uint64_t>(base);
  TTomlScalar scalar;
  std::uint64_t value = 0;
  for (const char c : digits) {
    if (c == '_') continue;
    const auto digit = static_cast<std::uint64_t>(HexDigitValue(c));
    if (value > (most - digit) / radix) {
      scalar.isTooLarge = true;
      return scalar;
    }
    value = value * radix + digit;
  }
  scalar.integer = static_cast<std::int64_t>(isNegative ? 0 - value : value);
  return scalar;
}

std::optional<TTomlScalar> ReadPrefixed(std::string_view word) {
  if (word.size() < 3 || word[0] != '0') return std::nullopt;
  const int base = word[1] == 'x' ? 16 : word[1] == 'o' ? 8 : word[1] == 'b' ? 2 : 0;
  if (base == 0) return std::nullopt;
  TWord rest(word.substr(2));
  const std::string_view digits = rest.Digits(base, true);
  if (digits.empty() || !rest.IsEmpty()) return std::nullopt;
  return IntegerFrom(digits, base, false);
}

// An integer or a floating-point number.
std::optional<TTomlScalar> ReadDecimal(std::string_view word) {
  TWord rest(word);
  const bool isNegative = rest.Peek() == '-';
  rest.TakeOne("+-");
  const std::string_view whole = rest.Digits(10, true);
  if (whole.empty() || (whole.size() > 1 && whole[0] == '0')) return std::nullopt;
  if (rest.IsEmpty()) return IntegerFrom(whole, 10, isNegative);
  if (rest.Take('.') && rest.Digits(10, true).empty()) return std::nullopt;
  if (rest.TakeOne("eE")) {
    rest.TakeOne("+-");
    if (rest.Digits(10, true).empty()) return std::nullopt;
  }
  return rest.IsEmpty() ? std::optional(TTomlScalar{EKind::kFloat, 0, {}, false}) : std::nullopt;
}

std::optional<TTomlScalar> ReadNamed(std::string_view word) {
  if (word == "true") return TTomlScalar{EKind::kBoolean, 1, {}, false};
  if (word == "false") return TTomlScalar{EKind::kBoolean, 0, {}, false};
  if (!word.empty() && (word[0] == '+' || word[0] == '-')) word.remove_prefix(1);
  if (word == "inf" || word == "nan") return TTomlScalar{EKind::kFloat, 0, {}, false};
  return std::nullopt;
}

struct TDate {
  int year, month, day;
};

int DaysIn(int year, int month) {
  static constexpr std::array<int, 12> kDays = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  const bool isLeap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
  return month == 2 && isLeap ? 29 : kDays.at(static_cast<std::size_t>(month - 1));
}

std::optional<TDate> TakeDate(TWord& rest) {
  const auto year = rest.Number(4, 0, 9999);
  if (!year || !rest.Take('-')) return std::nullopt;
  const auto month = rest.Number(2, 1, 12);
  if (!month || !rest.Take('-')) return std::nullopt;
  const auto day = rest.Number(2, 1, DaysIn(*year, *month));
  return day ? std::optional(TDate{*year, *month, *day}) : std::nullopt;
}

struct TTime {
  int hour, minute, second, microsecond;
};

std::optional<TTime> TakeTime(TWord& rest) {
  const auto hour = rest.Number(2, 0, 23);
  if (!hour || !rest.Take(':')) return std::nullopt;
  const auto minute = rest.Number(2, 0, 59);
  if (!minute || !rest.Take(':')) return std::nullopt;
  const auto second = rest.Number(2, 0, 59);
  if (!second) return std::nullopt;
  TTime time = {*hour, *minute, *second, 0};
  if (!rest.Take('.')) return time;
  const std::string_view fraction = rest.Digits(10, false);
  if (fraction.empty()) return std::nullopt;
  for (std::size_t i = 0; i < kMicrosecondDigits; ++i) {
    time.microsecond = time.microsecond * 10 + (i < fraction.size() ? HexDigitValue(fraction[i]) : 0);
  }
  return time;
}

/// In minutes; empty if it is not an offset.
std::optional<int> TakeOffset(TWord& rest) {
  if (rest.TakeOne("Zz")) return 0;
  const int sign = rest.Peek() == '-' ? -1 : 1;
  if (!rest.TakeOne("+-")) return std::nullopt;
  const auto hours = rest.Number(2, 0, 23);
  if (!hours || !rest.Take(':')) return std::nullopt;
  const auto minutes = rest.Number(2, 0, 59);
  return minutes ? std::optional(sign * (*hours * 60 + *minutes)) : std::nullopt;
}

std::optional<TTomlScalar> ReadTimeOfDay(std::string_view word) {
  TWord rest(word);
  if (!TakeTime(rest) || !rest.IsEmpty()) return std::nullopt;
  return TTomlScalar{EKind::kTime, 0, {}, false};
}

std::optional<TTomlScalar> ReadDateOrDateTime(std::string_view word) {
  TWord rest(word);
  const auto date = TakeDate(rest);
  if (!date) return std::nullopt;
  if (rest.IsEmpty()) return TTomlScalar{EKind::kDate, 0, {}, false};
  if (!rest.TakeOne("Tt ")) return std::nullopt;
  const auto time = TakeTime(rest);
  if (!time) return std::nullopt;
  if (rest.IsEmpty()) return TTomlScalar{EKind::kDateTime, 0, {}, false};
  const auto offset = TakeOffset(rest);
  if (!offset || !rest.IsEmpty()) return std::nullopt;
  const auto narrow = [](int value) { return static_cast<unsigned short>(value); };
  const TCIMDateTime moment(narrow(date->year), narrow(date->month), narrow(date->day), narrow(time->hour),
                            narrow(time->minute), narrow(time->second), static_cast<unsigned int>(time->microsecond),
                            static_cast<short>(*offset));
  return TTomlScalar{EKind::kDateTime, 0, moment.ToString(), false};
}

}  // namespace

std::optional<TTomlScalar> ReadTomlScalar(std::string_view word) {
  for (const auto read : {ReadNamed, ReadPrefixed, ReadDecimal, ReadDateOrDateTime, ReadTimeOfDay}) {
    if (auto scalar = read(word)) return scalar;
  }
  return std::nullopt;
}

bool IsTomlDate(std::string_view word) {
  TWord rest(word);
  return TakeDate(rest) && rest.IsEmpty();
}

namespace {

constexpr char32_t kLargestCharacter = 0x10FFFF;
constexpr std::size_t kQuotes = 3;           // around a multi-line string
constexpr std::size_t kMostQuotesAtEnd = 5;  // two of the string's own and the delimiter

class TStringReader {
 public:
  TStringReader(TTomlCursor& at, TTomlDocument& document)
      : at_(at), document_(document), quote_(at.Peek()), isBasic_(quote_ == '"') {}

  std::string_view ReadLine();
  std::string_view ReadLines();

 private:
  void TakeCharacter(bool onLines);
  void TakeEscape(bool onLines);
  void TakeUnicode(std::size_t digits);
  bool TakeLineEndingBackslash();
  void Begin() { start_ = at_.Position(); }
  void Decode() {
    if (decoded_ == nullptr) decoded_ = &document_.decoded.emplace_back(at_.TextFrom(start_));
  }
  std::string_view SoFar() const { return decoded_ == nullptr ? at_.TextFrom(start_) : std::string_view(*decoded_); }

  TTomlCursor& at_;
  TTomlDocument& document_;
  char quote_;
  bool isBasic_;
  std::size_t start_ = 0;
  std::string* decoded_ = nullptr;  // set once it differs from the text as written
};

void TStringReader::TakeUnicode(std::size_t digits) {
  char32_t code = 0;
  const TTomlPlace place = at_.Place();
  for (std::size_t i = 0; i < digits; ++i) {
    const int value = HexDigitValue(at_.Peek());
    if (value < 0) at_.FailExpecting(std::to_string(digits) + " hexadecimal digits");
    code = code << 4U | static_cast<char32_t>(value);
    at_.Next();
  }
  if (code > kLargestCharacter || (code >= 0xD800 && code < 0xE000)) {
    at_.Fail(place, "found a number that is not a character, expected 0 to D7FF or E000 to 10FFFF");
  }
  AppendUtf8(*decoded_, code);
}

// A backslash at the end of a line removes all white space up to the next character.
bool TStringReader::TakeLineEndingBackslash() {
  std::size_t blanks = 0;
  while (at_.Peek(blanks) == ' ' || at_.Peek(blanks) == '\t') ++blanks;
  const bool isEnd = at_.Peek(blanks) == '\n' || (at_.Peek(blanks) == '\r' && at_.Peek(blanks + 1) == '\n');
  if (!isEnd) return false;
  for (at_.SkipBlanks(); at_.AtNewline(); at_.SkipBlanks()) at_.Next(at_.Peek() == '\r' ? 2 : 1);
  return true;
}

void TStringReader::TakeEscape(bool onLines) {
  Decode();
  at_.Next();
  if (onLines && TakeLineEndingBackslash()) return;
  constexpr std::string_view kLetters = "btnfr\"\\";
  constexpr std::string_view kMeanings = "\b\t\n\f\r\"\\";
  const char c = at_.Peek();
  const std::size_t letter = at_.AtEnd() ? std::string_view::npos : kLetters.find(c);
  if (letter == std::string_view::npos && c != 'u' && c != 'U') {
    at_.FailExpecting("one of b, t, n, f, r, u, U, \" and \\ after a backslash");
  }
  at_.Next();
  if (letter == std::string_view::npos) return TakeUnicode(c == 'u' ? 4 : 8);
  *decoded_ += kMeanings[letter];
}

void TStringReader::TakeCharacter(bool onLines) {
  const bool isNewline = at_.AtNewline();
  if (at_.AtEnd() || (isNewline && !onLines)) at_.FailExpecting("the string's closing quote");
  if (isBasic_ && at_.Peek() == '\\') return TakeEscape(onLines);
  if (!isNewline && IsTomlControl(at_.Peek())) at_.FailExpecting("a string without control characters");
  // Each line end is one newline in the string, whether or not the file has carriage returns.
  if (isNewline && at_.Peek() == '\r') {
    Decode();
    at_.Next();
  }
  const std::size_t start = at_.Position();
  at_.Next();
  if (decoded_ != nullptr) decoded_->append(at_.TextFrom(start));
}

std::string_view TStringReader::ReadLine() {
  at_.Next();
  Begin();
  while (at_.AtEnd() || at_.Peek() != quote_) TakeCharacter(false);
  const std::string_view text = SoFar();
  at_.Next();
  return text;
}

std::string_view TStringReader::ReadLines() {
  at_.Next(kQuotes);
  if (at_.AtNewline()) at_.Next(at_.Peek() == '\r' ? 2 : 1);
  Begin();
  while (true) {
    std::size_t quotes = 0;
    while (quotes < kMostQuotesAtEnd && at_.Peek(quotes) == quote_) ++quotes;
    const std::size_t own = quotes < kQuotes ? quotes : quotes - kQuotes;
    if (decoded_ != nullptr) decoded_->append(own, quote_);
    at_.Next(own);
    if (quotes >= kQuotes) break;
    if (quotes == 0) TakeCharacter(true);
  }
  const std::string_view text = SoFar();
  at_.Next(kQuotes);
  return text;
}

}  // namespace

std::string_view ReadTomlString(TTomlCursor& at, TTomlDocument& document, bool isKey) {
  TStringReader reader(at, document);
  const bool onLines = !isKey && at.Peek(1) == at.Peek() && at.Peek(2) == at.Peek();
  return onLines ? reader.ReadLines() : reader.ReadLine();
}

}  // namespace velhost
