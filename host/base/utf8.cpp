#include "host/base/utf8.h"

#include <utf8proc.h>

#include <array>
#include <cstring>

namespace velhost {

namespace {

// What the first byte determines: the number of bytes that follow, and the range of the second byte, which is what
// rules out overlong forms, surrogates and numbers above U+10FFFF.
struct TLead {
  int more;
  unsigned char low;
  unsigned char high;
};

TLead LeadOf(unsigned char byte) {
  if (byte >= 0xC2 && byte <= 0xDF) return {1, 0x80, 0xBF};
  if (byte == 0xE0) return {2, 0xA0, 0xBF};
  if (byte == 0xED) return {2, 0x80, 0x9F};
  if (byte >= 0xE1 && byte <= 0xEF) return {2, 0x80, 0xBF};
  if (byte == 0xF0) return {3, 0x90, 0xBF};
  if (byte >= 0xF1 && byte <= 0xF3) return {3, 0x80, 0xBF};
  if (byte == 0xF4) return {3, 0x80, 0x8F};
  return {0, 0, 0};
}

// Whether the eight bytes contain neither a NUL nor a byte above 0x7F.
bool ArePlain(const char* bytes) {
  std::uint64_t word = 0;
  std::memcpy(&word, bytes, sizeof word);
  constexpr std::uint64_t kOnes = 0x0101010101010101;
  constexpr std::uint64_t kHighs = 0x8080808080808080;
  return ((word | (word - kOnes)) & kHighs) == 0;
}

}  // namespace

TCodePoint NextCodePoint(std::string_view text, std::size_t at) {
  // Not text[i]: its bounds check would repeat the caller's and the loop's, and this runs for every character of a
  // table.
  const auto byte = [text](std::size_t i) { return static_cast<unsigned char>(text.data()[i]); };
  const unsigned char first = byte(at);
  if (first < 0x80) return {first, 1, true};
  const TLead lead = LeadOf(first);
  if (lead.more == 0) return {kReplacementCharacter, 1, false};
  char32_t value = first & (0x3FU >> lead.more);
  for (std::size_t i = 1; i <= static_cast<std::size_t>(lead.more); ++i) {
    const unsigned char low = i == 1 ? lead.low : 0x80;
    const unsigned char high = i == 1 ? lead.high : 0xBF;
    if (at + i >= text.size() || byte(at + i) < low || byte(at + i) > high) return {kReplacementCharacter, i, false};
    value = value << 6 | (byte(at + i) & 0x3FU);
  }
  return {value, static_cast<std::size_t>(lead.more) + 1, true};
}

std::size_t FindBadByte(std::string_view text, std::size_t start) {
  std::size_t i = start;
  while (i < text.size()) {
    while (text.size() - i >= 8 && ArePlain(text.data() + i)) i += 8;
    if (i >= text.size()) break;
    const TCodePoint next = NextCodePoint(text, i);
    if (!next.valid || next.value == 0) return i;
    i += next.size;
  }
  return text.size();
}

std::optional<TBadByte> ReplaceBadBytes(std::span<char> text) {
  const std::string_view view(text.data(), text.size());
  std::size_t bad = FindBadByte(view, 0);
  if (bad == text.size()) return std::nullopt;
  const TBadByte first{bad, static_cast<std::uint8_t>(text[bad])};
  for (; bad < text.size(); bad = FindBadByte(view, bad + 1)) text[bad] = '?';
  return first;
}

void AppendUtf8(std::string& text, char32_t character) {
  if (character > 0x10FFFF || (character >= 0xD800 && character <= 0xDFFF)) character = kReplacementCharacter;
  std::array<utf8proc_uint8_t, 4> bytes{};
  const auto size = utf8proc_encode_char(static_cast<utf8proc_int32_t>(character), bytes.data());
  text.append(bytes.begin(), bytes.begin() + size);
}

std::string_view WholeCharacters(std::string_view text, std::size_t size) {
  if (size >= text.size()) return text;
  while (size > 0 && IsUtf8Continuation(text[size])) --size;
  return text.substr(0, size);
}

namespace {

constexpr char32_t kFirstCombining = 0x300;  // everything before it is narrow

}  // namespace

int ColumnsOf(char32_t character) {
  return character < kFirstCombining ? 1 : utf8proc_charwidth(static_cast<utf8proc_int32_t>(character));
}

std::size_t ColumnsOf(std::string_view safeText) {
  std::size_t columns = 0;
  for (;;) {
    const std::size_t plain = PrintableAsciiSize(safeText);
    columns += plain;
    safeText.remove_prefix(plain);
    if (safeText.empty()) return columns;
    const TCodePoint next = NextCodePoint(safeText, 0);
    columns += static_cast<std::size_t>(ColumnsOf(next.value));
    safeText.remove_prefix(next.size);
  }
}

std::string_view StartThatFits(std::string_view safeText, std::size_t width) {
  std::size_t at = PrintableAsciiSize(safeText.substr(0, width));
  std::size_t columns = at;
  while (at < safeText.size()) {
    const TCodePoint next = NextCodePoint(safeText, at);
    columns += static_cast<std::size_t>(ColumnsOf(next.value));
    if (columns > width && at > 0) break;
    at += next.size;
  }
  return safeText.substr(0, at);
}

}  // namespace velhost
