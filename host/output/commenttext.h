// What the formats `mof` and `cimxml` can only say in comments.
#pragma once

#include <string>
#include <vector>

#include "host/output/iresultwriter.h"

namespace velhost {

enum class ELabels { kShown, kLeftOut };

/// Safe lines about the run: first of all that its source is simulated, if so; run, source, labels, machine type and
/// collector, schema.
std::vector<std::string> HeaderComments(const TResultHeader& header, ELabels labels);

/// Safe lines about an instance: its key, and a line for each thing that is missing.
std::vector<std::string> InstanceComments(const TInstanceFacts& facts);

/// Safe lines about the end: status, reasons, what was not read, exchanges, time.
std::vector<std::string> SummaryComments(const TResultSummary& summary);

}  // namespace velhost
