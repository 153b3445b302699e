#include "host/bmc/sim/tomlstring.h"

#include <cstddef>
#include <deque>
#include <string>

#include "host/base/hex.h"
#include "host/base/utf8.h"

namespace velhost {

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
