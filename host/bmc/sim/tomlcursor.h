// A place in a TOML text that moves on, character by character or token by token.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "host/bmc/sim/tomldocument.h"

namespace velhost {

class TTomlCursor {
 public:
  /// The document is not owned. Text that is not UTF-8 throws THostError; a byte order mark is skipped.
  explicit TTomlCursor(const TTomlDocument& document);

  bool AtEnd() const { return at_ == text_.size(); }
  /// The byte so far on; 0 past the end.
  char Peek(std::size_t ahead = 0) const { return at_ + ahead < text_.size() ? text_[at_ + ahead] : '\0'; }
  bool AtNewline() const { return Peek() == '\n' || (Peek() == '\r' && Peek(1) == '\n'); }
  void Next(std::size_t bytes = 1);

  std::size_t Position() const { return at_; }
  std::string_view TextFrom(std::size_t start) const { return text_.substr(start, at_ - start); }
  const TTomlPlace& Place() const { return place_; }

  /// Blanks and tabs.
  void SkipBlanks();
  /// Blanks, tabs, ends of lines and comments.
  void SkipToNext();
  /// A comment, if there is one, and the end of the line or text, which has to follow.
  void EndLine();

  /// "found WHAT IS THERE, expected ...".
  [[noreturn]] void FailExpecting(const std::string& expected) const;
  [[noreturn]] void Fail(const TTomlPlace& place, const std::string& message) const { document_.Fail(place, message); }

 private:
  void RefuseOtherThanUtf8() const;
  void SkipComment();
  std::string Found() const;

  const TTomlDocument& document_;
  std::string_view text_;
  std::size_t at_ = 0;
  TTomlPlace place_;
};

/// Control characters other than the tab, which TOML allows nowhere but in the ends of lines.
constexpr bool IsTomlControl(char c) { return (static_cast<unsigned char>(c) < 0x20 && c != '\t') || c == 0x7F; }

}  // namespace velhost
