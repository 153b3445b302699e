// The commands of velhost, each in a file or folder of its own. Results go to standard output. Anything that prevents a
// command from starting or from writing its output throws THostError.
// command from starting or from writing its output throws THostError.
#pragma once

#include "host/velhost/commandline.h"
#include "host/velhost/exitstatus.h"
#include "host/velhost/installation.h"

namespace velhost {

/// Runs a collection and prints it. Returns kComplete or kPartial.
EExitStatus Collect(const TCommandLine& commandLine, const TInstallation& installation);

/// "collect --dry-run": makes the plan of the collection from what is known without opening a session or device, and
/// prints it as a table or JSON. Sends nothing. Returns kComplete; throws THostError.
EExitStatus DryRun(const TCommandLine& commandLine, const TInstallation& installation);

/// Prints a table of at least 80 columns: the collectable classes, and which of them this machine serves.
EExitStatus ListClasses(const TCommandLine& commandLine, const TInstallation& installation);

/// Prints what a class or one of its registers is and means, from the schema alone: opens no device and no session.
/// Throws THostError (kInvalidArgument) with the nearest name if the schema has no such class or register.
EExitStatus DescribeClass(const TCommandLine& commandLine, const TInstallation& installation);

/// Loads the collector and prints its name, versions and type.
EExitStatus ShowPlugin(const TCommandLine& commandLine, const TInstallation& installation);

/// Prints the findings about schema files. Returns kComplete if there are none, else kBadData.
EExitStatus CheckSchemaFiles(const TCommandLine& commandLine, const TInstallation& installation);

/// Prints results again. Returns kComplete whatever they say.
EExitStatus Show(const TCommandLine& commandLine, const TInstallation& installation);

/// Prints what changed between two results. Returns kFound if there are differences, kPartial if there are none but
/// something could not be compared.
EExitStatus Diff(const TCommandLine& commandLine, const TInstallation& installation);

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
