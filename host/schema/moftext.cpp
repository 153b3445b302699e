#include "host/schema/moftext.h"

#include <algorithm>
#include <cstring>

#include "host/base/digits.h"
#include "host/base/utf8.h"

namespace velhost::Mof {

namespace {

// "\x" is followed by one to four digits; a fifth digit is text.
TCharacter TakeHexEscape(std::string_view content) {
  char32_t code = 0;
  std::size_t size = 2;
  while (size < content.size() && size < 6 && HexDigitValue(content[size]) >= 0) {
    code = code * 16 + static_cast<char32_t>(HexDigitValue(content[size++]));
  }
  return {code, size, size > 2};
}

TCharacter TakeEscape(std::string_view content) {
  if (content.size() < 2) return {0, 1, false};
  switch (content[1]) {
    case 'b': return {'\b', 2, true};
    case 't': return {'\t', 2, true};
    case 'n': return {'\n', 2, true};
    case 'f': return {'\f', 2, true};
    case 'r': return {'\r', 2, true};
    case '"': return {'"', 2, true};
    case '\'': return {'\'', 2, true};
    case '\\': return {'\\', 2, true};
    case 'x':
    case 'X': return TakeHexEscape(content);
    default: return {0, 1 + NextCodePoint(content, 1).size, false};
  }
}

bool IsHighSurrogate(char32_t code) { return code >= 0xD800 && code <= 0xDBFF; }
bool IsLowSurrogate(char32_t code) { return code >= 0xDC00 && code <= 0xDFFF; }

}  // namespace

std::size_t FindStringStop(std::string_view text, std::size_t start) {
  constexpr std::uint64_t kOnes = 0x0101010101010101;
  // Sets the top bit of each zero byte, and perhaps of bytes above it: enough to find where to look.
  const auto zeros = [](std::uint64_t word) { return (word - kOnes) & ~word & (kOnes << 7U); };
  std::size_t i = start;
  for (; text.size() - i >= 8; i += 8) {
    std::uint64_t word = 0;
    std::memcpy(&word, text.data() + i, sizeof word);
    const std::uint64_t found = zeros(word ^ kOnes * '"') | zeros(word ^ kOnes * '\\') | zeros(word ^ kOnes * '\n') |
                                zeros(word ^ kOnes * '\r');
    if (found != 0) break;
  }
  const std::size_t stop = text.find_first_of("\"\\\n\r", i);
  return std::min(stop, text.size());
}

TCharacter TakeCharacter(std::string_view content) {
  if (content[0] == '\\') return TakeEscape(content);
  const TCodePoint next = NextCodePoint(content, 0);
  return {next.value, next.size, true};
}

namespace {

// Removes the escape at the start of `content`, or two of them if they are a surrogate pair, and appends its
// character.
void AppendEscape(std::string& text, std::string_view& content) {
  TCharacter taken = TakeCharacter(content);
  content.remove_prefix(taken.size);
  if (IsHighSurrogate(taken.code) && !content.empty() && content[0] == '\\') {
    const TCharacter low = TakeCharacter(content);
    if (IsLowSurrogate(low.code)) {
      taken.code = 0x10000 + ((taken.code - 0xD800) << 10U) + (low.code - 0xDC00);
      content.remove_prefix(low.size);
    }
  }
  AppendUtf8(text, taken.good ? taken.code : kReplacementCharacter);
}

template <typename TAfterEscape>
void Unescape(std::string& text, std::string_view content, TAfterEscape afterEscape) {
  while (!content.empty()) {
    const std::size_t plain = content.find('\\');
    text += content.substr(0, plain);
    if (plain == std::string_view::npos) return;
    content.remove_prefix(plain);
    AppendEscape(text, content);
    afterEscape(content.size());
  }
}

}  // namespace

void AppendUnescaped(std::string& text, std::string_view content) {
  Unescape(text, content, [](std::size_t) {});
}

void AppendUnescaped(std::string& text, std::string_view content, std::uint32_t offset, std::vector<TTextJump>& jumps) {
  Unescape(text, content, [&](std::size_t rest) {
    jumps.push_back(
        {static_cast<std::uint32_t>(text.size()), offset + static_cast<std::uint32_t>(content.size() - rest)});
  });
}

}  // namespace velhost::Mof
