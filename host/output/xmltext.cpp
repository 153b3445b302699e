#include "host/output/xmltext.h"

#include <fmt/format.h>

#include "host/base/text.h"
#include "host/output/valuetext.h"

namespace velhost {

namespace {

constexpr TPlainCharacters kPlain = PlainBut("&<>\x7f");
constexpr TPlainCharacters kPlainInAttribute = PlainBut("&<>\"\x7f");
constexpr TPlainCharacters kPlainInComment = PlainBut("");

// Tabs and newlines are harmless unescaped.
bool IsReferred(char32_t character) { return IsUnsafe(character) && character != '\t' && character != '\n'; }

void AppendEscaped(std::string& xml, char32_t character, std::string_view bytes) {
  switch (character) {
    case '&': xml += "&amp;"; return;
    case '<': xml += "&lt;"; return;
    case '>': xml += "&gt;"; return;
    case '"': xml += "&quot;"; return;
    default: break;
  }
  if (IsReferred(character)) {
    xml += fmt::format("&#x{:X};", static_cast<unsigned int>(character));
  } else {
    xml += bytes;
  }
}

bool IsForbidden(char32_t character) {
  const bool control = character < 0x20 && character != '\t' && character != '\n' && character != '\r';
  return control || character == 0xFFFE || character == 0xFFFF;
}

}  // namespace

void AppendXmlText(std::string& xml, std::string_view text) {
  const auto plain = [&xml](std::string_view run) { xml += run; };
  SplitText(text, kPlain, plain, [&xml](char32_t character, std::string_view bytes) {
    if (IsForbidden(character)) return void(xml += kReplacementText);
    AppendEscaped(xml, character, bytes);
  });
}

std::string XmlAttribute(std::string_view text) {
  std::string xml;
  const auto plain = [&xml](std::string_view run) { xml += run; };
  SplitText(text, kPlainInAttribute, plain, [&xml](char32_t character, std::string_view bytes) {
    // XML readers normalise white space in attributes to blanks; names do not contain any.
    const bool isSpace = character == '\t' || character == '\n' || character == '\r';
    if (isSpace || IsForbidden(character)) return void(xml += isSpace ? std::string_view(" ") : kReplacementText);
    AppendEscaped(xml, character, bytes);
  });
  return xml;
}

std::string XmlComment(std::string_view safeText) {
  std::string xml;
  const auto plain = [&xml](std::string_view run) {
    for (const char c : run) {
      if (c == '-' && !xml.empty() && xml.back() == '-') xml += ' ';
      xml += c;
    }
  };
  SplitText(safeText, kPlainInComment, plain, [&xml](char32_t character, std::string_view bytes) {
    xml += IsForbidden(character) ? kReplacementText : bytes;
  });
  return xml;
}

}  // namespace velhost
