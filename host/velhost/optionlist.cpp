// Prints the table of commands and options, or a template with its line "@OPTIONS@" replaced by the table:
//   optionlist [TEMPLATE]
// The build uses it to generate the shell completion. It is not installed.
#include <fstream>
#include <iostream>
#include <string>

#include "host/velhost/help.h"

int main(int argc, char** argv) {
  if (argc < 2) {
    std::cout << velhost::OptionList();
    return 0;
  }
  std::ifstream text(argv[1]);
  for (std::string line; std::getline(text, line);) {
    std::cout << (line == "@OPTIONS@" ? velhost::OptionList() : line + "\n");
  }
  return text.eof() && std::cout.flush() ? 0 : 1;
}
