#include "host/bmc/sim/tomlcursor.h"

#include "host/base/quoted.h"

namespace velhost {

namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

std::string HexByte(char c) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  const auto byte = static_cast<unsigned char>(c);
  return std::string("0x") + kDigits[byte >> 4U] + kDigits[byte & 0xFU];
}

// By its first byte; 0 for one that begins no character.
std::size_t SizeByFirstByte(unsigned char first) {
  if (first < 0x80) return 1;
  if (first < 0xC2 || first > 0xF4) return 0;
  if (first < 0xE0) return 2;
  return first < 0xF0 ? 3 : 4;
}

// What three and four bytes must not say: a shorter character, half of a pair of UTF-16, or too much.
bool IsSecondByte(unsigned char first, char c) {
  const auto second = static_cast<unsigned char>(c);
  switch (first) {
    case 0xE0: return second >= 0xA0;
    case 0xED: return second < 0xA0;
    case 0xF0: return second >= 0x90;
    case 0xF4: return second < 0x90;
    default: return true;
  }
}

// How many bytes of UTF-8 begin the text, 1 to 4; 0 where it begins with something else.
std::size_t SizeOfCharacter(std::string_view text) {
  const auto first = static_cast<unsigned char>(text.front());
  const std::size_t size = SizeByFirstByte(first);
  if (size > text.size()) return 0;
  for (std::size_t i = 1; i < size; ++i) {
    if (!IsUtf8Continuation(text[i])) return 0;
  }
  return size < 3 || IsSecondByte(first, text[1]) ? size : 0;
}

}  // namespace

TTomlCursor::TTomlCursor(const TTomlDocument& document) : document_(document), text_(document.text) {
  RefuseOtherThanUtf8();
  if (text_.starts_with(kByteOrderMark)) Next(kByteOrderMark.size());
}

void TTomlCursor::RefuseOtherThanUtf8() const {
  TTomlPlace place;
  for (std::string_view rest = text_; !rest.empty();) {
    const std::size_t size = SizeOfCharacter(rest);
    if (size == 0) Fail(place, "found the byte " + HexByte(rest.front()) + ", which is not UTF-8, expected UTF-8 text");
    ++place.column;
    if (rest.front() == '\n') place = {place.line + 1, 1};
    rest.remove_prefix(size);
  }
}

void TTomlCursor::Next(std::size_t bytes) {
  for (; bytes > 0 && at_ < text_.size(); --bytes) {
    const char c = text_[at_++];
    if (c == '\n') {
      place_ = {place_.line + 1, 1};
    } else if (!IsUtf8Continuation(c)) {
      ++place_.column;
    }
  }
}

void TTomlCursor::SkipBlanks() {
  while (Peek() == ' ' || Peek() == '\t') Next();
}

void TTomlCursor::SkipComment() {
  if (Peek() != '#') return;
  while (!AtEnd() && !AtNewline()) {
    if (IsTomlControl(Peek())) FailExpecting("a comment without control characters");
    Next();
  }
}

void TTomlCursor::SkipToNext() {
  for (SkipBlanks(); Peek() == '#' || AtNewline(); SkipBlanks()) {
    SkipComment();
    if (AtNewline()) Next(Peek() == '\r' ? 2 : 1);
  }
}

void TTomlCursor::EndLine() {
  SkipBlanks();
  SkipComment();
  if (!AtEnd() && !AtNewline()) FailExpecting("the end of the line");
}

std::string TTomlCursor::Found() const {
  if (AtEnd()) return "the end of the file";
  if (AtNewline()) return "the end of the line";
  if (IsTomlControl(Peek())) return "the control character " + HexByte(Peek());
  return Quoted(text_.substr(at_, SizeOfCharacter(text_.substr(at_))));
}

void TTomlCursor::FailExpecting(const std::string& expected) const {
  Fail(place_, "found " + Found() + ", expected " + expected);
}

}  // namespace velhost
