#include "host/velhost/serverconnection.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "host/base/digits.h"
#include "host/base/hosterror.h"
#include "host/base/text.h"
#include "host/bmc/inband/inbandserviceprocessor.h"
#include "host/bmc/lan/fru.h"
#include "host/bmc/lan/lanserviceprocessor.h"
#include "host/bmc/lan/lanspec.h"
#include "host/bmc/sim/faults.h"
#include "host/bmc/sim/serverfile.h"
#include "host/bmc/sim/simulatedserver.h"
#include "host/bmc/smbios/smbios.h"
#include "host/profile/collectorprofile.h"
#include "host/velhost/messages.h"
#include "host/velhost/optiontable.h"
#include "host/velhost/recordedconnection.h"

namespace velhost {

namespace {

std::vector<std::string> MachineTypesIn(const TFruProduct& product) {
  std::vector<std::string> types;
  for (const std::string& text : {product.name, product.partNumber}) {
    for (const std::string_view group : DigitGroups(text, 4)) types.emplace_back(group);
  }
  return types;
}

/// Product name and part number may have other groups of digits too, so the schema decides.
std::string ChooseMachineType(const std::vector<std::string>& types, const TNamespace& cimNamespace) {
  for (const std::string& type : types) {
    for (const auto& cimClass : cimNamespace.Classes()) {
      if (CollectorProfile::MatchingElement(*cimClass, type)) return type;
    }
  }
  return types.empty() ? std::string() : types.front();
}

std::vector<TLanOptions> NodesOf(const TCommonOptions& options, const std::vector<std::string>& specs,
                                 TInputs& inputs) {
  TInputReader reader(inputs, {"the password file", "--password-file", EFileKind::kUnknown}, {options.passwordFile});
  std::vector<TLanOptions> nodes;
  for (const std::string& spec : specs) nodes.push_back(ParseLanSpec(spec));
  const std::string warning = PasswordFileWarning(options.passwordFile);
  if (!warning.empty()) Say("warning: " + warning);
  const TSecret password = LanPassword(options.passwordFile, options.passwordVariable, reader);
  for (TLanOptions& node : nodes) {
    node.password = password;
    node.privilege = LanPrivilegeOf(options.privilege).value_or(ELanPrivilege::kAdmin);
    if (options.cipherSuite) node.cipherSuites = {*options.cipherSuite};
  }
  return nodes;
}

class TLanConnection : public IServerConnection {
 public:
  TLanConnection(const TCommonOptions& options, const std::vector<TLanOptions>& nodes,
                 const TInstallation& installation, const TStopSignal& stop, const TNamespace& cimNamespace)
      : serviceProcessor_(OpenLan(nodes, stop, {installation.ModuleFolder()},
                                  [this](ELanNotice kind, const std::string& text) { Tell(kind, text); })),
        product_(ReadFruProduct(*serviceProcessor_, 0, stop)) {
    const std::vector<std::string> types = MachineTypesIn(product_);
    environment_ = TServerEnvironment(ChooseMachineType(types, cimNamespace));
    const std::string node = "lan:" + AddressOf(nodes.front());
    if (options.machineType) {
      WarnOfOverriding(node, *options.machineType, types);
    } else if (types.empty() && !stop.IsStopped()) {
      throw THostError(EFailure::kInvalidArgument, node + ": the FRU inventory names no machine type: " + WhyNone() +
                                                       "; give it with --machine-type NNNN");
    }
  }
  IServiceProcessor& ServiceProcessor() override { return *serviceProcessor_; }
  IHostEnvironment& Environment() override { return environment_; }
  bool WasLost() const override { return lost_; }
  TServerFacts Facts() const override { return {.serialNumber = product_.serialNumber}; }

 private:
  void Tell(ELanNotice kind, const std::string& text) {
    lost_ = lost_ || kind == ELanNotice::kLost;
    if (kind == ELanNotice::kDetail) return SayDetail(text);
    Say(kind == ELanNotice::kWarning ? "warning: " + text : text);
  }
  void WarnOfOverriding(const std::string& node, const std::string& given,
                        const std::vector<std::string>& types) const {
    if (product_.isLost) Say("warning: " + node + ": the FRU inventory was not read: " + product_.defect);
    if (types.empty() || std::find(types.begin(), types.end(), given) != types.end()) return;
    Say("warning: " + node + ": --machine-type " + SafeText(given) + " overrides " + Listed(types, " and ") +
        ", which the FRU inventory names");
  }
  std::string WhyNone() const {
    if (!product_.defect.empty()) return product_.defect;
    return "no group of four digits in the product name " + Quoted(product_.name) + " and the part number " +
           Quoted(product_.partNumber);
  }

  bool lost_ = false;
  std::unique_ptr<IServiceProcessor> serviceProcessor_;
  TFruProduct product_;
  TServerEnvironment environment_;
};

// For a run that was stopped before the sessions existed: nothing answers, and no request is sent. The nodes count
// nevertheless, so that no class appears to be out of this server's reach.
class TUnopenedConnection : public IServerConnection, public IServiceProcessor {
 public:
  explicit TUnopenedConnection(std::size_t nodes) : nodes_(static_cast<int>(nodes)) {}
  IServiceProcessor& ServiceProcessor() override { return *this; }
  IHostEnvironment& Environment() override { return environment_; }

  TDiscovery Discover() override { return {.bmcNodes = nodes_, .ipmiDriver = true}; }
  std::optional<TIpmiAnswer> SendIpmi(const TIpmiRequest&, const TStopSignal&) override { return std::nullopt; }
  ENoAnswer WhyNoAnswer() const override { return ENoAnswer::kNotSent; }

 private:
  int nodes_;
  TSystemEnvironment environment_;
};

/// Opens a session to each node ("lan:..."), then reads node 0's FRU inventory, which names the machine type and the
/// serial number. Throws THostError: kInvalidArgument if neither the inventory nor the command line has a machine type,
/// otherwise as OpenLan does. Warns if the command line has a different one. See ConnectServer for a run
/// that is stopped meanwhile.
std::unique_ptr<IServerConnection> ConnectLan(const TCommonOptions& options, const std::vector<std::string>& specs,
                                              const TInstallation& installation, TInputs& inputs,
                                              const TNamespace& cimNamespace) {
  try {
    return std::make_unique<TLanConnection>(options, NodesOf(options, specs, inputs), installation, inputs.Stop(),
                                            cimNamespace);
  } catch (const TEndedReading&) {
    throw;
  } catch (const THostError& error) {
    const bool mayBeTheStop = error.Kind() == EFailure::kStopped || error.Kind() == EFailure::kUnreachable;
    if (!mayBeTheStop || !inputs.Stop().IsStopped()) throw;
    Say(error.what());
    return std::make_unique<TUnopenedConnection>(specs.size());
  }
}

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

// The file of "sim:FILE", "replay:FILE" or "image:FILE".
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
  static constexpr std::array<std::string_view, 5> kSchemes = {"sim", "replay", "image", "inband", "lan"};
  if (std::find(kSchemes.begin(), kSchemes.end(), scheme) == kSchemes.end()) ThrowUnknown(specs.front());
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
  std::vector<std::string> specs =
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
    return ConnectReplay(FileOf(first), options.replayTiming, inputs);
  }
  if (SchemeOf(first) == "image") return ConnectImage(FileOf(first), inputs);
  const bool isDemo = first == "sim";
  const std::string path = isDemo ? installation.ServerFolder() + "/demo.toml" : installation.FindServer(FileOf(first));
  return std::make_unique<TSimulatedConnection>(path, inputs);
}

}  // namespace velhost
