#include "host/velhost/collect.h"

#include <unistd.h>

#include <cmath>
#include <iostream>
#include <memory>

#include "host/output/capturefiles.h"
#include "host/output/outputfile.h"
#include "host/output/progress.h"
#include "host/output/writers.h"
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

}  // namespace

EExitStatus Collect(const TCommandLine& commandLine, const TInstallation& installation) {
  (void)commandLine;
  (void)installation;
  return EExitStatus::kComplete;
}

}  // namespace NKROVEL20
