#include "host/output/terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <charconv>
#include <cstdlib>
#include <string_view>

namespace NKROVEL20 {

bool IsTerminal(int descriptor) { return ::isatty(descriptor) == 1; }

int TerminalWidth(int descriptor) {
  winsize size{};
  if (::ioctl(descriptor, TIOCGWINSZ, &size) == 0 && size.ws_col > 0) return size.ws_col;
  const char* const variable = std::getenv("COLUMNS");
  const std::string_view text = variable != nullptr ? variable : "";
  int columns = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), columns);
  return result.ec == std::errc() && columns > 0 ? columns : 80;
}

}  // namespace NKROVEL20
