#include "host/base/text.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>

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

namespace {

std::string EscapeOf(char32_t character) {
  switch (character) {
    case '\n': return "\\n";
    case '\r': return "\\r";
    case '\t': return "\\t";
    default: break;
  }
  const auto number = static_cast<unsigned int>(character);
  return number < 0x100 ? fmt::format("\\x{:02x}", number) : fmt::format("\\u{:04x}", number);
}

}  // namespace

std::string SafeText(std::string_view text) {
  std::string safe;
  safe.reserve(text.size());
  for (;;) {
    const std::size_t plain = PrintableAsciiSize(text);
    safe += text.substr(0, plain);
    text.remove_prefix(plain);
    if (text.empty()) return safe;
    const TCodePoint next = NextCodePoint(text, 0);
    if (!next.valid) {
      safe += kReplacementText;
    } else if (IsUnsafe(next.value)) {
      safe += EscapeOf(next.value);
    } else {
      safe += text.substr(0, next.size);
    }
    text.remove_prefix(next.size);
  }
}

std::string SafeLines(std::string_view text) {
  std::string safe;
  for (;;) {
    const std::size_t end = text.find_first_of("\n\t");
    safe += SafeText(text.substr(0, end));
    if (end == std::string_view::npos) return safe;
    safe += text[end];
    text.remove_prefix(end + 1);
  }
}

std::string SafeJson(std::string_view document) {
  std::string safe;
  safe.reserve(document.size());
  for (std::size_t at = 0; at < document.size();) {
    const TCodePoint next = NextCodePoint(document, at);
    if (next.valid && next.value >= 0x7F && IsUnsafe(next.value)) {
      safe += fmt::format("\\u{:04x}", static_cast<unsigned int>(next.value));
    } else {
      safe += document.substr(at, next.size);
    }
    at += next.size;
  }
  return safe;
}

}  // namespace velhost
