// What changed between two deliveries of the same instance.
#pragma once

#include "host/change/differences.h"
#include "host/readback/readresult.h"

namespace velhost {

/// Adds what changed in registers, counters, files, and in what is missing, and what cannot be compared.
void CompareInstances(const TReadInstance& before, const TReadInstance& after, TDifferences& differences);

}  // namespace velhost
