#include "host/bmc/sim/tomlcursor.h"

#include <cstdint>

#include "host/base/digits.h"
#include "host/base/text.h"
#include "host/base/utf8.h"

namespace velhost {

namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

// The size, 1 to 4 bytes, of the UTF-8 character that the text begins with; 0 if it does not begin with one.
std::size_t SizeOfCharacter(std::string_view text) {
  const TCodePoint next = NextCodePoint(text, 0);
  return next.valid ? next.size : 0;
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
    if (size == 0)
      Fail(place, "found the byte " + HexByte(static_cast<std::uint8_t>(rest.front())) +
                      ", which is not UTF-8, expected UTF-8 text");
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
  if (IsTomlControl(Peek())) return "the control character " + HexByte(static_cast<std::uint8_t>(Peek()));
  return Quoted(text_.substr(at_, SizeOfCharacter(text_.substr(at_))));
}

void TTomlCursor::FailExpecting(const std::string& expected) const {
  Fail(place_, "found " + Found() + ", expected " + expected);
}

}  // namespace velhost
