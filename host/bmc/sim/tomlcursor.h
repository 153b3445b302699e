// A cursor over a TOML text, which advances by character or by token.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "host/bmc/sim/tomldocument.h"

namespace velhost {

class TTomlCursor {
 public:
  /// The document is not owned. Throws THostError if its text is not UTF-8; skips a byte order mark.
  explicit TTomlCursor(const TTomlDocument& document);

  bool AtEnd() const { return at_ == text_.size(); }
  /// The byte `ahead` bytes after the cursor; 0 past the end.
  char Peek(std::size_t ahead = 0) const { return at_ + ahead < text_.size() ? text_[at_ + ahead] : '\0'; }
  bool AtNewline() const { return Peek() == '\n' || (Peek() == '\r' && Peek(1) == '\n'); }
  void Next(std::size_t bytes = 1);

  std::size_t Position() const { return at_; }
  std::string_view TextFrom(std::size_t start) const { return text_.substr(start, at_ - start); }
  const TTomlPlace& Place() const { return place_; }

  /// Skips blanks and tabs.
  void SkipBlanks();
  /// Skips blanks, tabs, line ends and comments.
  void SkipToNext();
  /// Skips a comment, if there is one, and the end of the line or text, which must follow.
  void EndLine();

  /// Throws "found ..., expected ...", with what is at the cursor.
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

/// Whether `c` is a control character other than the tab. TOML allows those only in line ends.
constexpr bool IsTomlControl(char c) { return (static_cast<unsigned char>(c) < 0x20 && c != '\t') || c == 0x7F; }

}  // namespace velhost
