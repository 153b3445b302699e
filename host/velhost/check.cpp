// velhost check: reports the errors and warnings in a schema.
#include "host/base/textsink.h"

#include <string>
#include <vector>
#include "host/base/unsafetext.h"
#include "host/schema/schemacheck.h"
#include "host/velhost/schemaloading.h"
#include "host/velhost/standardstreams.h"
#include "host/velhost/verbs.h"

namespace velhost {

EExitStatus CheckSchemaFiles(const TCommandLine& commandLine, const TInstallation& installation) {
  const auto& mofs = commandLine.check.mofs;
  const std::vector<std::string> paths = mofs.empty() ? SchemaPaths(commandLine.common, installation) : mofs;
  const TStopSignal stop;
  TInputs inputs(stop);
  TInputReader reader(inputs, {"the schema", "check", EFileKind::kSchema}, paths);
  const TSchemaFindings findings = CheckSchema(paths, reader);
  TStringSink text;
  if (commandLine.check.json) {
    WriteFindingsAsJson(findings, text);
  } else {
    WriteFindingsAsText(findings, text);
  }
  WriteToStandardOutput(commandLine.check.json ? text.Text() : SafeLines(text.Text()));
  // Warnings count too: a schema passes only if it has no findings.
  return findings.findings.empty() ? EExitStatus::kComplete : EExitStatus::kBadData;
}

}  // namespace velhost
