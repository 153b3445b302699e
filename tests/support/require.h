// What a fuzz target knows to be true of every input.
#pragma once

#include <cstdlib>

namespace testsupport {

/// Aborts where the condition does not hold: the fuzzer keeps the input.
inline void Require(bool condition) {
  if (!condition) std::abort();
}

}  // namespace testsupport
