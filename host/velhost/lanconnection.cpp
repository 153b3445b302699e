#include "host/velhost/lanconnection.h"

#include <algorithm>
#include <string_view>

#include "host/base/digits.h"
#include "host/base/hosterror.h"
#include "host/base/text.h"
#include "host/bmc/lan/fru.h"
#include "host/bmc/lan/lanserviceprocessor.h"
#include "host/profile/collectorprofile.h"
#include "host/velhost/messages.h"

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

// For a run that was stopped before the sessions existed: nothing answers, and no request is sent. The nodes count all
// the same, so that a class is not taken for one that this server has no way to.
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

}  // namespace

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

}  // namespace velhost
