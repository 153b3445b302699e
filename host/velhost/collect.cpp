#include "host/velhost/collect.h"

#include <unistd.h>

#include <cmath>
#include <functional>
#include <iostream>
#include <memory>
#include <optional>

#include "host/output/capturefiles.h"
#include "host/output/outputfile.h"
#include "host/output/progress.h"
#include "host/output/writers.h"
#include "host/profile/collectorprofile.h"
#include "host/serviceprocessor/recording.h"
#include "host/serviceprocessor/serviceprocessorhub.h"
#include "host/velhost/collectionrun.h"
#include "host/velhost/schemaloading.h"
#include "host/velhost/serverconnection.h"
#include "host/velhost/signals.h"
#include "host/velhost/terminal.h"
#include "host/velhost/trace.h"

namespace NKROVEL20 {

namespace {

EOutputForm ChooseForm(const TCollectOptions& options) {
  if (const auto form = FormByName(options.format)) return *form;
  const bool shown = options.output.empty() && IsTerminal(STDOUT_FILENO);
  return shown ? EOutputForm::kTable : EOutputForm::kJson;
}

void WarnOfClassesBehindCapture(const std::vector<boost::shared_ptr<TCIMClass>>& classes) {
  const auto behind = ClassesBehindCapture(classes);
  if (behind.empty()) return;
  std::string text = "velhost: warning: the collector ends a request at " +
                     std::string(CollectorProfile::kCaptureClass) + "; not collected in a single request:";
  for (const std::string& name : behind) text += " " + name;
  std::cerr << text << "\n";
}

void SetDeadline(TStopSignal& stop, const TCollectOptions& options) {
  if (!options.timeoutSeconds) return;
  const auto limit = std::chrono::milliseconds(static_cast<std::int64_t>(std::ceil(*options.timeoutSeconds * 1000)));
  stop.SetDeadline(TStopSignal::TClock::now() + limit);
}

// Installs what stands behind the contract's static operations, for as long as it lives.
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

// Standard output, or a file that appears at the end, whole.
class TTarget {
 public:
  explicit TTarget(const std::string& path) {
    if (path.empty()) {
      standard_ = std::make_unique<TDescriptorSink>(STDOUT_FILENO, "standard output");
    } else {
      file_ = std::make_unique<TOutputFile>(path);
    }
  }
  ITextSink& Sink() { return file_ ? static_cast<ITextSink&>(*file_) : *standard_; }
  void Finish() {
    if (file_) {
      file_->Commit();
    } else {
      standard_->Flush();
    }
  }

 private:
  std::unique_ptr<TDescriptorSink> standard_;
  std::unique_ptr<TOutputFile> file_;
};

// What --record asks for; nothing without it.
class TRecording {
 public:
  TRecording(const std::string& path, IServiceProcessor& serviceProcessor, IHostEnvironment& environment)
      : plain_(environment) {
    if (path.empty()) return;
    file_.emplace(path);
    recorder_.emplace(*file_, TRecordingHeader{environment.MachineType(), TSystemEnvironment().LocalTime().ToIso8601(),
                                               ProcessUtcOffsetMinutes(), Discover(serviceProcessor)});
    recorded_.emplace(environment, *recorder_);
  }
  IExchangeObserver* Observer() { return recorder_ ? &*recorder_ : nullptr; }
  IHostEnvironment& Environment() { return recorded_ ? static_cast<IHostEnvironment&>(*recorded_) : plain_; }
  void Finish() const {
    if (recorder_ && recorder_->Failure()) throw THostError(*recorder_->Failure());
  }

 private:
  IHostEnvironment& plain_;
  std::optional<TRecordingFile> file_;
  std::optional<TRecorder> recorder_;
  std::optional<TRecordingEnvironment> recorded_;
};

class TProgress : public IRequestObserver {
 public:
  explicit TProgress(TProgressLine& line) : line_(line) {}
  void OnRequest(std::size_t index, std::size_t count, const std::string& name) override {
    line_.BeginClass(index + 1, count, name);
  }

