#include "host/base/quoted.h"

#include <algorithm>

namespace velhost {

namespace {

constexpr std::size_t kLongestQuote = 60;  // bytes

bool IsUtf8Continuation(char c) { return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U; }

}  // namespace

std::string Quoted(std::string_view text) {
  std::size_t size = std::min(text.size(), kLongestQuote);
  while (size > 0 && size < text.size() && IsUtf8Continuation(text[size])) --size;
  std::string quoted = "\"";
  for (const char c : text.substr(0, size)) {
    const auto byte = static_cast<unsigned char>(c);
    quoted += byte < 0x20 || byte == 0x7F ? '?' : c;
  }
  return quoted + (size < text.size() ? "...\"" : "\"");
}

}  // namespace velhost
