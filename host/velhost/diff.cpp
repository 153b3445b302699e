// velhost diff: prints what changed between two results.
#include <unistd.h>

#include <optional>
#include <string>

#include "host/base/text.h"
#include "host/bmc/stopsignal.h"
#include "host/change/comparedside.h"
#include "host/change/diffwriters.h"
#include "host/change/resultdiff.h"
#include "host/output/writers.h"
#include "host/velhost/inputs.h"
#include "host/velhost/messages.h"
#include "host/velhost/pager.h"
#include "host/velhost/resultinput.h"
#include "host/velhost/verbs.h"

namespace velhost {

EExitStatus Diff(const TCommandLine& commandLine, const TInstallation& installation) {
  const TDiffArguments& arguments = commandLine.diff;
  const TStopSignal stop;
  TInputs inputs(stop);
  TInputReader reader = ReaderOfResults(inputs, "diff", {arguments.before, arguments.after});
  const auto read = [&](const std::string& path) {
    return TComparedSide(path, OpenResult(path, commandLine, installation, reader), &reader);
  };
  TComparedSide before = read(arguments.before);
  TComparedSide after = read(arguments.after);
  for (TComparedSide* const side : {&before, &after}) {
    if (const auto& warning = side->Reader().CutWarning()) SayDiagnostics({*warning});
  }
  const TDifferences differences = CompareResults(before, after);
  TStringSink text;
  if (arguments.json) {
    WriteDifferencesAsJson(differences, text);
    WriteToStandardOutput(text.Text());
  } else {
    TTableOptions table;
    table.width = TerminalWidth(STDOUT_FILENO);
    table.color = UseColor(commandLine.common.color, STDOUT_FILENO);
    WriteDifferencesAsText(differences, text, table);
    WriteForPeople(commandLine.common, text.Text());
  }
  return static_cast<EExitStatus>(StatusOf(differences));
}

}  // namespace velhost
