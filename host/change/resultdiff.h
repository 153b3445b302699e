// Compares two results.
#pragma once

#include "host/change/comparedside.h"
#include "host/change/differences.h"

namespace velhost {

/// What changed from one result to the other, each decoded with its own fields. Instances are compared in the order of
/// `after`; those that only `before` has come last. Throws THostError if a text has changed since it was checked.
TDifferences CompareResults(TComparedSide& before, TComparedSide& after);

}  // namespace velhost
