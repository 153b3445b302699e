#include "host/velhost/serverconnection.h"

#include <vector>

#include "host/base/hosterror.h"
#include "host/base/text.h"
#include "host/bmc/inband/inbandserviceprocessor.h"
#include "host/bmc/lan/lanspec.h"
#include "host/bmc/record/recording.h"
#include "host/bmc/record/replay.h"
#include "host/bmc/sim/faults.h"
#include "host/bmc/sim/serverfile.h"
#include "host/bmc/sim/simulatedserver.h"
#include "host/bmc/smbios/smbios.h"
#include "host/velhost/lanconnection.h"
#include "host/velhost/messages.h"
#include "host/velhost/optiontable.h"

namespace velhost {

namespace {

class TSimulatedConnection : public IServerConnection {
 public:
  TSimulatedConnection(const std::string& path, TInputs& inputs)
      : server_(Read(path, inputs)), faults_(server_, server_.Server().faults), environment_(server_.Server()) {}
  IServiceProcessor& ServiceProcessor() override { return faults_; }
  IHostEnvironment& Environment() override { return environment_; }
  TServerFacts Facts() const override { return {.isSimulated = true}; }

 private:
  static TServerFile Read(const std::string& path, TInputs& inputs) {
    TInputReader reader(inputs, {"the server file", "--sp", EFileKind::kServerFile}, {path});
    TServerFile server = ReadServerFile(path, reader);
    for (const std::string& file : server.dataFiles) inputs.Note("--sp", file);
    return server;
  }

  TSimulatedServer server_;
  TFaultInjector faults_;
  TSimulatedEnvironment environment_;
};

// The local server, which SMBIOS describes.
class TInbandConnection : public IServerConnection {
 public:
  explicit TInbandConnection(const std::vector<std::string>& devices)
      : smbios_(ReadSystem()), serviceProcessor_(OpenInband(devices, smbios_)), environment_(smbios_.machineType) {}
  IServiceProcessor& ServiceProcessor() override { return *serviceProcessor_; }
  IHostEnvironment& Environment() override { return environment_; }
  TServerFacts Facts() const override { return {.serialNumber = smbios_.facts.serialNumber, .uuid = smbios_.uuid}; }

 private:
  static TSystemSmbios ReadSystem() {
    TFileReader reader;
    return ReadSystemSmbios(reader);
  }

  TSystemSmbios smbios_;
  std::unique_ptr<IServiceProcessor> serviceProcessor_;
  TServerEnvironment environment_;
};

class TReplayConnection : public IServerConnection {
 public:
  TReplayConnection(const std::string& path, bool timing, TInputs& inputs) : replay_(Open(path, inputs)) {
    replay_->SetTiming(timing);
    if (replay_->HasHeader() && !replay_->Header().run) {
      Say("warning: " + SafeText(path) +
          ": a recording of version 1 does not tell whether its service processor was simulated");
    }
    ApplyUtcOffset(replay_->Header().utcOffsetMinutes);
  }
  IServiceProcessor& ServiceProcessor() override { return *replay_; }
  IHostEnvironment& Environment() override { return *replay_; }
  TServerFacts Facts() const override {
    const TRecordingHeader& header = replay_->Header();
    if (!header.run) return {.recorded = header.started};
    const TRecordedSource& source = header.run->source;
    return {source.isSimulated, header.started, source.serialNumber, source.uuid};
  }
  const TRecordingHeader* Recording() const override { return &replay_->Header(); }
  std::string Mismatch() const override {
    const std::string text = replay_->Mismatch().value_or(std::string());
    return text.substr(0, text.find('\n'));
  }
  void CheckAfterwards() override {
    if (const auto warning = replay_->CutWarning()) SayDiagnostics({*warning});
    if (!replay_->Mismatch()) return;
    Say(*replay_->Mismatch());
    throw THostError(EFailure::kMalformed,
                     "the collection differs from the recorded one: use the same schema, "
                     "classes and machine type");
  }

