// Assertions that must hold for every input of a fuzz target.
#pragma once

#include <cstdlib>

#include "tests/support/namespaces.h"

namespace tests {

/// Aborts if the condition does not hold, so that the fuzzer keeps the input.
inline void Require(bool condition) {
  if (!condition) std::abort();
}

}  // namespace tests
