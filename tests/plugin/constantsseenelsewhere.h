// The shared constants as seen by another source file.
#pragma once

#include <string>
#include <vector>

namespace torgareg::elsewhere {

/// Addresses of that file's 32 copies, in table order.
std::vector<const std::string*> Constants();

}  // namespace torgareg::elsewhere
