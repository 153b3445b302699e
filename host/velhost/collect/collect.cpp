// velhost collect: one collection from start to finish.
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/base/text.h"
#include "host/bmc/iserviceprocessor.h"
#include "host/bmc/supervision.h"
#include "host/output/capturefiles.h"
#include "host/output/fieldtext.h"
#include "host/output/progress.h"
#include "host/output/writers.h"
#include "host/profile/collectorprofile.h"
#include "host/velhost/classchoice.h"
#include "host/velhost/collect/baseline.h"
#include "host/velhost/collect/collectionrun.h"
#include "host/velhost/collect/fileclash.h"
#include "host/velhost/collect/outputtarget.h"
#include "host/velhost/collect/requests.h"
#include "host/velhost/collect/runfacts.h"
#include "host/velhost/collect/runrecording.h"
#include "host/velhost/messages.h"
#include "host/velhost/pager.h"
#include "host/velhost/recordedconnection.h"
#include "host/velhost/schemaloading.h"
#include "host/velhost/serverconnection.h"
#include "host/velhost/signals.h"
#include "host/velhost/trace.h"
#include "host/velhost/verbs.h"

namespace velhost {

namespace {

constexpr std::size_t kDumpLinesOnTerminal = 64;

EOutputForm ChooseForm(const TCollectOptions& options) {
  if (const auto form = FormByName(options.format)) return *form;
  const bool shown = IsStandardOutput(options.output) && IsTerminal(STDOUT_FILENO);
  return shown ? EOutputForm::kTable : EOutputForm::kJson;
}

// Called before anything is read, because the deadline applies to the whole run.
TStopSignal& StopWithDeadline(TStopSignal& stop, const TCollectOptions& options) {
  if (!options.timeoutSeconds) return stop;
  const auto limit = std::chrono::milliseconds(static_cast<std::int64_t>(std::ceil(*options.timeoutSeconds * 1000)));
  stop.SetDeadline(TStopSignal::TClock::now() + limit);
  return stop;
}

// "plan: 8 requests, 78 register reads, 6 dot commands"
std::string PlanText(const TPlan& plan) {
  return "plan: " + Counted(plan.requests.size(), "request") + ", " + Counted(plan.RegisterReads(), "register read") +
         ", " + Counted(plan.DotCommands(), "dot command");
}

void Warn(const std::vector<std::string>& texts) {
  for (const std::string& text : texts) Say("warning: " + text);
}

// Installs the implementation of the contract's static operations while it lives.
class TInstalledServices {
 public:
  TInstalledServices(IServiceProcessor& serviceProcessor, const TStopSignal& stop, IHostEnvironment& environment) {
    TServiceProcessorHub::Install(&serviceProcessor, &stop);
    THostServices::SetEnvironment(&environment);
  }
  ~TInstalledServices() {
    TServiceProcessorHub::Install(nullptr, nullptr);
    THostServices::SetEnvironment(nullptr);
  }
  TInstalledServices(const TInstalledServices&) = delete;
  TInstalledServices& operator=(const TInstalledServices&) = delete;
};

// The progress line, fed by the exchanges and requests of a run.
class TShownProgress : public IRequestObserver {
 public:
  TShownProgress()
      : line_(TProgressTarget::StandardError([] { return TerminalWidth(STDERR_FILENO); })),
        hook_([this] { line_.Clear(); }) {}
  TProgressLine& Line() { return line_; }
  void OnRequest(std::size_t index, std::size_t count, const std::string& name) override {
    line_.BeginClass(index + 1, count, name);
  }

 private:
  TProgressLine line_;
  TMessageHook hook_;
};

bool WantsProgressLine(const TCommandLine& commandLine) {
  const EWhen when = commandLine.collect.progress;
  if (when != EWhen::kAuto) return when == EWhen::kAlways;
  // With a trace on standard error the line would be redrawn after every trace line.
  return IsTerminal(STDERR_FILENO) && commandLine.common.verbosity == 0;
}

// One collection. Its members are everything with the same lifetime, in the order in which they are needed.
class TCollection {
 public:
  /// The pager is not owned.
  TCollection(const TCommandLine& commandLine, const TInstallation& installation, TPager& pager)
      : run_(commandLine.collect.labels),
        options_(commandLine.collect),
        common_(commandLine.common),
        installation_(installation),
        pager_(pager),
        showProgress_(WantsProgressLine(commandLine)),
        guard_(StopWithDeadline(stop_, options_)),
        inputs_(stop_),
        schema_(LoadSchema(common_, installation, inputs_)),
        namespace_(schema_.cimNamespace) {
    // An unknown class ends the command before anything is opened or sent.
    CheckClassNames(*namespace_, options_.classes);
    baseline_.emplace(options_.baseline, inputs_);
    connection_ = ConnectServer(common_, installation, inputs_, *namespace_);
    environment_.emplace(connection_->Environment(), common_.machineType);
    namespace_->SetMachineType(environment_->MachineType());
    source_ = SourceFactsOf(common_, connection_->Facts());
    Warn(AnotherSchemaWarnings(connection_->Recording(), schema_.facts.sha256));
    server_ = PlanServerOf(connection_->ServiceProcessor().Discover());
    collected_ =
        ClassesToCollect(*namespace_, options_, environment_->MachineType(), server_, connection_->Recording());
    RefuseTooLarge(*namespace_, collected_, environment_->MachineType(), server_.serviceProcessors);
    const std::string unserved = MachineTypeWarning(*namespace_, environment_->MachineType());
    if (!unserved.empty()) Say("warning: " + unserved);
  }

