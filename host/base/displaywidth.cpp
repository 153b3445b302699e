#include "host/base/displaywidth.h"

#include <utf8proc.h>

#include <algorithm>

#include "host/base/utf8.h"

namespace velhost {

namespace {

constexpr char32_t kFirstCombining = 0x300;  // everything before it is narrow

}  // namespace

int ColumnsOf(char32_t character) {
  return character < kFirstCombining ? 1 : utf8proc_charwidth(static_cast<utf8proc_int32_t>(character));
}

std::size_t ColumnsOf(std::string_view safeText) {
  std::size_t columns = 0;
  for (;;) {
    const std::size_t plain = PrintableAsciiSize(safeText);
    columns += plain;
    safeText.remove_prefix(plain);
    if (safeText.empty()) return columns;
    const TCodePoint next = NextCodePoint(safeText, 0);
    columns += static_cast<std::size_t>(ColumnsOf(next.value));
    safeText.remove_prefix(next.size);
  }
}

std::string_view StartThatFits(std::string_view safeText, std::size_t width) {
  std::size_t at = std::min(PrintableAsciiSize(safeText), width);
  std::size_t columns = at;
  while (at < safeText.size()) {
    const TCodePoint next = NextCodePoint(safeText, at);
    columns += static_cast<std::size_t>(ColumnsOf(next.value));
    if (columns > width && at > 0) break;
    at += next.size;
  }
  return safeText.substr(0, at);
}

}  // namespace velhost
