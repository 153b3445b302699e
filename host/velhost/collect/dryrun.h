// velhost collect --dry-run: prints what a collection would read.
#pragma once

#include "host/velhost/commandline.h"
#include "host/velhost/exitstatus.h"
#include "host/velhost/installation.h"

namespace velhost {

/// Makes the plan of the collection from what is known without opening a session or device, and prints it as a table
/// or JSON. Sends nothing. Returns kComplete; throws THostError.
EExitStatus DryRun(const TCommandLine& commandLine, const TInstallation& installation);

}  // namespace velhost
