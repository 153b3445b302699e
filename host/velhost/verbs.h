// What the commands of velhost do, each in a file or folder of its own. Results go to standard output. Whatever keeps a
// command from starting, and what is wrong with its output, throws THostError. simulate.h has the fifth.
#pragma once

#include "host/base/hosterror.h"
#include "host/velhost/commandline.h"
#include "host/velhost/installation.h"

namespace velhost {

/// Runs a collection and prints it. Returns kComplete or kPartial.
EExitStatus Collect(const TCommandLine& commandLine, const TInstallation& installation);

/// Prints a table of at least 80 columns: the collectable classes, and which of them this machine serves.
EExitStatus ListClasses(const TCommandLine& commandLine, const TInstallation& installation);

/// Loads the collector and prints its name, versions and type.
EExitStatus ShowPlugin(const TCommandLine& commandLine, const TInstallation& installation);

/// Prints what is wrong with schema files. Returns kComplete where nothing is, else kBadData.
EExitStatus CheckSchemaFiles(const TCommandLine& commandLine, const TInstallation& installation);

}  // namespace velhost
