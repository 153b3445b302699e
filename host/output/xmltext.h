// Strings as XML text.
#pragma once

#include <string>
#include <string_view>

namespace velhost {

/// Appends the string as character data: markup characters as entities, a carriage return and what is
/// unsafe (see IsUnsafe) as references ("&#xD;", "&#x202E;"), and U+FFFD for characters that XML 1.0
/// cannot hold and for bytes that are not characters. Tabs and newlines stay as they are.
void AppendXmlText(std::string& xml, std::string_view text);

/// The string as the value of an attribute in double quotes.
std::string XmlAttribute(std::string_view text);

/// Safe text as the inside of a comment, which may hold no two hyphens side by side.
std::string XmlComment(std::string_view safeText);

}  // namespace velhost
