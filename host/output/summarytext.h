// What the summaries of several forms say in words.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "host/output/iinstancewriter.h"

namespace velhost {

/// What an instance that is not complete is marked with.
inline constexpr std::string_view kIncompleteMark = "incomplete: an exchange failed while it was collected";

/// Failed exchanges that are alike, with their number.
struct TFailureGroup {
  TFailedExchange exchange;
  std::uint64_t count = 0;
};

/// Failures grouped by class, node, kind and completion code, each group and each class in the place
/// of its first failure.
std::vector<TFailureGroup> GroupFailures(const std::vector<TFailedExchange>& failures);

/// "node 0"; "sp 0" for a dot command, which goes to a service processor with a number of its own.
std::string NodeText(const TFailedExchange& exchange);

/// "0.012 s", "2 min 3.4 s", "1 h 2 min 3 s".
std::string ElapsedText(std::int64_t milliseconds);

/// "machine type 6203, Engineering Information Collector 1.0 (interface version 1.0)".
std::string HeaderText(const TCollectionHeader& header);

/// The summary as lines of safe text, for the comments of a form that has no other place for it. The
/// first says whether the collection is complete.
std::vector<std::string> SummaryLines(const TCollectionSummary& summary);

}  // namespace velhost