 private:
  static std::unique_ptr<TReplay> Open(const std::string& path, TInputs& inputs) {
    TInputReader reader(inputs, {"the recording", "--sp", EFileKind::kRecording}, {path});
    const TStoredBytes recording = reader.Open(path, kLargestRecording, kLargestRecordingOfAPipe);
    return std::make_unique<TReplay>(path, recording, &reader);
  }

  std::unique_ptr<TReplay> replay_;
};

[[noreturn]] void ThrowUnknown(const std::string& spec) {
  std::string forms;
  std::vector<std::string> schemes;
  for (const std::string& form : ServiceProcessorForms()) {
    forms += (forms.empty() ? "" : "|") + form;
    schemes.push_back(form.substr(0, form.find_first_of("[:")));
  }
  throw THostError(EFailure::kInvalidArgument, "--sp takes " + forms + ", not " + QuotedWord(spec) +
                                                   DidYouMean(SchemeOf(spec), schemes) + "\nSee \"velhost --help\".");
}

// The file of "sim:FILE" or "replay:FILE".
std::string FileOf(const std::string& spec) {
  std::string file = RestOf(spec);
  if (!file.empty()) return file;
  const std::string scheme = SchemeOf(spec);
  throw THostError(EFailure::kInvalidArgument,
                   "--sp " + scheme + " needs a file: --sp " + scheme + ":FILE\nSee \"velhost --help\".");
}

// Several specs are allowed only if all are inband: or all are lan:.
void CheckCombination(const std::vector<std::string>& specs) {
  const std::string scheme = SchemeOf(specs.front());
  if (scheme != "sim" && scheme != "replay" && scheme != "inband" && scheme != "lan") ThrowUnknown(specs.front());
  if (specs.size() == 1) return;
  for (const std::string& spec : specs) {
    if ((scheme != "inband" && scheme != "lan") || SchemeOf(spec) != scheme) {
      throw THostError(EFailure::kInvalidArgument,
                       "--sp " + SafeText(specs[0]) + " and --sp " + SafeText(specs[1]) +
                           " cannot be used together; only several inband: or several lan: can");
    }
  }
}

}  // namespace

std::vector<std::string> CheckedSpecs(const TCommonOptions& options) {
  const std::vector<std::string> specs =
      options.serviceProcessors.empty() ? std::vector<std::string>{"sim"} : options.serviceProcessors;
  // Checked before any message repeats a SPEC that contains a password.
  for (const std::string& spec : specs) {
    if (SchemeOf(spec) == "lan") ParseLanSpec(spec);
  }
  CheckCombination(specs);
  return specs;
}

std::unique_ptr<IServerConnection> ConnectServer(const TCommonOptions& options, const TInstallation& installation,
                                                 TInputs& inputs, const TNamespace& cimNamespace) {
  const std::vector<std::string> specs = CheckedSpecs(options);
  const std::string& first = specs.front();
  if (SchemeOf(first) == "inband") {
    std::vector<std::string> devices;
    for (const std::string& spec : specs) devices.push_back(ParseInbandSpec(spec));
    auto connection = std::make_unique<TInbandConnection>(devices);
    if (!options.machineType && connection->Environment().MachineType().empty()) {
      throw THostError(EFailure::kInvalidArgument,
                       "SMBIOS does not contain the machine type; give it with --machine-type NNNN");
    }
    return connection;
  }
  if (SchemeOf(first) == "lan") return ConnectLan(options, specs, installation, inputs, cimNamespace);
  if (SchemeOf(first) == "replay") {
    return std::make_unique<TReplayConnection>(FileOf(first), options.replayTiming, inputs);
  }
  const bool isDemo = first == "sim";
  const std::string path = isDemo ? installation.ServerFolder() + "/demo.toml" : installation.FindServer(FileOf(first));
  return std::make_unique<TSimulatedConnection>(path, inputs);
}

}  // namespace velhost
