// Building blocks of messages: quotations, counts, lists.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "host/base/api.h"

namespace velhost {

/// Text from an input, in double quotes: shortened if long, with a question mark for each control character.
VELHOST_API std::string Quoted(std::string_view text);

/// A name or token in single quotes: its first line, cut after `longest` bytes.
VELHOST_API std::string SingleQuoted(std::string_view text, std::size_t longest = std::string_view::npos);

/// "1 byte", "2 bytes".
VELHOST_API std::string Counted(std::size_t count, std::string_view noun);

/// "a", "a and b", "a, b and c", where `last` is " and ".
template <typename TWords>
std::string Listed(const TWords& words, std::string_view last) {
  std::string text;
  std::size_t left = words.size();
  for (const auto& word : words) {
    if (!text.empty()) text += left == 1 ? last : ", ";
    text += word;
    --left;
  }
  return text;
}

}  // namespace velhost
