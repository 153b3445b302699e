// What each command of velhost does.
#pragma once

#include "host/base/hosterror.h"
#include "host/velhost/commandline.h"
#include "host/velhost/installation.h"

namespace velhost {

/// Carries out the command. Results go to standard output. Throws THostError.
EExitStatus RunVerb(const TCommandLine& commandLine, const TInstallation& installation);

}  // namespace velhost
