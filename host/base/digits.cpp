#include "host/base/digits.h"

namespace velhost {

namespace {

bool IsSpace(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

}  // namespace

std::string HexNumber(std::uint64_t number, int bytes) {
  std::string text = "0x";
  for (int shift = (bytes - 1) * 8; shift >= 0; shift -= 8) {
    text += UpperHexPair(static_cast<std::uint8_t>(number >> static_cast<unsigned>(shift)));
  }
  return text;
}

std::string HexNumber(std::span<const std::uint8_t> bytes) {
  std::string text = "0x";
  for (const std::uint8_t byte : bytes) text += UpperHexPair(byte);
  return text;
}

THexPairs ParseHexPairs(std::string_view text) {
  THexPairs pairs;
  pairs.bytes.reserve(text.size() / 3 + 1);
  for (std::size_t at = 0; at < text.size();) {
    if (IsSpace(text[at])) {
      ++at;
      continue;
    }
    const int high = HexDigitValue(text[at]);
    const int low = at + 1 < text.size() ? HexDigitValue(text[at + 1]) : -1;
    if (high < 0 || low < 0) {
      pairs.errorAt = high < 0 ? at : at + 1;
      return pairs;
    }
    pairs.bytes.push_back(static_cast<std::uint8_t>(high * 16 + low));
    at += 2;
  }
  return pairs;
}

std::string FormatHexPairs(std::span<const std::uint8_t> bytes) {
  std::string text;
  text.reserve(bytes.size() * 3);
  for (const std::uint8_t byte : bytes) {
    if (!text.empty()) text += ' ';
    text += HexPair(byte);
  }
  return text;
}

}  // namespace velhost
