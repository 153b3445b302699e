// The shared constants as another source file sees them.
#pragma once

#include <string>
#include <vector>

namespace torgareg::elsewhere {

/// Addresses of that file's 32 copies, in table order.
std::vector<const std::string*> Constants();

}  // namespace torgareg::elsewhere
