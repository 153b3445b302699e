// Compares what the reader makes of an annotated case with its annotations.
#pragma once

#include <string>
#include <vector>

#include "tests/schema/annotatedmof.h"
#include "tests/support/namespaces.h"

namespace tests {

/// One text for each difference, such as "LINE: not reported: DIAGNOSTIC" or "LINE: not annotated: DIAGNOSTIC". LINE
/// is that of the annotated file.
std::vector<std::string> Differences(const TAnnotatedCase& annotated);

}  // namespace tests
