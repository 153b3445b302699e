// Strings as XML text.
#pragma once

#include <string>
#include <string_view>

namespace velhost {

/// Appends the string as character data: markup characters as entities, carriage returns and unsafe characters (see
/// IsUnsafe) as references ("&#xD;", "&#x202E;"), and U+FFFD for characters that XML 1.0 cannot hold and for bytes
/// that are not valid UTF-8. Tabs and newlines are unchanged.
void AppendXmlText(std::string& xml, std::string_view text);

/// The string as the content of an attribute in double quotes; white space becomes blanks.
std::string XmlAttribute(std::string_view text);

/// Safe text as the content of a comment, which must not contain two adjacent hyphens.
std::string XmlComment(std::string_view safeText);

}  // namespace velhost
