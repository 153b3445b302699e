// Text in columns for a terminal (safe characters, wrapped lines, a little colour), and bytes in the layout of
// `hexdump -C`.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "host/base/text.h"
#include "host/output/valuetext.h"
#include "host/output/writers.h"

namespace velhost {

/// Cuts safe text at blanks into lines of at most `width` columns; a character wider than that gets a line of its
/// own. A word is only split if it is longer than a line and the line before it would otherwise be less than half
/// full. Blanks at a cut are dropped. Returns at least one line.
std::vector<std::string_view> WrapText(std::string_view safeText, std::size_t width);

enum class EEmphasis {
  kNone,
  kHeading,
  kDim,        ///< nothing to look at
  kCorrected,  ///< the mildest severity
  kFailure,    ///< what could not be read, and errors
  kFatal
};

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
  /// A row whose text is several lines, each of which is wrapped by itself. There must be one.
  void Rows(std::size_t indent, std::string_view label, std::size_t column, const std::vector<std::string>& safeLines,
            EEmphasis ofLabel = EEmphasis::kNone, EEmphasis emphasis = EEmphasis::kNone);
  /// Where the text of such a row begins.
  std::size_t TextColumn(std::size_t indent, std::size_t column) const;
  /// As Row, with the label emphasised, too.
  void LabelledRow(std::size_t indent, std::string_view label, std::size_t column, std::string_view safeText,
                   EEmphasis emphasis);
  void BlankLine() { out_.Append('\n'); }
  void Flush() { out_.Flush(); }

 private:
  void Labelled(std::size_t indent, std::string_view label, std::size_t column, std::string_view safeText,
                EEmphasis ofLabel, EEmphasis emphasis);
  void Emphasised(std::string_view text, EEmphasis emphasis);
  /// Writes wrapped lines at `column`; the caller has already moved to that column for the first line.
  void WrappedAt(std::size_t column, std::string_view safeText, EEmphasis emphasis);

  TTextBuffer out_;
  std::size_t width_;
  bool color_;
};

/// The columns of a line with that many bytes (8 or 16).
constexpr std::size_t DumpColumns(std::size_t bytesPerLine) {
  return 8 + 2 + bytesPerLine * 3 + (bytesPerLine / 8 - 1) + 1 + bytesPerLine + 2;
}

/// Emits the lines, without newlines: offsets in hex, the bytes as pairs in groups of eight, and printable ASCII
/// between bars with a full stop for any other byte. A run of lines equal to the one before is replaced by one "*".
/// The last line is the number of bytes. Emits nothing for empty data.
void DumpBytes(std::span<const std::uint8_t> bytes, std::size_t bytesPerLine,
               const std::function<void(std::string_view)>& line);

}  // namespace velhost
