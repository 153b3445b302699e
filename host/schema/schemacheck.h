// "velhost check": what is wrong with a schema, as text or as JSON.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "host/base/hosterror.h"
#include "host/base/sourcereader.h"
#include "host/base/textdiagnostic.h"
#include "host/base/textsink.h"

namespace velhost {

struct TSchemaFindings {
  /// The reader's in order of file and place, then those about the collector.
  std::vector<TTextDiagnostic> findings;
  std::size_t errors = 0;    ///< all of them, also those that are not listed
  std::size_t warnings = 0;  ///< likewise
};

/// Reads the schema and, when it has no errors of its own, checks what the collector needs of it: of
/// a schema that is half read, half of the needs would be missing. Throws as ReadSchema does.
TSchemaFindings CheckSchema(const std::vector<std::string>& paths, ISourceReader& reader);

/// Each finding as FormatDiagnostic has it, then "2 errors, 1 warning" or "no findings".
void WriteFindingsAsText(const TSchemaFindings& findings, ITextSink& sink);

/// One JSON object and a newline: {"kind":"schemacheck","format_version":1,"findings":[{"severity",
/// "file","line","column","message"}],"errors":n,"warnings":m}. A finding about a whole file or
/// schema has null for line and column.
void WriteFindingsAsJson(const TSchemaFindings& findings, ITextSink& sink);

}  // namespace velhost
