// Text for people: quotations, counts and lists, text without characters that could disturb or deceive someone who
// reads it on a terminal, and destinations of text.
//
// Only this header decides what is unsafe: for messages, for the table, and for every output format, each of which
// writes the escapes in its own syntax.
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

/// C0 and C1 control characters (U+0000 to U+001F, U+007F to U+009F), line and paragraph separators, and marks that
/// change the direction of writing (U+061C, U+200E, U+200F, U+202A to U+202E, U+2066 to U+2069).
constexpr bool IsUnsafe(char32_t character) {
  const bool control = character < 0x20 || (character >= 0x7F && character <= 0x9F);
  const bool mark = character == 0x061C || character == 0x200E || character == 0x200F;
  const bool direction = (character >= 0x202A && character <= 0x202E) || (character >= 0x2066 && character <= 0x2069);
  const bool separator = character == 0x2028 || character == 0x2029;
  return control || mark || direction || separator;
}

/// Text that is safe to show on a terminal: unsafe characters become escapes ("\n", "\x1b", "\u202e"), invalid bytes
/// U+FFFD. A backslash is not escaped.
VELHOST_API std::string SafeText(std::string_view text);

/// As SafeText, but newlines and tabs stay as they are.
VELHOST_API std::string SafeLines(std::string_view text);

/// A JSON document with its unsafe characters beyond ASCII escaped ("\u009b"). They only occur in strings, so its
/// meaning does not change; those in ASCII are escaped in every JSON document anyway.
VELHOST_API std::string SafeJson(std::string_view document);

/// Receives text piece by piece. Write throws THostError on failure.
class ITextSink {
 public:
  virtual ~ITextSink() = default;
  virtual void Write(std::string_view text) = 0;
  /// Passes on anything buffered, so that a reader at the other end sees it now. Output forms that promise each
  /// instance at its commit call this after each one.
  virtual void Flush() {}
};

/// Collects what is written.
class TStringSink : public ITextSink {
 public:
  void Write(std::string_view text) override { text_ += text; }
  const std::string& Text() const { return text_; }

 private:
  std::string text_;
};

}  // namespace velhost
