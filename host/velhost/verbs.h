// The commands of velhost, each in a file or folder of its own, and their exit statuses. Results go to standard output.
// Anything that prevents a command from starting or from writing its output throws THostError.
#pragma once

#include "host/base/hosterror.h"
#include "host/velhost/commandline.h"
#include "host/velhost/installation.h"

namespace velhost {

/// Values from 64 on are those of sysexits.h.
enum class EExitStatus : int {
  kComplete = 0,
  kPartial = 3,        ///< something that was asked for is missing from the result
  kUsage = 64,         ///< the command line is wrong
  kBadData = 65,       ///< a schema, server file or recording is malformed or too large
  kNoInput = 66,       ///< an input cannot be opened
  kUnavailable = 69,   ///< the service processor cannot be reached
  kInternal = 70,      ///< a defect of the host or of a plugin
  kCannotCreate = 73,  ///< an output cannot be created
  kWriteFailed = 74,   ///< a write failed
  kNoPermission = 77,  ///< permission denied or authentication refused
};

/// The only mapping from failures to exit statuses.
constexpr EExitStatus StatusOf(EFailure failure) {
  switch (failure) {
    case EFailure::kInvalidArgument: return EExitStatus::kUsage;
    case EFailure::kMalformed:
    case EFailure::kTooLarge: return EExitStatus::kBadData;
    case EFailure::kAbsent: return EExitStatus::kNoInput;
    case EFailure::kDenied:
    case EFailure::kRefused: return EExitStatus::kNoPermission;
    case EFailure::kUnreachable: return EExitStatus::kUnavailable;
    case EFailure::kStopped: return EExitStatus::kPartial;
    case EFailure::kNotCreated: return EExitStatus::kCannotCreate;
    case EFailure::kNotWritten: return EExitStatus::kWriteFailed;
    case EFailure::kDefect: return EExitStatus::kInternal;
  }
  return EExitStatus::kInternal;
}

/// Runs a collection and prints it. Returns kComplete or kPartial.
EExitStatus Collect(const TCommandLine& commandLine, const TInstallation& installation);

/// "collect --dry-run": makes the plan of the collection from what is known without opening a session or device, and
/// prints it as a table or JSON. Sends nothing. Returns kComplete; throws THostError.
EExitStatus DryRun(const TCommandLine& commandLine, const TInstallation& installation);

/// Prints a table of at least 80 columns: the collectable classes, and which of them this machine serves.
EExitStatus ListClasses(const TCommandLine& commandLine, const TInstallation& installation);

/// Loads the collector and prints its name, versions and type.
EExitStatus ShowPlugin(const TCommandLine& commandLine, const TInstallation& installation);

/// Prints the findings about schema files. Returns kComplete if there are none, else kBadData.
EExitStatus CheckSchemaFiles(const TCommandLine& commandLine, const TInstallation& installation);

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
