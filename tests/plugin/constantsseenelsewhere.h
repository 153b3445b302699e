// The shared constants as seen by another source file.
#pragma once

#include <string>
#include <vector>

#include "tests/support/namespaces.h"

namespace tests::elsewhere {

/// Addresses of that file's 32 copies, in table order.
std::vector<const std::string*> Constants();

}  // namespace tests::elsewhere
