// Buffers the output of the writers. Contains the fast paths that determine how fast a format is written.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <string_view>
#include <vector>

#include "host/base/textsink.h"
#include "host/base/utf8.h"

namespace velhost {

/// Gathers text in memory of a fixed size and passes it to the sink when that is full. The destructor passes on
/// nothing: after an exception the sink may no longer be usable.
class TTextBuffer {
 public:
  static constexpr std::size_t kCapacity = std::size_t{64} * 1024;

  /// The sink is not owned.
  explicit TTextBuffer(ITextSink& sink) : sink_(sink), text_(kCapacity) {}

  void Append(std::string_view text) {
    if (text.size() > kCapacity - size_) return AppendLong(text);
    std::memcpy(text_.data() + size_, text.data(), text.size());
    size_ += text.size();
  }
  void Append(char c) {
    if (size_ == kCapacity) HandOver();
    text_[size_++] = c;
  }
  void AppendRepeated(char c, std::size_t count) {
    for (; count > 0; --count) Append(c);
  }

  /// Passes all text to the sink.
  void HandOver();
  /// Passes all text to the sink and flushes the sink.
  void Flush();

 private:
  void AppendLong(std::string_view text);

  ITextSink& sink_;
  std::vector<char> text_;
  std::size_t size_ = 0;
};

/// For each ASCII character, whether a format writes it unchanged. Bytes beyond ASCII are never plain, because their
/// encoding has to be checked.
using TPlainCharacters = std::array<bool, 256>;

/// All ASCII characters from the blank on except those in `special` (and DEL only if it is in there).
constexpr TPlainCharacters PlainBut(std::string_view special) {
  TPlainCharacters plain{};
  for (std::size_t i = 0x20; i < 0x80; ++i) plain[i] = true;
  for (const char c : special) plain[static_cast<unsigned char>(c)] = false;
  return plain;
}

/// Splits a string of arbitrary bytes: runs of plain characters go to `plain(run)`, every other character to
/// `special(character, bytes)` with its code point and its valid UTF-8. Bytes that are not valid UTF-8 arrive as the
/// replacement character.
template <typename TPlain, typename TSpecial>
void SplitText(std::string_view text, const TPlainCharacters& table, TPlain&& plain, TSpecial&& special) {
  while (!text.empty()) {
    const auto isSpecial = [&table](char c) { return !table[static_cast<unsigned char>(c)]; };
    const auto run = static_cast<std::size_t>(std::find_if(text.begin(), text.end(), isSpecial) - text.begin());
    if (run > 0) plain(text.substr(0, run));
    text.remove_prefix(run);
    if (text.empty()) return;
    const TCodePoint next = NextCodePoint(text, 0);
    special(next.value, next.valid ? text.substr(0, next.size) : kReplacementText);
    text.remove_prefix(next.size);
  }
}

}  // namespace velhost
