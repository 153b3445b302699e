#include "host/output/xmltext.h"

#include "host/output/textbuffer.h"

namespace NKROVEL20 {

namespace {

constexpr TPlainCharacters kPlain = PlainBut("&<>");
constexpr TPlainCharacters kPlainInAttribute = PlainBut("&<>\"");
constexpr TPlainCharacters kPlainInComment = PlainBut("");

std::string_view EntityOf(char32_t character) {
  switch (character) {
    case '&': return "&amp;";
    case '<': return "&lt;";
    case '>': return "&gt;";
    case '"': return "&quot;";
    case '\r': return "&#13;";
    default: return {};
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
    const std::string_view entity = EntityOf(character);
    xml += IsForbidden(character) ? kReplacementText : entity.empty() ? bytes : entity;
  });
}

std::string XmlAttribute(std::string_view text) {
  std::string xml;
  const auto plain = [&xml](std::string_view run) { xml += run; };
  SplitText(text, kPlainInAttribute, plain, [&xml](char32_t character, std::string_view bytes) {
    const std::string_view entity = EntityOf(character);
    // No name has a line in it: any white space is one blank, as readers of attributes take it.
    xml += character == '\t' || character == '\n' || character == '\r' ? std::string_view(" ")
           : IsForbidden(character)                                    ? kReplacementText
           : entity.empty()                                            ? bytes
                                                                       : entity;
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

}  // namespace NKROVEL20
