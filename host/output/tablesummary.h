// The summary at the end of the table.
#pragma once

#include "host/output/tablelayout.h"
#include "host/output/tablewriter.h"

namespace velhost {

/// Writes the number of instances of each class, the exchanges and how many failed, the time taken, and whether the
/// collection is complete.
void WriteTableSummary(TTableLayout& layout, const TResultSummary& summary, const TInstanceCounts& counts);

}  // namespace velhost
