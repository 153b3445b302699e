// What is known of a server before anything is opened that leads to hardware.
#pragma once

#include <string>

#include "host/bmc/iserviceprocessor.h"
#include "host/model/cimnamespace.h"
#include "host/velhost/commandline.h"
#include "host/velhost/inputs.h"
#include "host/velhost/installation.h"

namespace velhost {

struct TDeclaredServer {
  std::string machineType;
  TDiscovery discovery;
};

/// The server that --sp names. A server file or recording is read. In-band there are as many BMC nodes as devices, and
/// SMBIOS is asked for the machine type; no device is opened. On the network there are as many nodes as addresses, and
/// nothing is sent. Throws THostError: kInvalidArgument if the machine type is neither given nor found.
TDeclaredServer DeclareServer(const TCommonOptions& options, const TInstallation& installation, TInputs& inputs,
                              const TNamespace& cimNamespace);

}  // namespace velhost
