// What is known of the server that --sp names before anything is opened that leads to hardware.
#pragma once

#include <optional>
#include <string>

#include "host/bmc/iserviceprocessor.h"
#include "host/bmc/record/recording.h"
#include "host/model/cimnamespace.h"
#include "host/velhost/commandline.h"
#include "host/velhost/inputs.h"
#include "host/velhost/installation.h"

namespace velhost {

struct TDeclaredServer {
  std::string machineType;  ///< empty if nothing names one
  TDiscovery discovery;
  std::optional<TRecordingHeader> recording{};
};

/// Opens no device and no session, and sends nothing. A server file or recording is read. In-band there are as many BMC
/// nodes as devices, and SMBIOS names the machine type. On the network there are as many nodes as addresses, and
/// nothing names a machine type. --machine-type overrides the one that was found. Throws THostError like ConnectServer.
TDeclaredServer DeclareServer(const TCommonOptions& options, const TInstallation& installation, TInputs& inputs,
                              const TNamespace& cimNamespace);

}  // namespace velhost
