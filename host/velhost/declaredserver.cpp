#include "host/velhost/declaredserver.h"

#include <memory>
#include <optional>
#include <vector>

#include "host/base/sourcereader.h"
#include "host/bmc/inband/inbandserviceprocessor.h"
#include "host/bmc/smbios/smbios.h"
#include "host/model/hostservices.h"
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
  TDeclaredServer server = {connection->Environment().MachineType(), connection->ServiceProcessor().Discover()};
  if (connection->Recording() != nullptr) server.recording = *connection->Recording();
  return server;
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
  return server;
}

}  // namespace velhost