  ~TCollection() { pager_.SetLeftCallback({}); }
  TCollection(const TCollection&) = delete;
  TCollection& operator=(const TCollection&) = delete;

  /// Throws THostError (kInvalidArgument) if an output would overwrite a file that was read.
  void RefuseOverwriting(const TCommandLine& commandLine) const { RefuseClashWithInputs(commandLine, inputs_.Files()); }

  EExitStatus Run() {
    TTrace trace(common_);
    TSupervisedServiceProcessor supervised(connection_->ServiceProcessor());
    TRunRecording recording(options_.record, RecordedRun(), connection_->ServiceProcessor(), *environment_);
    if (recording.Observer() != nullptr) supervised.AddObserver(*recording.Observer());
    TSizeLimit sizeLimit(supervised);
    const TInstalledServices services(sizeLimit, stop_, recording.Environment());
    std::optional<TShownProgress> progress;
    TCollectionRun run(namespace_, stop_);
    // Before any output is opened: an existing file must survive a plugin that cannot be loaded.
    run.Load(common_.plugin.empty() ? installation_.Plugin() : common_.plugin);
    const TPlan& plan = run.MakePlan(server_, RequestsOf(collected_), supervised, sizeLimit);
    Warn(PlanWarnings(plan));
    SayMeaningWarnings(plan, schema_);
    SayDetail(PlanText(plan));
    const EOutputForm form = ChooseForm(options_);
    TOutputTarget target(options_.output, form == EOutputForm::kTable ? &pager_ : nullptr);
    pager_.SetLeftCallback([this] { stop_.RequestStop(); });
    OpenFiles(trace, recording);
    if (showProgress_) {
      progress.emplace();
      progress->Line().SetPlanned(plan.Total(), [&run] { return run.PlannedMade(); });
      supervised.AddObserver(progress->Line());
      run.SetRequestObserver(*progress);
      target.SetProgressLine(&progress->Line());
    }
    const auto writer = MakeWriter(form, target.Sink(), TableOptions());
    Collect(run, *writer);
    std::vector<THostError> failures = FailuresAfter(run, trace, recording);
    const TResultSummary summary = Close(run, failures);
    EndDocument(*writer, target, summary, failures);
    progress.reset();
    Report(summary, failures);
    return static_cast<EExitStatus>(summary.exitStatus);
  }

 private:
  TRecordedRun RecordedRun() const {
    TRecordedRun run;
    run.source = {source_.sp, source_.target, source_.simulated, source_.recorded, source_.serial, source_.uuid};
    for (const TAskedClass& asked : collected_.classes) run.classes.push_back(asked.cimClass->Name());
    run.singleRequest = collected_.singleRequest;
    run.schemaSha256 = schema_.facts.sha256;
    return run;
  }

  void OpenFiles(TTrace& trace, TRunRecording& recording) {
    if (!options_.captureDir.empty()) captures_.emplace(options_.captureDir);
    trace.OpenFile();
    recording.OpenFile();
  }

  TTableOptions TableOptions() const {
    TTableOptions table;
    table.width = TerminalWidth(STDOUT_FILENO);
    const bool isShown = IsStandardOutput(options_.output);
    table.color = UseColor(common_.color, isShown ? STDOUT_FILENO : kNoTerminal);
    if (isShown && IsTerminal(STDOUT_FILENO)) table.dumpLines = kDumpLinesOnTerminal;
    return table;
  }

  void Collect(TCollectionRun& run, IResultWriter& writer) {
    run.SetLossQuery([this] { return connection_->WasLost(); });
    if (captures_) {
      run.SetInstanceCallback(
          [this](const TInstance& instance, const TInstanceFacts& facts) { captures_->Write(instance, facts.isCut); });
    }
    writer.Begin(
        {run_.Facts(), source_, environment_->MachineType(), run.Plugin(), schema_.facts, options_.onlyFindings});
    run.Collect(writer);
  }

