// The commands of velhost, each in a file or folder of its own; simulate/simulate.h declares the fifth. Results go to
// standard output. Anything that prevents a command from starting or from writing its output throws THostError.
#pragma once

#include "host/velhost/commandline.h"
#include "host/velhost/exitstatus.h"
#include "host/velhost/installation.h"

namespace velhost {

/// Runs a collection and prints it. Returns kComplete or kPartial.
EExitStatus Collect(const TCommandLine& commandLine, const TInstallation& installation);

/// Prints a table of at least 80 columns: the collectable classes, and which of them this machine serves.
EExitStatus ListClasses(const TCommandLine& commandLine, const TInstallation& installation);

/// Loads the collector and prints its name, versions and type.
EExitStatus ShowPlugin(const TCommandLine& commandLine, const TInstallation& installation);

/// Prints the findings about schema files. Returns kComplete if there are none, else kBadData.
EExitStatus CheckSchemaFiles(const TCommandLine& commandLine, const TInstallation& installation);

}  // namespace velhost
