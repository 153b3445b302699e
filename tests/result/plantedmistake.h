// Mistakes in a plan, to see whether a test notices them.
#pragma once

#include "host/profile/plan.h"
#include "tests/support/namespaces.h"

namespace tests {

enum class EPlanted {
  kNothing,
  kSkippedAddress,
  kSwappedRegisters,
  kSwappedTurns,
  kOtherChips,
  kOtherIndex,
  kOtherTurnNumber,
  kAnInstanceMore
};

/// Leaves a plan as it is if it has nothing that the mistake could be made in.
void Plant(TPlan& plan, EPlanted planted);

}  // namespace tests
