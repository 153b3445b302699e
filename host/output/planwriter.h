// The plan of a collection as text: what "collect --dry-run" prints.
#pragma once

#include "host/base/text.h"
#include "host/output/writers.h"
#include "host/profile/plan.h"

namespace velhost {

/// One JSON object and a newline: {"kind":"plan",...}, as instance-collection.schema.json describes it.
void WritePlanAsJson(const TPlan& plan, ITextSink& sink);

/// For each planned instance its registers with their addresses or indexes, a line each; then the dot commands and the
/// capture files; finally how many of each there are.
void WritePlanAsTable(const TPlan& plan, ITextSink& sink, const TTableOptions& options);

}  // namespace velhost
