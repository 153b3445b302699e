// Properties whose declarations are derived from input bytes, for the fuzz targets. Header-only, as those require.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "host/model/assertionfailure.h"
#include "tests/support/bytedrivenserviceprocessor.h"
#include "tests/support/classbuilder.h"
#include "tests/support/namespaces.h"

namespace tests {

/// Adds an array property whose shape comes from the input. Two bits for each of up to two `qualifiers` decide
/// whether it has its value (0 and 1), a text that is not a number (2), or is missing (3). The upper half of the byte
/// selects the property's type: 0 is uint8, and every type can be selected.
inline void AddShaped(TClassBuilder& to, const std::string& name, const TQualifiers& qualifiers, TByteStream& bytes) {
  unsigned int shape = bytes.Next();
  const auto type = static_cast<TType::ECIMType>(1 + ((shape >> 4U) + 1) % 15);
  TQualifiers chosen;
  for (const auto& [qualifier, value] : qualifiers) {
    const unsigned int choice = shape & 3U;
    shape >>= 2U;
    if (choice != 3) chosen.emplace_back(qualifier, choice == 2 ? NKROVEL20::TCIMValue("x") : value);
  }
  to.Property(type, name, true, chosen);
}

/// Collects, and passes each instance's properties to `check`. As in the product, a missing qualifier ends the
/// collection in an assertion.
template <typename TCollector, typename TCheck>
void CheckCollection(TCollector& collector, TCheck check) {
  std::vector<NKROVEL20::TPropertyMap> maps;
  try {
    maps = collector.getData();
  } catch (const velhost::TAssertionFailure&) {
    return;
  }
  for (const NKROVEL20::TPropertyMap& map : maps) check(map);
}

}  // namespace tests
