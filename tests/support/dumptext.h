// The trace's decimal dumps, implemented independently for the tests.
#pragma once

#include <string>

#include "tests/support/namespaces.h"
#include "tests/support/scriptedserviceprocessor.h"

namespace tests {

/// The first `count` bytes, padded with zeros, eight per line, between two newlines.
inline std::string DumpText(const TBytes& bytes, std::size_t count) {
  std::string text;
  for (std::size_t i = 0; i < count; ++i) {
    if (i % 8 == 0) text += "\n";
    text += std::to_string(i < bytes.size() ? bytes[i] : 0) + " ";
  }
  return text + "\n";
}

}  // namespace tests
