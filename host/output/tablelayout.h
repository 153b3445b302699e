// Text in columns for a terminal: safe characters, wrapped lines, a little colour.
#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "host/base/unsafetext.h"
#include "host/output/textbuffer.h"
#include "host/output/writers.h"

namespace velhost {

/// Safe text cut into lines of at most `width` columns (a character wider than that is a line of its
/// own), at blanks. Only a word longer than a line is cut inside, when the line before would be less
/// than half full without its beginning. Blanks at a cut are dropped. At least one line.
std::vector<std::string_view> WrapText(std::string_view safeText, std::size_t width);

enum class EEmphasis { kNone, kHeading, kFailure };

class TTableLayout {
 public:
  TTableLayout(ITextSink& sink, const TTableOptions& options);

  std::size_t Width() const { return width_; }
  /// One line as it is.
  void Line(std::string_view safeText, EEmphasis emphasis = EEmphasis::kNone);
  /// Lines indented by `indent`, wrapped.
  void Paragraph(std::size_t indent, std::string_view safeText, EEmphasis emphasis = EEmphasis::kNone);
  /// A label at `indent` and text at `column`, wrapped there. The text begins on the next line where
  /// the label reaches into its column, and moves there to the left where the column is too narrow.
  void Row(std::size_t indent, std::string_view label, std::size_t column, std::string_view safeText,
           EEmphasis emphasis = EEmphasis::kNone);
  void BlankLine() { out_.Append('\n'); }
  void Flush() { out_.Flush(); }

 private:
  void Emphasised(std::string_view text, EEmphasis emphasis);
  /// Wrapped lines at `column`, the first of which the caller has moved to.
  void WrappedAt(std::size_t column, std::string_view safeText, EEmphasis emphasis);

  TTextBuffer out_;
  std::size_t width_;
  bool color_;
};

}  // namespace velhost
