#include "host/base/textdiagnostic.h"

#include <algorithm>

#include "host/base/text.h"
#include "host/base/utf8.h"

namespace velhost {

namespace {

constexpr std::size_t kWidest = 78;  // bytes of a source line that are shown, after an indent of two
constexpr std::string_view kCut = "...";
constexpr int kMostContinuations = 3;  // bytes of a UTF-8 character after its first

// A tab becomes one blank, so that the caret's column matches; other unsafe characters become question marks.
void AppendPrintable(std::string& text, std::string_view part) {
  for (std::size_t at = 0; at < part.size();) {
    const TCodePoint next = NextCodePoint(part, at);
    const bool isUnsafe = next.valid && IsUnsafe(next.value);
    if (next.value == '\t') {
      text += ' ';
    } else {
      text += isUnsafe ? "?" : part.substr(at, next.size);
    }
    at += next.size;
  }
}

// A line, of which possibly only the bytes from `start` on are known.
struct TKnownLine {
  std::string_view bytes;
  std::size_t start;
  std::size_t size;
  char At(std::size_t i) const { return bytes[i - start]; }
  std::string_view Part(std::size_t from, std::size_t to) const { return bytes.substr(from - start, to - from); }
};

// The part of a line that is shown.
struct TWindow {
  std::size_t start;
  std::size_t end;
};

TWindow WindowOf(std::size_t size, std::size_t column) {
  std::size_t start = 0;
  if (size > kWidest && column > kWidest / 2) start = std::min(column - kWidest / 2, size - kWidest);
  return {start, std::min(start + kWidest, size)};
}

// Marks each side that is cut with "...", within the width.
void AppendExcerpt(std::string& text, const TKnownLine& line, std::size_t column) {
  auto [start, end] = WindowOf(line.size, column);
  const std::string_view before = start > 0 ? kCut : "";
  const std::string_view behind = end < line.size ? kCut : "";
  start += before.size();
  end -= behind.size();
  for (int i = 0; i < kMostContinuations && start > 0 && IsUtf8Continuation(line.At(start)); ++i) ++start;
  for (int i = 0; i < kMostContinuations && end < line.size && IsUtf8Continuation(line.At(end)); ++i) --end;
  text.append("  ").append(before);
  AppendPrintable(text, line.Part(start, end));
  text.append(behind).append("\n  ").append(before.size(), ' ');
  const std::size_t caret = std::min(column > 0 ? column - 1 : 0, line.size);
  for (std::size_t i = start; i < caret; ++i) {
    if (!IsUtf8Continuation(line.At(i))) text += ' ';
  }
  text += "^\n";
}

}  // namespace

std::string FormatDiagnostic(const TTextDiagnostic& diagnostic) {
  std::string text = SafeText(diagnostic.location.file);
  if (diagnostic.location.line > 0) {
    text += ":" + std::to_string(diagnostic.location.line) + ":" + std::to_string(diagnostic.location.column);
  }
  text += diagnostic.severity == EDiagnosticSeverity::kError ? ": error: " : ": warning: ";
  text += diagnostic.message + "\n";
  if (diagnostic.location.line > 0 && !diagnostic.sourceLine.empty()) {
    const std::size_t size = std::max(diagnostic.sourceSize, diagnostic.sourceLine.size());
    AppendExcerpt(text, {diagnostic.sourceLine, diagnostic.sourceStart, size}, diagnostic.location.column);
  }
  return text;
}

void SetSourceLine(TTextDiagnostic& diagnostic, std::string_view line) {
  const auto [start, end] = WindowOf(line.size(), diagnostic.location.column);
  diagnostic.sourceLine = line.substr(start, end - start);
  diagnostic.sourceStart = start;
  diagnostic.sourceSize = line.size();
}

TDiagnosedError::TDiagnosedError(EFailure kind, const TTextDiagnostic& diagnostic)
    : THostError(kind, FormatDiagnostic(diagnostic)), diagnostic_(diagnostic) {}

TDiagnosedError::~TDiagnosedError() = default;

std::string_view LineOf(std::string_view text, std::uint32_t number) {
  for (std::uint32_t line = 1; line < number; ++line) {
    const std::size_t end = text.find('\n');
    if (end == std::string_view::npos) return {};
    text.remove_prefix(end + 1);
  }
  std::string_view line = text.substr(0, text.find('\n'));
  if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
  return line;
}

}  // namespace velhost
