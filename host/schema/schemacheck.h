// The findings of "velhost check": errors and warnings, as text or as JSON; and those of a schema.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "host/base/hosterror.h"
#include "host/base/sourcereader.h"
#include "host/base/text.h"
#include "host/base/textdiagnostic.h"

namespace velhost {

struct TCheckFindings {
  /// In the order in which the files are checked.
  std::vector<TTextDiagnostic> findings;
  std::size_t errors = 0;    ///< all of them, including those not listed
  std::size_t warnings = 0;  ///< likewise

  void Add(TTextDiagnostic finding);
  void Add(TCheckFindings others);
};

/// Reads the schema and, if it has no errors, checks the collector's requirements. Those of a partly read schema
/// would mostly be reported as missing. The reader's findings come first, in order of file and place. Throws as
/// ReadSchema does.
TCheckFindings CheckSchema(const std::vector<std::string>& paths, ISourceReader& reader);

/// Writes each finding as FormatDiagnostic formats it, then "2 errors, 1 warning" or "no findings".
void WriteFindingsAsText(const TCheckFindings& findings, ITextSink& sink);

/// Writes one JSON object and a newline: {"kind":"schemacheck","format_version":1,"findings":[{"severity",
/// "file","line","column","message"}],"errors":n,"warnings":m}. Line and column are null in a finding about a whole
/// file or schema.
void WriteFindingsAsJson(const TCheckFindings& findings, ITextSink& sink);

}  // namespace velhost
