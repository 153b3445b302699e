// The characters of a MOF text: UTF-8, and the escapes of literals.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace velhost::Mof {

/// The offset of the first byte that is no part of well-formed UTF-8 (surrogates and overlong forms
/// are none) or that is a NUL byte, from `start` on; the text's size when there is none.
std::size_t FindBadByte(std::string_view text, std::size_t start);

/// One character of a literal's content; `size` bytes were taken. `good` is false for a backslash
/// that no character or the wrong one follows: then `size` is that of the bad part.
struct TCharacter {
  char32_t code;
  std::size_t size;
  bool good;
};
/// Takes one character off the start of `content`, which is well-formed UTF-8 and not empty.
TCharacter TakeCharacter(std::string_view content);

/// The first quote, backslash or line end from `start` on; the text's size when there is none.
std::size_t FindStringStop(std::string_view text, std::size_t start);

/// Appends a literal's content, its escapes resolved; pairs of escaped surrogates become one
/// character, and a lone one the replacement character.
void AppendUnescaped(std::string& text, std::string_view content);

/// From the byte `text` of a resolved text on, the source runs in step from its byte `source` on.
struct TTextJump {
  std::uint32_t text;
  std::uint32_t source;
};
/// The same; adds a jump behind each escape. `offset` is the content's in the source.
void AppendUnescaped(std::string& text, std::string_view content, std::uint32_t offset, std::vector<TTextJump>& jumps);

}  // namespace velhost::Mof
