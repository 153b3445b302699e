#include "host/base/text.h"

#include <algorithm>

#include "host/base/utf8.h"

namespace velhost {

namespace {

constexpr std::size_t kLongestQuote = 60;  // bytes

}  // namespace

std::string Quoted(std::string_view text) {
  const std::string_view shown = WholeCharacters(text, kLongestQuote);
  std::string quoted = "\"";
  for (const char c : shown) {
    const auto byte = static_cast<unsigned char>(c);
    quoted += byte < 0x20 || byte == 0x7F ? '?' : c;
  }
  return quoted + (shown.size() < text.size() ? "...\"" : "\"");
}

std::string SingleQuoted(std::string_view text, std::size_t longest) {
  const std::string_view shown = WholeCharacters(text, std::min(text.find_first_of("\r\n"), longest));
  return "'" + std::string(shown) + (shown.size() < text.size() ? "...'" : "'");
}

std::string Counted(std::size_t count, std::string_view noun) {
  std::string text = std::to_string(count);
  text.append(" ").append(noun);
  return count == 1 ? text : text + "s";
}

}  // namespace velhost
