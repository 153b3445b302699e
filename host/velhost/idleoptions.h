// Options that a command line gives and the command has no use for.
#pragma once

#include <string>
#include <vector>

#include "host/velhost/commandline.h"

namespace velhost {

/// One text for each: "--log has no effect with check", "--replay-timing has no effect with --sp sim".
/// Empty for a command line on which everything counts. -v and --color may always be given.
std::vector<std::string> IdleOptionTexts(const TCommandLine& commandLine);

}  // namespace velhost
