// The characters of MOF text: UTF-8, and the escapes in literals.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace velhost::Mof {

/// One character of a literal's content, which takes up `size` bytes. `good` is false if a backslash is followed by
/// nothing or by a wrong character; then `size` is that of the bad escape.
struct TCharacter {
  char32_t code;
  std::size_t size;
  bool good;
};
/// Decodes the character at the start of `content`, which must be well-formed UTF-8 and not empty.
TCharacter TakeCharacter(std::string_view content);

/// The offset of the first quote, backslash or line end at or after `start`; the text's size if there is none.
std::size_t FindStringStop(std::string_view text, std::size_t start);

/// Appends a literal's content with its escapes resolved. A pair of escaped surrogates becomes one character, and a
/// lone one the replacement character.
void AppendUnescaped(std::string& text, std::string_view content);

/// From the byte `text` of the resolved text on, bytes correspond one to one to the source from its byte `source` on.
struct TTextJump {
  std::uint32_t text;
  std::uint32_t source;
};
/// Also adds a jump after each escape. `offset` is that of the content in the source.
void AppendUnescaped(std::string& text, std::string_view content, std::uint32_t offset, std::vector<TTextJump>& jumps);

}  // namespace velhost::Mof
