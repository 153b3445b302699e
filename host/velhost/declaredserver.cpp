#include "host/velhost/declaredserver.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/base/hosterror.h"
#include "host/base/sourcereader.h"
#include "host/bmc/inband/inbandserviceprocessor.h"
#include "host/bmc/smbios/smbios.h"
#include "host/velhost/serverconnection.h"

namespace velhost {

namespace {

TDeclaredServer DeclareInband(const std::vector<std::string>& specs) {
  std::vector<std::string> devices;
  for (const std::string& spec : specs) devices.push_back(ParseInbandSpec(spec));
  TFileReader reader;
  const TSystemSmbios smbios = ReadSystemSmbios(reader);
  return {smbios.machineType, DiscoverInband(devices, smbios)};
}

TDeclaredServer DeclareLan(const std::vector<std::string>& specs) {
  TDiscovery discovery;
  discovery.bmcNodes = static_cast<int>(specs.size());
  discovery.ipmiDriver = true;
  return {{}, discovery};
}

TDeclaredServer DeclareFromFile(const TCommonOptions& options, const TInstallation& installation, TInputs& inputs,
                                const TNamespace& cimNamespace) {
  const auto connection = ConnectServer(options, installation, inputs, cimNamespace);
  return {connection->Environment().MachineType(), connection->ServiceProcessor().Discover()};
}

}  // namespace

TDeclaredServer DeclareServer(const TCommonOptions& options, const TInstallation& installation, TInputs& inputs,
                              const TNamespace& cimNamespace) {
  const std::vector<std::string> specs = CheckedSpecs(options);
  const std::string scheme = SchemeOf(specs.front());
  TDeclaredServer server = scheme == "inband" ? DeclareInband(specs)
                           : scheme == "lan"  ? DeclareLan(specs)
                                              : DeclareFromFile(options, installation, inputs, cimNamespace);
  if (options.machineType) server.machineType = *options.machineType;
  if (!server.machineType.empty()) return server;
  throw THostError(EFailure::kInvalidArgument,
                   "without the machine type nothing can be planned; give it with --machine-type NNNN");
}

}  // namespace velhost
