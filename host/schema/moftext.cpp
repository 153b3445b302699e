#include "host/schema/moftext.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace velhost::Mof {

namespace {

constexpr std::uint32_t kReplacement = 0xFFFD;

// What may follow a first byte: how many bytes, and the range of the second.
struct TSequence {
  std::uint8_t size;  // 0: no first byte
  std::uint8_t low;
  std::uint8_t high;
};

constexpr TSequence SequenceOf(unsigned int first) {
  if (first >= 0x01 && first < 0x80) return {1, 0, 0};
  if (first >= 0xC2 && first <= 0xDF) return {2, 0x80, 0xBF};
  if (first == 0xE0) return {3, 0xA0, 0xBF};
  if (first == 0xED) return {3, 0x80, 0x9F};
  if (first >= 0xE1 && first <= 0xEF) return {3, 0x80, 0xBF};
  if (first == 0xF0) return {4, 0x90, 0xBF};
  if (first >= 0xF1 && first <= 0xF3) return {4, 0x80, 0xBF};
  if (first == 0xF4) return {4, 0x80, 0x8F};
  return {0, 0, 0};
}

constexpr auto kSequences = [] {
  std::array<TSequence, 256> table{};
  for (unsigned int first = 0; first < table.size(); ++first) table.at(first) = SequenceOf(first);
  return table;
}();

constexpr std::uint8_t ByteAt(std::string_view text, std::size_t i) { return static_cast<std::uint8_t>(text[i]); }

// The size of the well-formed character at `i`, or 0.
std::size_t SizeAt(std::string_view text, std::size_t i) {
  const TSequence sequence = kSequences[ByteAt(text, i)];
  if (sequence.size < 2) return sequence.size;
  if (text.size() - i < sequence.size) return 0;
  const std::uint8_t second = ByteAt(text, i + 1);
  if (second < sequence.low || second > sequence.high) return 0;
  for (std::size_t k = 2; k < sequence.size; ++k) {
    if ((ByteAt(text, i + k) & 0xC0U) != 0x80U) return 0;
  }
  return sequence.size;
}

// Whether the eight bytes hold neither a NUL nor a byte above 0x7F.
bool ArePlain(const char* bytes) {
  std::uint64_t word = 0;
  std::memcpy(&word, bytes, sizeof word);
  constexpr std::uint64_t kOnes = 0x0101010101010101;
  constexpr std::uint64_t kHighs = 0x8080808080808080;
  return ((word | (word - kOnes)) & kHighs) == 0;
}

int HexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

// "\x" is followed by one to four digits; a fifth is text.
TCharacter TakeHexEscape(std::string_view content) {
  std::uint32_t code = 0;
  std::size_t size = 2;
  while (size < content.size() && size < 6 && HexDigit(content[size]) >= 0) {
    code = code * 16 + static_cast<std::uint32_t>(HexDigit(content[size++]));
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
    default: return {0, 1 + std::size_t{kSequences[ByteAt(content, 1)].size}, false};
  }
}

std::uint32_t DecodeUtf8(std::string_view bytes) {
  constexpr std::array<std::uint8_t, 5> kFirstBits = {0, 0x7F, 0x1F, 0x0F, 0x07};
  std::uint32_t code = ByteAt(bytes, 0) & kFirstBits.at(bytes.size());
  for (std::size_t i = 1; i < bytes.size(); ++i) code = code << 6U | (ByteAt(bytes, i) & 0x3FU);
  return code;
}

bool IsHighSurrogate(std::uint32_t code) { return code >= 0xD800 && code <= 0xDBFF; }
bool IsLowSurrogate(std::uint32_t code) { return code >= 0xDC00 && code <= 0xDFFF; }

}  // namespace

std::size_t FindBadByte(std::string_view text, std::size_t start) {
  std::size_t i = start;
  while (i < text.size()) {
    while (text.size() - i >= 8 && ArePlain(text.data() + i)) i += 8;
    if (i >= text.size()) break;
    const std::size_t size = SizeAt(text, i);
    if (size == 0) return i;
    i += size;
  }
  return text.size();
}

std::size_t FindStringStop(std::string_view text, std::size_t start) {
  constexpr std::uint64_t kOnes = 0x0101010101010101;
  // A zero byte's top bit, and perhaps those of bytes above it: good enough to find where to look.
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
  const std::size_t size = kSequences[ByteAt(content, 0)].size;
  return {DecodeUtf8(content.substr(0, size)), size, true};
}

void AppendUtf8(std::string& text, std::uint32_t code) {
  const auto tail = [&text, code](unsigned int shift) { text += static_cast<char>(0x80U | (code >> shift & 0x3FU)); };
  if (code < 0x80) {
    text += static_cast<char>(code);
  } else if (code < 0x800) {
    text += static_cast<char>(0xC0U | code >> 6U);
    tail(0);
  } else if (code < 0x10000) {
    text += static_cast<char>(0xE0U | code >> 12U);
    tail(6);
    tail(0);
  } else {
    text += static_cast<char>(0xF0U | code >> 18U);
    tail(12);
    tail(6);
    tail(0);
  }
}

namespace {

// Takes the escape that `content` starts with, or two of them for a pair of surrogates, off it.
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
  if (!taken.good || IsHighSurrogate(taken.code) || IsLowSurrogate(taken.code)) taken.code = kReplacement;
  AppendUtf8(text, taken.code);
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
