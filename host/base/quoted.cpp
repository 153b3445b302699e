#include "host/base/quoted.h"

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

}  // namespace velhost
