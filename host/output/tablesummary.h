// The summary at the end of the table.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "host/output/tablelayout.h"
#include "host/result/resultfacts.h"

namespace velhost {

/// The number of instances of each class, in the order of their first instances.
using TInstanceCounts = std::vector<std::pair<std::string, std::uint64_t>>;

/// Writes where the values come from, the number of instances of each class, the exchanges and how many failed, the
/// time taken, whether the result is complete, and why not.
void WriteTableSummary(TTableLayout& layout, const TResultHeader& header, const TResultSummary& summary,
                       const TInstanceCounts& counts);

}  // namespace velhost
