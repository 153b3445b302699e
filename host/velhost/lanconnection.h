// A server whose BMC nodes are on the network.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "host/velhost/serverconnection.h"

namespace velhost {

/// Opens a session to each node ("lan:..."), then reads node 0's FRU inventory, which names the machine type and the
/// serial number. Throws THostError: kInvalidArgument if neither the inventory nor the command line has a machine type,
/// otherwise as OpenLan does. Warns if the command line has another one than the inventory. See ConnectServer for a run
/// that is stopped meanwhile.
std::unique_ptr<IServerConnection> ConnectLan(const TCommonOptions& options, const std::vector<std::string>& specs,
                                              const TInstallation& installation, TInputs& inputs,
                                              const TNamespace& cimNamespace);

}  // namespace velhost