  // The command's own failures after everything was collected; the first counts most. They are found before the
  // document ends, because it tells the exit status.
  static std::vector<THostError> FailuresAfter(const TCollectionRun& run, TTrace& trace, TRunRecording& recording) {
    std::vector<THostError> failures;
    if (run.FailureToUnload()) failures.push_back(*run.FailureToUnload());
    const auto keep = [&failures](const auto& step) {
      try {
        step();
      } catch (const THostError& failure) {
        failures.push_back(failure);
      }
    };
    keep([&trace] { trace.Finish(); });
    keep([&recording] { recording.Finish(); });
    return failures;
  }

  TResultSummary Close(TCollectionRun& run, const std::vector<THostError>& failures) {
    std::optional<THostError> failure;
    const std::string mismatch = connection_->Mismatch();
    if (!mismatch.empty()) failure.emplace(EFailure::kMalformed, mismatch);
    // An output that cannot be written determines the exit status, but does not change what is known of the collection.
    const bool isDefect = !failures.empty() && failures.front().Kind() == EFailure::kDefect;
    if (!failures.empty() && (!failure || isDefect)) failure.emplace(failures.front());
    TResultSummary summary = run.Close(failure);
    baseline_->MarkKnown(summary.findings);
    if (!failures.empty()) failure.emplace(failures.front());
    const bool isComplete = summary.status == EResultStatus::kComplete;
    EExitStatus byResult = isComplete ? EExitStatus::kComplete : EExitStatus::kPartial;
    if (HasFailingFinding(summary)) byResult = EExitStatus::kFound;
    summary.exitStatus = static_cast<int>(failure ? StatusOf(failure->Kind()) : byResult);
    summary.elapsedMs = run_.ElapsedMs();
    return summary;
  }

  // Only a finding that is not masked and not known counts.
  bool HasFailingFinding(const TResultSummary& summary) const {
    return options_.failOn && std::any_of(summary.findings.begin(), summary.findings.end(), [&](const TFinding& one) {
             return !one.isMasked && !one.isKnown && one.severity >= *options_.failOn;
           });
  }

  static void EndDocument(IResultWriter& writer, TOutputTarget& target, const TResultSummary& summary,
                          std::vector<THostError>& failures) {
    try {
      writer.End(summary);
      target.Finish();
    } catch (const THostError& failure) {
      const bool isWorse = !failures.empty() && failures.front().Kind() == EFailure::kDefect;
      if (isWorse) return failures.push_back(failure);
      for (const THostError& other : failures) Say(other.what());
      throw;
    }
  }

  // Ends the command with the failure that counts most, and reports the others.
  void Report(const TResultSummary& summary, std::vector<THostError>& failures) {
    // If the instances go to a file, the user would not see otherwise what is missing.
    if (summary.status == EResultStatus::kPartial && !pager_.WasLeft()) Say("partial: " + summary.message);
    if (HasFailingFinding(summary) && !pager_.WasLeft()) Say("findings: " + CountsText(summary.findings));
    try {
      connection_->CheckAfterwards();
    } catch (const THostError& mismatch) {
      failures.push_back(mismatch);
    }
    if (failures.empty()) return;
    for (std::size_t i = 1; i < failures.size(); ++i) Say(failures[i].what());
    throw THostError(failures.front());
  }

  TStartedRun run_;
  const TCollectOptions& options_;
  const TCommonOptions& common_;
  const TInstallation& installation_;
  TPager& pager_;
  bool showProgress_;
  TStopSignal stop_;
  TSignalGuard guard_;
  TInputs inputs_;
  TLoadedSchema schema_;
  boost::shared_ptr<TNamespace> namespace_;
  std::optional<TBaseline> baseline_;
  std::unique_ptr<IServerConnection> connection_;
  std::optional<TSessionEnvironment> environment_;
  TSourceFacts source_;
  TPlanServer server_;
  TCollectedClasses collected_;
  std::optional<TCaptureFolder> captures_;
};

EExitStatus CollectOnto(TPager& pager, const TCommandLine& commandLine, const TInstallation& installation) {
  TCollection collection(commandLine, installation, pager);
  collection.RefuseOverwriting(commandLine);
  return collection.Run();
}

}  // namespace

EExitStatus Collect(const TCommandLine& commandLine, const TInstallation& installation) {
  if (commandLine.collect.dryRun) return DryRun(commandLine, installation);
  RefuseClashingFiles(commandLine, installation);
  TPager pager(commandLine.common);
  // The user may read for a long time, so everything else is closed first.
  const EExitStatus status = CollectOnto(pager, commandLine, installation);
  pager.Close();
  return status;
}

}  // namespace velhost
