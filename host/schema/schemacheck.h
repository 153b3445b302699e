// "velhost check": the errors and warnings in a schema, as text or as JSON.
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
  /// The reader's findings in order of file and place, then those about the collector.
  std::vector<TTextDiagnostic> findings;
  std::size_t errors = 0;    ///< all of them, including those not listed
  std::size_t warnings = 0;  ///< likewise
};

/// Reads the schema and, if it has no errors, checks the collector's requirements. Those of a partly read schema
/// would mostly be reported as missing. Throws as ReadSchema does.
TSchemaFindings CheckSchema(const std::vector<std::string>& paths, ISourceReader& reader);

/// Writes each finding as FormatDiagnostic formats it, then "2 errors, 1 warning" or "no findings".
void WriteFindingsAsText(const TSchemaFindings& findings, ITextSink& sink);

/// Writes one JSON object and a newline: {"kind":"schemacheck","format_version":1,"findings":[{"severity",
/// "file","line","column","message"}],"errors":n,"warnings":m}. Line and column are null in a finding about a whole
/// file or schema.
void WriteFindingsAsJson(const TSchemaFindings& findings, ITextSink& sink);

}  // namespace velhost