 private:
  TProgressLine& line_;
};

bool WantsProgressLine(const TCommandLine& commandLine) {
  const EWhen when = commandLine.collect.progress;
  if (when != EWhen::kAuto) return when == EWhen::kAlways;
  // With a trace on standard error the line would be redrawn between all of its lines.
  return IsTerminal(STDERR_FILENO) && commandLine.common.verbosity == 0;
}

// One collection: everything that lives as long as it does, in the order in which it is needed.
class TCollection {
 public:
  TCollection(const TCommandLine& commandLine, const TInstallation& installation)
      : options_(commandLine.collect),
        common_(commandLine.common),
        installation_(installation),
        showProgress_(WantsProgressLine(commandLine)),
        guard_(stop_),
        namespace_(LoadSchema(common_, installation)) {
    SetDeadline(stop_, options_);
    // A class that is not there ends the command before anything is opened or sent.
    ChooseClasses(*namespace_, options_.classes, "");
    connection_ = ConnectServer(common_, installation, stop_);
    environment_.emplace(connection_->Environment(), common_.machineType);
    namespace_->SetMachineType(environment_->MachineType());
    classes_ = ChooseClasses(*namespace_, options_.classes, environment_->MachineType());
    if (!options_.captureDir.empty()) captures_.emplace(options_.captureDir);
    if (options_.singleRequest) WarnOfClassesBehindCapture(classes_);
  }

  EExitStatus Run() {
    TTarget target(options_.output);
    const EOutputForm form = ChooseForm(options_);
    const TTableOptions table = {TerminalWidth(STDOUT_FILENO),
                                 options_.output.empty() && UseColor(common_.color, STDOUT_FILENO)};
    const auto writer = MakeWriter(form, target.Sink(), table);
    const TCollectionSummary summary = Collect(*writer, form == EOutputForm::kJsonl);
    target.Finish();
    // Only now: a trace or recording that failed must not take what was collected with it.
    finish_();
    connection_->CheckAfterwards();
    return summary.partial ? EExitStatus::kPartial : EExitStatus::kComplete;
  }

 private:
  TCollectionSummary Collect(IInstanceWriter& writer, bool writeAtCommit) {
    const auto trace = std::make_shared<TTrace>(common_);
    TSupervisedServiceProcessor supervised(connection_->ServiceProcessor());
    TExchangeLedger ledger;
    supervised.AddObserver(ledger);
    const auto recording =
        std::make_shared<TRecording>(options_.record, connection_->ServiceProcessor(), *environment_);
    if (recording->Observer() != nullptr) supervised.AddObserver(*recording->Observer());
    std::optional<TProgressLine> line;
    std::optional<TProgress> progress;
    if (showProgress_) {
      line.emplace(TProgressTarget::StandardError([] { return TerminalWidth(STDERR_FILENO); }));
      supervised.AddObserver(*line);
      progress.emplace(*line);
    }
    const TInstalledServices services(supervised, stop_, recording->Environment());
    TCollectionRun run({PluginPath(), environment_->MachineType(), options_.singleRequest, writeAtCommit}, namespace_,
                       writer, ledger, stop_);
    if (progress) run.SetRequestObserver(*progress);
    run.SetLossQuery([this] { return connection_->WasLost(); });
    if (captures_) run.SetInstanceCallback([this](const auto& instance) { captures_->Write(*instance); });
    TCollectionSummary summary = run.Run(classes_);
    finish_ = [trace, recording] {
      trace->Finish();
      recording->Finish();
    };
    return summary;
  }

  std::string PluginPath() const { return common_.plugin.empty() ? installation_.Plugin() : common_.plugin; }

  const TCollectOptions& options_;
  const TCommonOptions& common_;
  const TInstallation& installation_;
  bool showProgress_;
  TStopSignal stop_;
  TSignalGuard guard_;
  boost::shared_ptr<TNamespace> namespace_;
  std::unique_ptr<IServerConnection> connection_;
  std::optional<TSessionEnvironment> environment_;
  std::vector<boost::shared_ptr<TCIMClass>> classes_;
  std::optional<TCaptureFolder> captures_;
  std::function<void()> finish_;  // reports what went wrong beside the output
};

}  // namespace

EExitStatus Collect(const TCommandLine& commandLine, const TInstallation& installation) {
  return TCollection(commandLine, installation).Run();
}

}  // namespace NKROVEL20
