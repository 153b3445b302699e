#include "host/output/tablelayout.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <memory>
#include <string>

#include "host/base/digits.h"
#include "host/base/utf8.h"
#include "host/output/valuetext.h"

namespace velhost {

namespace {

constexpr int kLeastWidth = 40;
constexpr std::size_t kLeastTextWidth = 16;  // text with less room than this moves to the next line

// Where to cut a text that does not fit: before a word that fits on a line of its own, so that no number is split,
// and before a longer word if at least half of the line is already filled.
std::size_t CutOf(std::string_view text, std::size_t fitting, std::size_t width) {
  if (text[fitting] == ' ') return fitting;
  const std::size_t blank = text.rfind(' ', fitting);
  if (blank == std::string_view::npos || text.find_first_not_of(' ') > blank) return fitting;
  const std::size_t end = std::min(text.find(' ', fitting), text.size());
  const std::string_view word = text.substr(blank + 1, end - blank - 1);
  const bool hasRoom = StartThatFits(word, width).size() == word.size();
  return hasRoom || blank >= fitting / 2 ? blank : fitting;
}

// Bold, dim, yellow, red, bold red.
std::string_view EscapeOf(EEmphasis emphasis) {
  constexpr std::array<std::string_view, 6> kEscapes = {"", "\x1b[1m", "\x1b[2m", "\x1b[33m", "\x1b[31m", "\x1b[1;31m"};
  return kEscapes.at(static_cast<std::size_t>(emphasis));
}

}  // namespace

std::vector<std::string_view> WrapText(std::string_view safeText, std::size_t width) {
  std::vector<std::string_view> lines;
  for (;;) {
    const std::size_t fitting = StartThatFits(safeText, width).size();
    if (fitting == safeText.size()) break;
    const std::size_t cut = CutOf(safeText, fitting, width);
    const std::string_view line = safeText.substr(0, cut);
    lines.push_back(line.substr(0, line.find_last_not_of(' ') + 1));
    safeText.remove_prefix(std::min(safeText.find_first_not_of(' ', cut), safeText.size()));
    if (safeText.empty()) return lines;
  }
  lines.push_back(safeText);
  return lines;
}

TTableLayout::TTableLayout(ITextSink& sink, const TTableOptions& options)
    : out_(sink), width_(static_cast<std::size_t>(std::max(options.width, kLeastWidth))), color_(options.color) {}

void TTableLayout::Emphasised(std::string_view text, EEmphasis emphasis) {
  const bool colored = color_ && emphasis != EEmphasis::kNone && !text.empty();
  if (colored) out_.Append(EscapeOf(emphasis));
  out_.Append(text);
  if (colored) out_.Append("\x1b[0m");
}

void TTableLayout::WrappedAt(std::size_t column, std::string_view safeText, EEmphasis emphasis) {
  bool first = true;
  for (const std::string_view line : WrapText(safeText, width_ - column)) {
    if (!first && !line.empty()) out_.AppendRepeated(' ', column);
    first = false;
    Emphasised(line, emphasis);
    out_.Append('\n');
  }
}

void TTableLayout::Line(std::string_view safeText, EEmphasis emphasis) {
  Emphasised(safeText, emphasis);
  out_.Append('\n');
}

void TTableLayout::Paragraph(std::size_t indent, std::string_view safeText, EEmphasis emphasis) {
  out_.AppendRepeated(' ', indent);
  WrappedAt(indent, safeText, emphasis);
}

void TTableLayout::Row(std::size_t indent, std::string_view label, std::size_t column, std::string_view safeText,
                       EEmphasis emphasis) {
  Labelled(indent, label, column, safeText, EEmphasis::kNone, emphasis);
}

void TTableLayout::Rows(std::size_t indent, std::string_view label, std::size_t column,
                        const std::vector<std::string>& safeLines, EEmphasis ofLabel, EEmphasis emphasis) {
  Labelled(indent, label, column, safeLines.front(), ofLabel, emphasis);
  for (std::size_t i = 1; i < safeLines.size(); ++i) Paragraph(TextColumn(indent, column), safeLines[i], emphasis);
}

std::size_t TTableLayout::TextColumn(std::size_t indent, std::size_t column) const {
  return column + kLeastTextWidth > width_ ? indent + 2 : column;
}

void TTableLayout::LabelledRow(std::size_t indent, std::string_view label, std::size_t column,
                               std::string_view safeText, EEmphasis emphasis) {
  Labelled(indent, label, column, safeText, emphasis, emphasis);
}

void TTableLayout::Labelled(std::size_t indent, std::string_view label, std::size_t column, std::string_view safeText,
                            EEmphasis ofLabel, EEmphasis emphasis) {
  out_.AppendRepeated(' ', indent);
  Emphasised(label, ofLabel);
  const std::size_t reached = indent + ColumnsOf(label);
  if (safeText.empty()) return BlankLine();
  const bool narrow = column + kLeastTextWidth > width_;
  if (narrow) column = indent + 2;
  if (narrow || reached + 2 > column) {
    BlankLine();
    out_.AppendRepeated(' ', column);
  } else {
    out_.AppendRepeated(' ', column - reached);
  }
  WrappedAt(column, safeText, emphasis);
}

namespace {

constexpr std::size_t kGroup = 8;

static_assert(DumpColumns(16) == 78 && DumpColumns(8) == 45);

std::string DumpLine(std::size_t offset, std::span<const std::uint8_t> bytes, std::size_t bytesPerLine) {
  std::string line = fmt::format("{:08x}  ", offset);
  for (std::size_t i = 0; i < bytesPerLine; ++i) {
    if (i > 0 && i % kGroup == 0) line += ' ';
    line += i < bytes.size() ? HexPair(bytes[i]) : "  ";
    line += ' ';
  }
  line += " |";
  for (const std::uint8_t byte : bytes) line += byte >= 0x20 && byte < 0x7F ? static_cast<char>(byte) : '.';
  line += '|';
  return line;
}

}  // namespace

void DumpBytes(std::span<const std::uint8_t> bytes, std::size_t bytesPerLine,
               const std::function<void(std::string_view)>& line) {
  bool starred = false;
  for (std::size_t offset = 0; offset < bytes.size(); offset += bytesPerLine) {
    const auto part = bytes.subspan(offset, std::min(bytesPerLine, bytes.size() - offset));
    const bool repeats =
        offset > 0 && part.size() == bytesPerLine &&
        std::equal(part.begin(), part.end(), bytes.begin() + static_cast<std::ptrdiff_t>(offset - bytesPerLine));
    if (repeats && !starred) line("*");
    starred = repeats;
    if (!repeats) line(DumpLine(offset, part, bytesPerLine));
  }
  if (!bytes.empty()) line(fmt::format("{:08x}", bytes.size()));
}

}  // namespace velhost
