// A structure table built by hand: "table.Add(1, {...formatted area after the header...}, {"name"})".
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tests/support/namespaces.h"

namespace tests {

class TSmbiosTable {
 public:
  /// Adds a structure with the correct length byte and handle 0; `strings` become its string set.
  TSmbiosTable& Add(std::uint8_t type, const std::vector<std::uint8_t>& fields,
                    const std::vector<std::string>& strings = {}) {
    bytes_.push_back(type);
    bytes_.push_back(static_cast<std::uint8_t>(4 + fields.size()));
    bytes_.insert(bytes_.end(), {0, 0});
    bytes_.insert(bytes_.end(), fields.begin(), fields.end());
    for (const std::string& text : strings) {
      bytes_.insert(bytes_.end(), text.begin(), text.end());
      bytes_.push_back(0);
    }
    if (strings.empty()) bytes_.push_back(0);
    bytes_.push_back(0);
    return *this;
  }
  TSmbiosTable& AddRaw(const std::vector<std::uint8_t>& bytes) {
    bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
    return *this;
  }
  const std::vector<std::uint8_t>& Bytes() const { return bytes_; }
  std::string Text() const { return {bytes_.begin(), bytes_.end()}; }

 private:
  std::vector<std::uint8_t> bytes_;
};

}  // namespace tests
