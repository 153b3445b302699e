#include "plugin/registerdump.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

namespace torgareg {

namespace {

constexpr std::size_t kBytesPerLine = 8;
constexpr std::size_t kWidest = 4;  // "255 "

// Every register read formats 514 bytes, even if nobody listens. So each byte is one four-character copy from
// a table, of which `size` characters count.
struct TDecimal {
  std::array<char, kWidest> text;
  std::uint8_t size;
};

constexpr std::array<TDecimal, 256> makeDecimals() {
  std::array<TDecimal, 256> table{};
  for (unsigned int value = 0; value < table.size(); ++value) {
    TDecimal& entry = table[value];
    if (value >= 100) entry.text[entry.size++] = static_cast<char>('0' + value / 100);
    if (value >= 10) entry.text[entry.size++] = static_cast<char>('0' + value / 10 % 10);
    entry.text[entry.size++] = static_cast<char>('0' + value % 10);
    entry.text[entry.size++] = ' ';
  }
  return table;
}

constexpr std::array<TDecimal, 256> kDecimals = makeDecimals();
constexpr std::array<char, 16> kHexDigits = {'0', '1', '2', '3', '4', '5', '6', '7',
                                             '8', '9', 'a', 'b', 'c', 'd', 'e', 'f'};

// Writes kWidest characters, of which those before the result count.
char* putDecimal(char* out, unsigned char byte) {
  const TDecimal& value = kDecimals[byte];
  std::memcpy(out, value.text.data(), kWidest);
  return out + value.size;
}

}  // namespace

std::string dumpBytes(const unsigned char* data, unsigned long last) {
  const std::size_t count = last + 1;
  const std::size_t lines = (count + kBytesPerLine - 1) / kBytesPerLine;
  std::string text(lines + count * kWidest + 1, '\0');
  char* out = text.data();
  for (std::size_t line = 0; line < count; line += kBytesPerLine) {
    *out++ = '\n';
    const std::size_t end = std::min(line + kBytesPerLine, count);
    for (std::size_t i = line; i < end; ++i) out = putDecimal(out, data[i]);
  }
  *out++ = '\n';
  text.resize(static_cast<std::size_t>(out - text.data()));
  return text;
}

void appendDecimals(std::string& text, const unsigned char* data, std::size_t size) {
  const std::size_t start = text.size();
  text.resize(start + size * kWidest);
  char* out = text.data() + start;
  for (std::size_t i = 0; i < size; ++i) out = putDecimal(out, data[i]);
  text.resize(static_cast<std::size_t>(out - text.data()));
}

void appendHexPairs(std::string& text, const unsigned char* data, std::size_t size) {
  const std::size_t start = text.size();
  text.resize(start + size * 3);
  char* out = text.data() + start;
  for (std::size_t i = 0; i < size; ++i) {
    *out++ = kHexDigits[data[i] >> 4U];
    *out++ = kHexDigits[data[i] & 0x0FU];
    *out++ = ' ';
  }
}

}  // namespace torgareg
