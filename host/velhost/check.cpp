// velhost check: reports the errors and warnings in schemas, server files and recordings.
#include <string>
#include <vector>

#include "host/base/text.h"
#include "host/schema/schemacheck.h"
#include "host/velhost/checkedfiles.h"
#include "host/velhost/messages.h"
#include "host/velhost/schemaloading.h"
#include "host/velhost/verbs.h"

namespace velhost {

namespace {

TCheckFindings FindingsOf(const TCommandLine& commandLine, const TInstallation& installation) {
  const TStopSignal stop;
  TInputs inputs(stop);
  if (!commandLine.check.files.empty()) return CheckFiles(commandLine.check.files, inputs);
  const std::vector<std::string> paths = SchemaPaths(commandLine.common, installation);
  TInputReader reader(inputs, {"the schema", "--schema", EFileKind::kSchema}, paths);
  return CheckSchema(paths, reader);
}

}  // namespace

EExitStatus CheckSchemaFiles(const TCommandLine& commandLine, const TInstallation& installation) {
  const TCheckFindings findings = FindingsOf(commandLine, installation);
  TStringSink text;
  if (commandLine.check.json) {
    WriteFindingsAsJson(findings, text);
  } else {
    WriteFindingsAsText(findings, text);
  }
  WriteToStandardOutput(commandLine.check.json ? text.Text() : SafeLines(text.Text()));
  // Warnings count too: a file passes only if it has no findings.
  return findings.findings.empty() ? EExitStatus::kComplete : EExitStatus::kBadData;
}

}  // namespace velhost
