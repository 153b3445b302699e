// velhost show: prints results again, in any form.
#include <unistd.h>

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "host/base/hosterror.h"
#include "host/base/storedbytes.h"
#include "host/base/text.h"
#include "host/bmc/stopsignal.h"
#include "host/output/writers.h"
#include "host/readback/resultreader.h"
#include "host/readback/shownresult.h"
#include "host/velhost/collect/fileclash.h"
#include "host/velhost/collect/outputtarget.h"
#include "host/velhost/inputs.h"
#include "host/velhost/messages.h"
#include "host/velhost/pager.h"
#include "host/velhost/resultinput.h"
#include "host/velhost/schemaloading.h"
#include "host/velhost/verbs.h"

namespace velhost {

namespace {

constexpr std::size_t kDumpLinesOnTerminal = 64;

EOutputForm FormOf(const TShowOptions& options) {
  if (const auto form = FormByName(options.format)) return *form;
  const bool isShown = IsStandardOutput(options.output) && IsTerminal(STDOUT_FILENO);
  return isShown ? EOutputForm::kTable : EOutputForm::kJson;
}

bool NeedsSchema(EOutputForm form) { return form == EOutputForm::kMof || form == EOutputForm::kCimXml; }

class TShow {
 public:
  TShow(const TCommandLine& commandLine, const TInstallation& installation)
      : commandLine_(commandLine), installation_(installation), form_(FormOf(commandLine.show)), inputs_(stop_) {
    if (!NeedsSchema(form_) || commandLine.show.files.size() == 1) return;
    throw THostError(EFailure::kInvalidArgument,
                     "--format " + commandLine.show.format +
                         " takes one file, because its form holds one result\nSee \"velhost "
                         "show --help\".");
  }

  EExitStatus Run() {
    const std::vector<std::string>& files = commandLine_.show.files;
    TInputReader reader = ReaderOfResults(inputs_, "show", files);
    // Before the pager starts: a replay says things, too.
    std::vector<TStoredBytes> texts;
    for (const std::string& file : files) texts.push_back(OpenResult(file, commandLine_, installation_, reader));
    LoadItsSchema();
    RefuseClashWithInputs(commandLine_, inputs_.Files());
    TPager pager(commandLine_.common);
    TOutputTarget target(commandLine_.show.output, form_ == EOutputForm::kTable ? &pager : nullptr);
    const bool isArray = form_ == EOutputForm::kJson && files.size() > 1;
    for (std::size_t i = 0; i < files.size(); ++i) {
      if (isArray) target.Sink().Write(i == 0 ? "[\n" : ",\n");
      Show(files[i], std::move(texts[i]), reader, target.Sink());
    }
    if (isArray) target.Sink().Write("]\n");
    target.Finish();
    pager.Close();
    return EExitStatus::kComplete;
  }

 private:
  // A table is the same without a schema, except that what is missing comes last, and numbers are decimal.
  void LoadItsSchema() {
    if (NeedsSchema(form_)) schema_ = LoadSchema(commandLine_.common, installation_, inputs_);
    if (form_ != EOutputForm::kTable) return;
    try {
      schema_ = LoadSchema(commandLine_.common, installation_, inputs_);
    } catch (const THostError&) {
      if (!commandLine_.common.schema.empty()) throw;
    }
  }

  void Show(const std::string& file, TStoredBytes text, TInputReader& reader, ITextSink& sink) {
    TResultReader result(file, std::move(text), EReadDetail::kAll, &reader);
    if (const auto& warning = result.CutWarning()) SayDiagnostics({*warning});
    const bool isItsSchema = schema_ && schema_->facts.sha256 == result.Result().header.schema.sha256;
    ESchemaUse use = isItsSchema ? ESchemaUse::kIfFits : ESchemaUse::kNone;
    if (NeedsSchema(form_)) {
      use = ESchemaUse::kAlways;
      if (!isItsSchema) Say("warning: " + SafeText(file) + ": the result was collected with another schema");
    }
    TTableOptions table;
    table.width = TerminalWidth(STDOUT_FILENO);
    const bool isShown = IsStandardOutput(commandLine_.show.output);
    table.color = UseColor(commandLine_.common.color, isShown ? STDOUT_FILENO : kNoTerminal);
    if (isShown && IsTerminal(STDOUT_FILENO)) table.dumpLines = kDumpLinesOnTerminal;
    const auto writer = MakeWriter(form_, sink, table);
    TShownResult(result, schema_ ? schema_->cimNamespace.get() : nullptr, use).Write(*writer);
  }

  const TCommandLine& commandLine_;
  const TInstallation& installation_;
  EOutputForm form_;
  TStopSignal stop_;
  TInputs inputs_;
  std::optional<TLoadedSchema> schema_;
};

}  // namespace

EExitStatus Show(const TCommandLine& commandLine, const TInstallation& installation) {
  return TShow(commandLine, installation).Run();
}

}  // namespace velhost
