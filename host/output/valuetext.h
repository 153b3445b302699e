// Values as text, for the formats that machines read, and the buffer of the writers, with the fast paths that determine
// how fast a format is written.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "host/base/api.h"
#include "host/base/digits.h"
#include "host/base/text.h"
#include "host/base/utf8.h"
#include "nkrovel20/tcimvalue.h"

namespace velhost {

/// Gathers text in memory of a fixed size and passes it to the sink when that is full. The destructor passes on
/// nothing: after an exception the sink may no longer be usable.
class TTextBuffer {
 public:
  static constexpr std::size_t kCapacity = std::size_t{64} * 1024;

  /// The sink is not owned.
  explicit TTextBuffer(ITextSink& sink) : sink_(sink), text_(kCapacity) {}

  void Append(std::string_view text) {
    if (text.size() > kCapacity - size_) return AppendLong(text);
    size_ += text.copy(text_.data() + size_, text.size());
  }
  void Append(char c) {
    if (size_ == kCapacity) HandOver();
    text_[size_++] = c;
  }
  void AppendRepeated(char c, std::size_t count) {
    for (; count > 0; --count) Append(c);
  }

  /// Passes all text to the sink.
  void HandOver();
  /// Passes all text to the sink and flushes the sink.
  void Flush();

 private:
  void AppendLong(std::string_view text);

  ITextSink& sink_;
  std::vector<char> text_;
  std::size_t size_ = 0;
};

/// For each ASCII character, whether a format writes it unchanged. Bytes beyond ASCII are never plain, because their
/// encoding has to be checked.
using TPlainCharacters = std::array<bool, 256>;

/// All ASCII characters from the blank on except those in `special` (and DEL only if it is in there).
constexpr TPlainCharacters PlainBut(std::string_view special) {
  TPlainCharacters plain{};
  for (std::size_t i = 0x20; i < 0x80; ++i) plain[i] = true;
  for (const char c : special) plain[static_cast<unsigned char>(c)] = false;
  return plain;
}

/// Splits a string of arbitrary bytes: runs of plain characters go to `plain(run)`, every other character to
/// `special(character, bytes)` with its code point and its valid UTF-8. Bytes that are not valid UTF-8 arrive as the
/// replacement character.
template <typename TPlain, typename TSpecial>
void SplitText(std::string_view text, const TPlainCharacters& table, TPlain&& plain, TSpecial&& special) {
  while (!text.empty()) {
    const auto isSpecial = [&table](char c) { return !table[static_cast<unsigned char>(c)]; };
    const auto run = static_cast<std::size_t>(std::find_if(text.begin(), text.end(), isSpecial) - text.begin());
    if (run > 0) plain(text.substr(0, run));
    text.remove_prefix(run);
    if (text.empty()) return;
    const TCodePoint next = NextCodePoint(text, 0);
    special(next.value, next.valid ? text.substr(0, next.size) : kReplacementText);
    text.remove_prefix(next.size);
  }
}

/// Converts numbers to text; each result is valid until the next call.
class TNumberText {
 public:
  /// Any integer type except boolean and char16, in decimal.
  std::string_view Integer(const TCIMValue& value);
  std::string_view Unsigned(std::uint64_t number);
  std::string_view Signed(std::int64_t number);
  /// The shortest text that reads back as the same real32 or real64. It always contains a point followed by a digit
  /// ("1.0", "-2.5", "1.0e+300"): MOF requires that and the other formats accept it. Empty for infinities and NaN.
  std::string_view Real(const TCIMValue& value);

 private:
  std::array<char, 40> digits_{};  // a sign, 17 digits, a point, ".0", an exponent of 5
};

/// The letter of the short escape that JSON and MOF use for the character; NUL if there is none.
constexpr char ShortEscape(char32_t character) {
  switch (character) {
    case '"': return '"';
    case '\\': return '\\';
    case '\b': return 'b';
    case '\f': return 'f';
    case '\n': return 'n';
    case '\r': return 'r';
    case '\t': return 't';
    default: return '\0';
  }
}

/// How a format writes null and arrays.
struct TListSigns {
  std::string_view null;
  char open;
  std::string_view separator = "";
  char close;
};

/// Writes a null, an array element by element, or a scalar with `scalar`. Bytes, which registers and raw data consist
/// of, are numbers in every format and are written from a table.
template <typename TScalar>
void AppendValue(TTextBuffer& out, const TCIMValue& value, const TListSigns& signs, const TScalar& scalar) {
  if (value.IsNull()) return out.Append(signs.null);
  if (!value.IsArray()) return scalar(value);
  out.Append(signs.open);
  std::string_view separator = "";
  for (const TCIMValue& element : static_cast<const std::vector<TCIMValue>&>(value)) {
    out.Append(separator);
    separator = signs.separator;
    if (element.GetType() == TCIMValue::TCIMType::kUint8 && !element.IsNull()) {
      out.Append(ByteText(static_cast<std::uint8_t>(element.ToInteger())));
    } else {
      AppendValue(out, element, signs, scalar);
    }
  }
  out.Append(signs.close);
}

}  // namespace velhost
