// What the table ends with.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/output/tablelayout.h"
#include "host/output/tablewriter.h"

namespace NKROVEL20 {

/// Failed exchanges that are alike, with their number.
struct TFailureGroup {
  TFailedExchange exchange;
  std::uint64_t count = 0;
};

/// Failures grouped by class, node, kind and completion code, each group and each class in the place
/// of its first failure.
std::vector<TFailureGroup> GroupFailures(const std::vector<TFailedExchange>& failures);

/// "0.012 s", "2 min 3.4 s", "1 h 2 min 3 s".
std::string ElapsedText(std::int64_t milliseconds);

/// Instances of each class, exchanges with those that failed, the time taken, and whether the
/// collection is complete.
void WriteTableSummary(TTableLayout& layout, const TCollectionSummary& summary, const TInstanceCounts& counts);

}  // namespace NKROVEL20
