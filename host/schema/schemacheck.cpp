#include "host/schema/schemacheck.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <utility>

#include <nlohmann/json.hpp>

#include "host/base/text.h"
#include "host/schema/collectorneeds.h"
#include "host/schema/schemareader.h"

namespace velhost {

namespace {

using TJson = nlohmann::ordered_json;

TJson JsonOf(const TTextDiagnostic& finding) {
  const auto number = [](std::uint32_t value) { return value == 0 ? TJson() : TJson(value); };
  return {{"severity", finding.severity == EDiagnosticSeverity::kError ? "error" : "warning"},
          {"file", finding.location.file},
          {"line", number(finding.location.line)},
          {"column", number(finding.location.column)},
          {"message", finding.message}};
}

}  // namespace

void TCheckFindings::Add(TTextDiagnostic finding) {
  ++(finding.severity == EDiagnosticSeverity::kError ? errors : warnings);
  findings.push_back(std::move(finding));
}

void TCheckFindings::Add(TCheckFindings others) {
  errors += others.errors;
  warnings += others.warnings;
  std::move(others.findings.begin(), others.findings.end(), std::back_inserter(findings));
}

TCheckFindings CheckSchema(const std::vector<std::string>& paths, ISourceReader& reader) {
  TSchemaResult schema = ReadSchema(paths, reader);
  TCheckFindings result{std::move(schema.diagnostics), schema.errors, schema.warnings};
  if (result.errors > 0) return result;
  for (TTextDiagnostic& finding :
       CheckCollectorNeeds(*schema.cimNamespace, Listed(paths, ", "), schema.sources.get())) {
    result.Add(std::move(finding));
  }
  return result;
}

void WriteFindingsAsText(const TCheckFindings& findings, ITextSink& sink) {
  for (const TTextDiagnostic& finding : findings.findings) sink.Write(FormatDiagnostic(finding));
  if (findings.findings.empty()) {
    sink.Write("no findings\n");
  } else {
    sink.Write(Counted(findings.errors, "error") + ", " + Counted(findings.warnings, "warning") + "\n");
  }
}

void WriteFindingsAsJson(const TCheckFindings& findings, ITextSink& sink) {
  TJson list = TJson::array();
  for (const TTextDiagnostic& finding : findings.findings) list.push_back(JsonOf(finding));
  const TJson document = {{"kind", "schemacheck"},
                          {"format_version", 1},
                          {"findings", std::move(list)},
                          {"errors", findings.errors},
                          {"warnings", findings.warnings}};
  // File names need not be UTF-8.
  sink.Write(SafeJson(document.dump(-1, ' ', false, TJson::error_handler_t::replace)) + "\n");
}

}  // namespace velhost
