// velhost simulate: serves one BMC node of a server file on the network, through ipmi_sim.
#pragma once

#include "host/velhost/commandline.h"
#include "host/velhost/exitstatus.h"
#include "host/velhost/installation.h"

namespace velhost {

/// The simulated BMC's only user, who has administrator privilege.
inline constexpr const char* kSimulatedUser = "ipmiusr";
inline constexpr const char* kSimulatedPassword = "test";

/// Serves until SIGINT, SIGTERM, SIGHUP or SIGPIPE, then returns kComplete and leaves neither a process nor a file
/// behind. Once the simulator answers, prints the lines to connect with on standard output. Listens on 127.0.0.1
/// only. Throws THostError: kMalformed for a server file that is wrong or that ipmi_sim cannot serve;
/// kInvalidArgument for a node that it does not contain; kUnreachable if ipmi_sim or the module is missing, a port is
/// in use, or ipmi_sim ends by itself; kDenied for a reserved port; kNotWritten if the lines cannot be printed.
EExitStatus SimulateCommand(const TSimulateArguments& arguments, const TInstallation& installation);

}  // namespace velhost
