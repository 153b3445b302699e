// What the table ends with.
#pragma once

#include "host/output/tablelayout.h"
#include "host/output/tablewriter.h"

namespace velhost {

/// Instances of each class, exchanges with those that failed, the time taken, and whether the
/// collection is complete.
void WriteTableSummary(TTableLayout& layout, const TCollectionSummary& summary, const TInstanceCounts& counts);

}  // namespace velhost
