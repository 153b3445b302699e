// Text in columns for a terminal: safe characters, wrapped lines, a little colour.
#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "host/base/unsafetext.h"
#include "host/output/textbuffer.h"
#include "host/output/writers.h"

namespace velhost {

/// Cuts safe text at blanks into lines of at most `width` columns; a character wider than that gets a line of its
/// own. A word is only split if it is longer than a line and the line before it would otherwise be less than half
/// full. Blanks at a cut are dropped. Returns at least one line.
std::vector<std::string_view> WrapText(std::string_view safeText, std::size_t width);

enum class EEmphasis { kNone, kHeading, kFailure };

class TTableLayout {
 public:
  TTableLayout(ITextSink& sink, const TTableOptions& options);

  std::size_t Width() const { return width_; }
  /// Writes one line unchanged.
  void Line(std::string_view safeText, EEmphasis emphasis = EEmphasis::kNone);
  /// Writes wrapped lines, indented by `indent`.
  void Paragraph(std::size_t indent, std::string_view safeText, EEmphasis emphasis = EEmphasis::kNone);
  /// Writes a label at `indent` and wrapped text at `column`. If the label reaches that column, the text begins on
  /// the next line; there it moves to the left if the column is too narrow.
  void Row(std::size_t indent, std::string_view label, std::size_t column, std::string_view safeText,
           EEmphasis emphasis = EEmphasis::kNone);
  void BlankLine() { out_.Append('\n'); }
  void Flush() { out_.Flush(); }

 private:
  void Emphasised(std::string_view text, EEmphasis emphasis);
  /// Writes wrapped lines at `column`; the caller has already moved to that column for the first line.
  void WrappedAt(std::size_t column, std::string_view safeText, EEmphasis emphasis);

  TTextBuffer out_;
  std::size_t width_;
  bool color_;
};

}  // namespace velhost
