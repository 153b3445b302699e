#include "plugin/registerdump.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace torgareg {

namespace {

constexpr std::size_t kBytesPerLine = 8;
constexpr std::size_t kWidest = 4;  // "255 "

// Every register read formats 514 values whether anyone listens or not. Hence a value is one copy of four
// characters out of a table, of which `size` count, and a line of zeros is one copy.
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

// Command buffers are zeros for the most part.
constexpr std::string_view kZeroLine = "\n0 0 0 0 0 0 0 0 ";
static_assert(kZeroLine.size() == 1 + 2 * kBytesPerLine);

bool isZeroLine(const unsigned char* line) {
  std::uint64_t bytes = 0;
  static_assert(sizeof bytes == kBytesPerLine);
  std::memcpy(&bytes, line, sizeof bytes);
  return bytes == 0;
}

}  // namespace

std::string dumpBytes(const unsigned char* data, unsigned long last) {
  const std::size_t count = last + 1;
  const std::size_t whole = count - count % kBytesPerLine;
  std::size_t zeroLines = 0;
  for (std::size_t i = 0; i < whole; i += kBytesPerLine) zeroLines += isZeroLine(data + i) ? 1U : 0U;
  // As long as the text can become; a line of zeros has one length only.
  std::string text(zeroLines * kZeroLine.size() + (count - zeroLines * kBytesPerLine) * kWidest +
                       (whole / kBytesPerLine - zeroLines) + 2,
                   '\0');
  char* out = text.data();
  for (std::size_t i = 0; i < whole; i += kBytesPerLine) {
    if (isZeroLine(data + i)) {
      out = std::copy(kZeroLine.begin(), kZeroLine.end(), out);
      continue;
    }
    *out++ = '\n';
    for (std::size_t k = 0; k < kBytesPerLine; ++k) out = putDecimal(out, data[i + k]);
  }
  if (whole < count) *out++ = '\n';
  for (std::size_t i = whole; i < count; ++i) out = putDecimal(out, data[i]);
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
