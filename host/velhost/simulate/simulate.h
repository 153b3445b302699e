// velhost simulate: one BMC node of a server file on the network, through ipmi_sim.
#pragma once

#include "host/velhost/commandline.h"
#include "host/velhost/exitstatus.h"
#include "host/velhost/installation.h"

namespace velhost {

/// The simulated BMC's one user, who may do everything.
inline constexpr const char* kSimulatedUser = "ipmiusr";
inline constexpr const char* kSimulatedPassword = "test";

/// Serves until SIGINT, SIGTERM, SIGHUP or SIGPIPE, then returns kComplete and leaves neither a process nor a
/// file behind. Prints the lines to connect with on standard output once it answers. Listens on
/// 127.0.0.1 only. Throws THostError: kMalformed for a server file that is wrong or that ipmi_sim
/// cannot serve, kInvalidArgument for a node that is not in it, kUnreachable where ipmi_sim or the module is
/// missing, a port is taken, or ipmi_sim ends by itself; kDenied for a port that is reserved;
/// kNotWritten where nobody can read the lines.
EExitStatus SimulateCommand(const TSimulateArguments& arguments, const TInstallation& installation);

}  // namespace velhost
