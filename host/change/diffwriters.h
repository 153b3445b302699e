// Differences in words, for people, and as JSON (result-diff.schema.json describes it).
#pragma once

#include "host/base/text.h"
#include "host/change/differences.h"
#include "host/output/writers.h"

namespace velhost {

/// What the differences mean for a program: 1 if there are any, 3 if there are none but something could not be
/// compared, else 0.
int StatusOf(const TDifferences& differences);

void WriteDifferencesAsText(const TDifferences& differences, ITextSink& sink, const TTableOptions& options);
void WriteDifferencesAsJson(const TDifferences& differences, ITextSink& sink);

/// "unread", "cut", "unknown-place", ...; empty for kNot.
const char* NameOf(EUncompared why);

}  // namespace velhost
