// What the reader makes of an annotated case, against what its annotations say.
#pragma once

#include <string>
#include <vector>

#include "tests/schema/annotatedmof.h"
#include "tests/support/namespaces.h"

namespace tests {

/// "LINE: not reported: DIAGNOSTIC", "LINE: not annotated: DIAGNOSTIC" and the like, one for each difference; LINE is
/// that of the annotated file.
std::vector<std::string> Differences(const TAnnotatedCase& annotated);

}  // namespace tests
