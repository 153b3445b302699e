// What a fuzz target knows to be true of every input.
#pragma once

#include <cstdlib>

#include "tests/support/namespaces.h"

namespace tests {

/// Aborts where the condition does not hold: the fuzzer keeps the input.
inline void Require(bool condition) {
  if (!condition) std::abort();
}

}  // namespace tests
