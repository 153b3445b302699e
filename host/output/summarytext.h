// The wording of summaries that several formats share.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "host/output/iinstancewriter.h"

namespace velhost {

/// Marks an instance that is not complete.
inline constexpr std::string_view kIncompleteMark = "incomplete: an exchange failed while it was collected";

/// Identical failed exchanges and their number.
struct TFailureGroup {
  TFailedExchange exchange;
  std::uint64_t count = 0;
};

/// Groups failures by class, node, kind and completion code. Classes, and the groups within each, are in the order of
/// their first failure.
std::vector<TFailureGroup> GroupFailures(const std::vector<TFailedExchange>& failures);

/// "node 0"; "sp 0" for a dot command, which addresses a service processor by its own number.
std::string NodeText(const TFailedExchange& exchange);

/// "0.012 s", "2 min 3.4 s", "1 h 2 min 3 s".
std::string ElapsedText(std::int64_t milliseconds);

/// "machine type 6203, Engineering Information Collector 1.0 (interface version 1.0)".
std::string HeaderText(const TCollectionHeader& header);

/// The summary as lines of safe text, for formats that can only put it in comments. The first line says whether the
/// collection is complete.
std::vector<std::string> SummaryLines(const TCollectionSummary& summary);

}  // namespace velhost
