// Results that a command is given: files and pipes, or recordings, which are replayed first.
#pragma once

#include <string>
#include <vector>

#include "host/base/storedbytes.h"
#include "host/velhost/commandline.h"
#include "host/velhost/inputs.h"
#include "host/velhost/installation.h"

namespace velhost {

/// The text of a result. A recording is replayed with the command line's schema and plugin, and the text is the result
/// of that; what the replay says is said. Throws THostError if it cannot be read, or is something else.
TStoredBytes OpenResult(const std::string& path, const TCommandLine& commandLine, const TInstallation& installation,
                        TInputReader& reader);

/// A reader of results for a command: "diff".
TInputReader ReaderOfResults(TInputs& inputs, const std::string& command, const std::vector<std::string>& paths);

}  // namespace velhost
