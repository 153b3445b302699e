#include "host/base/utf8.h"

#include <algorithm>
#include <array>

namespace velhost {

namespace {

// What the first byte says: bytes that follow, and the range of the second byte, which is where
// overlong forms, surrogates and numbers beyond U+10FFFF are told apart.
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

struct TRange {
  char32_t first;
  char32_t last;
};

constexpr std::array<TRange, 12> kZeroWidth = {{{0x0300, 0x036F},
                                                {0x0483, 0x0489},
                                                {0x0591, 0x05BD},
                                                {0x064B, 0x065F},
                                                {0x093C, 0x093C},
                                                {0x0E31, 0x0E31},
                                                {0x0E34, 0x0E3A},
                                                {0x1AB0, 0x1AFF},
                                                {0x1DC0, 0x1DFF},
                                                {0x20D0, 0x20FF},
                                                {0xFE00, 0xFE0F},
                                                {0xFE20, 0xFE2F}}};
constexpr std::array<TRange, 12> kWide = {{{0x1100, 0x115F},
                                           {0x2E80, 0x303E},
                                           {0x3041, 0x33FF},
                                           {0x3400, 0x4DBF},
                                           {0x4E00, 0x9FFF},
                                           {0xA000, 0xA4CF},
                                           {0xAC00, 0xD7A3},
                                           {0xF900, 0xFAFF},
                                           {0xFE30, 0xFE6F},
                                           {0xFF00, 0xFF60},
                                           {0x1F300, 0x1F64F},
                                           {0x20000, 0x3FFFD}}};

template <typename TRanges>
bool IsIn(const TRanges& ranges, char32_t character) {
  return std::any_of(ranges.begin(), ranges.end(),
                     [character](const TRange& range) { return character >= range.first && character <= range.last; });
}

}  // namespace

TCodePoint NextCodePoint(std::string_view text, std::size_t at) {
  // Not text[i], whose check would repeat the caller's and the loop's: this runs for every character of a table.
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

void AppendUtf8(std::string& text, char32_t character) {
  const auto put = [&text](char32_t bits) { text += static_cast<char>(static_cast<unsigned char>(bits)); };
  if (character > 0x10FFFF || (character >= 0xD800 && character <= 0xDFFF)) character = kReplacementCharacter;
  if (character < 0x80) return put(character);
  if (character < 0x800) {
    put(0xC0 | character >> 6);
  } else if (character < 0x10000) {
    put(0xE0 | character >> 12);
    put(0x80 | (character >> 6 & 0x3F));
  } else {
    put(0xF0 | character >> 18);
    put(0x80 | (character >> 12 & 0x3F));
    put(0x80 | (character >> 6 & 0x3F));
  }
  put(0x80 | (character & 0x3F));
}

int ColumnsOf(char32_t character) {
  if (character < 0x300) return 1;
  if (IsIn(kZeroWidth, character)) return 0;
  return IsIn(kWide, character) ? 2 : 1;
}

}  // namespace velhost
