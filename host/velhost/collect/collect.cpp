// velhost collect: one collection from start to finish.
#include <unistd.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/bmc/serviceprocessorhub.h"
#include "host/bmc/sizelimit.h"
#include "host/bmc/supervision.h"
#include "host/output/capturefiles.h"
#include "host/output/progress.h"
#include "host/output/writers.h"
#include "host/profile/collectorprofile.h"
#include "host/velhost/classchoice.h"
#include "host/velhost/collect/collectionrun.h"
#include "host/velhost/collect/fileclash.h"
#include "host/velhost/collect/outputtarget.h"
#include "host/velhost/collect/runrecording.h"
#include "host/velhost/messages.h"
#include "host/velhost/schemaloading.h"
#include "host/velhost/serverconnection.h"
#include "host/velhost/signals.h"
#include "host/velhost/standardstreams.h"
#include "host/velhost/trace.h"
#include "host/velhost/verbs.h"

namespace velhost {

namespace {

EOutputForm ChooseForm(const TCollectOptions& options) {
  if (const auto form = FormByName(options.format)) return *form;
  const bool shown = IsStandardOutput(options.output) && IsTerminal(STDOUT_FILENO);
  return shown ? EOutputForm::kTable : EOutputForm::kJson;
}

void WarnOfClassesBehindCapture(const std::vector<boost::shared_ptr<TCIMClass>>& classes) {
  const auto behind = ClassesBehindCapture(classes);
  if (behind.empty()) return;
  std::string text = "warning: the collector ends a request at " + std::string(CollectorProfile::kCaptureClass) +
                     "; not collected in a single request:";
  for (const std::string& name : behind) text += " " + name;
  Say(text);
}

// Called before anything is read, because the deadline applies to the whole run.
TStopSignal& StopWithDeadline(TStopSignal& stop, const TCollectOptions& options) {
  if (!options.timeoutSeconds) return stop;
  const auto limit = std::chrono::milliseconds(static_cast<std::int64_t>(std::ceil(*options.timeoutSeconds * 1000)));
  stop.SetDeadline(TStopSignal::TClock::now() + limit);
  return stop;
}

// Says why the status is not that of a complete collection. If the instances go to a file, the user would not see the
// reason otherwise.
void SayWhyPartial(const TResultSummary& summary) {
  std::size_t untouched = 0;
  for (const TReason& reason : summary.reasons) {
    if (reason.code == EReason::kNotCollected) {
      ++untouched;
    } else if (!reason.className.empty()) {
      Say(reason.className + ": " + reason.message);
    }
  }
  std::string text = "partial: " + summary.message;
  if (untouched > 0)
    text += "; " + std::to_string(untouched) + (untouched == 1 ? " class" : " classes") + " not collected";
  Say(text);
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
  explicit TShownProgress(TSupervisedServiceProcessor& serviceProcessor)
      : line_(TProgressTarget::StandardError([] { return TerminalWidth(STDERR_FILENO); })),
        hook_([this] { line_.Clear(); }) {
    serviceProcessor.AddObserver(line_);
  }
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
  TCollection(const TCommandLine& commandLine, const TInstallation& installation)
      : options_(commandLine.collect),
        common_(commandLine.common),
        installation_(installation),
        showProgress_(WantsProgressLine(commandLine)),
        guard_(StopWithDeadline(stop_, options_)),
        inputs_(stop_),
        schema_(LoadSchema(common_, installation, inputs_)),
        namespace_(schema_.cimNamespace) {
    // An unknown class ends the command before anything is opened or sent.
    CheckClassNames(*namespace_, options_.classes);
    connection_ = ConnectServer(common_, installation, inputs_, *namespace_);
    environment_.emplace(connection_->Environment(), common_.machineType);
    namespace_->SetMachineType(environment_->MachineType());
    const TDiscovery discovery = connection_->ServiceProcessor().Discover();
    for (const TAskedClass& asked :
         ChooseClasses(*namespace_, options_.classes, environment_->MachineType(), PlanServerOf(discovery))) {
      classes_.push_back(asked.cimClass);
    }
    RefuseTooLarge(*namespace_, classes_, environment_->MachineType(), options_.singleRequest,
                   discovery.serviceProcessors);
    const std::string unserved = MachineTypeWarning(*namespace_, environment_->MachineType());
    if (!unserved.empty()) Say("warning: " + unserved);
    for (const std::string& text : UnservedTexts(*namespace_, classes_, environment_->MachineType())) {
      Say("warning: " + text);
    }
    if (options_.singleRequest) WarnOfClassesBehindCapture(classes_);
  }

  /// Throws THostError (kInvalidArgument) if an output would overwrite a file that was read.
  void RefuseOverwriting(const TCommandLine& commandLine) const { RefuseClashWithInputs(commandLine, inputs_.Files()); }

  EExitStatus Run() {
    TTrace trace(common_);
    TSupervisedServiceProcessor supervised(connection_->ServiceProcessor());
    TExchangeLedger ledger;
    supervised.AddObserver(ledger);
    TRunRecording recording(options_.record, RecordedRun(), connection_->ServiceProcessor(), *environment_);
    if (recording.Observer() != nullptr) supervised.AddObserver(*recording.Observer());
    const EOutputForm form = ChooseForm(options_);
    TResultSummary summary;
    {
      std::optional<TShownProgress> progress;
      if (showProgress_) progress.emplace(supervised);
      TSizeLimit sizeLimit(supervised);
      const TInstalledServices services(sizeLimit, stop_, recording.Environment());
      TCollectionRun run({environment_->MachineType(), options_.singleRequest}, namespace_, ledger, stop_);
      // Before any output is opened: an existing file must survive a plugin that cannot be loaded.
      run.Load(common_.plugin.empty() ? installation_.Plugin() : common_.plugin);
      TOutputTarget target(options_.output);
      OpenFiles(trace, recording);
      run.SetSizeLimit(sizeLimit);
      if (progress) {
        run.SetRequestObserver(*progress);
        target.SetProgressLine(&progress->Line());
      }
      summary = Collect(run, target, form);
      target.Finish();
      if (run.FailureToUnload()) throw THostError(*run.FailureToUnload());
    }
    const bool isPartial = summary.status == EResultStatus::kPartial;
    const bool mismatch = !connection_->Mismatch().empty();
    if (isPartial && !mismatch) SayWhyPartial(summary);
    // Reported last: a failed trace or recording must not cost the user what was collected.
    trace.Finish();
    recording.Finish();
    connection_->CheckAfterwards();
    return isPartial ? EExitStatus::kPartial : EExitStatus::kComplete;
  }

 private:
  TRecordedRun RecordedRun() const {
    const TServerFacts facts = connection_->Facts();
    TRecordedRun run;
    run.source.sp = common_.serviceProcessors;
    if (run.source.sp.empty()) run.source.sp = {"sim"};
    run.source.isSimulated = facts.isSimulated;
    run.source.recorded = facts.recorded;
    run.source.serialNumber = facts.serialNumber;
    run.source.uuid = facts.uuid;
    for (const auto& cimClass : classes_) run.classes.push_back(cimClass->Name());
    run.singleRequest = options_.singleRequest;
    return run;
  }
  void OpenFiles(TTrace& trace, TRunRecording& recording) {
    if (!options_.captureDir.empty()) captures_.emplace(options_.captureDir);
    trace.OpenFile();
    recording.OpenFile();
  }

  TResultSummary Collect(TCollectionRun& run, TOutputTarget& target, EOutputForm form) {
    const TTableOptions table = {TerminalWidth(STDOUT_FILENO),
                                 IsStandardOutput(options_.output) && UseColor(common_.color, STDOUT_FILENO)};
    const auto writer = MakeWriter(form, target.Sink(), table);
    run.SetLossQuery([this] { return connection_->WasLost(); });
    run.SetMismatchQuery([this] { return connection_->Mismatch(); });
    if (captures_) run.SetInstanceCallback([this](const auto& instance) { captures_->Write(*instance, false); });
    return run.Run(classes_, *writer);
  }

  const TCollectOptions& options_;
  const TCommonOptions& common_;
  const TInstallation& installation_;
  bool showProgress_;
  TStopSignal stop_;
  TSignalGuard guard_;
  TInputs inputs_;
  TLoadedSchema schema_;
  boost::shared_ptr<TNamespace> namespace_;
  std::unique_ptr<IServerConnection> connection_;
  std::optional<TSessionEnvironment> environment_;
  std::vector<boost::shared_ptr<TCIMClass>> classes_;
  std::optional<TCaptureFolder> captures_;
};

}  // namespace

EExitStatus Collect(const TCommandLine& commandLine, const TInstallation& installation) {
  RefuseClashingFiles(commandLine, installation);
  TCollection collection(commandLine, installation);
  collection.RefuseOverwriting(commandLine);
  return collection.Run();
}

}  // namespace velhost
