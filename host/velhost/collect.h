// velhost collect: one collection from beginning to end.
#pragma once

#include "host/base/hosterror.h"
#include "host/velhost/commandline.h"
#include "host/velhost/installation.h"

namespace velhost {

/// Runs the collection and prints it. Returns kComplete or kPartial; everything that keeps a
/// collection from starting, and what is wrong with its output, throws THostError.
EExitStatus Collect(const TCommandLine& commandLine, const TInstallation& installation);

}  // namespace velhost
