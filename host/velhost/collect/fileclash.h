// Detects outputs that would overwrite an input or another output.
#pragma once

#include <vector>

#include "host/velhost/commandline.h"
#include "host/velhost/inputs.h"
#include "host/velhost/installation.h"

namespace velhost {

/// Throws THostError (kInvalidArgument) if two outputs, or an output and an input, are the same file: by path,
/// through links, or by inode. Devices, pipes and terminals may be used more than once. Compares -o, --record, --log
/// and --capture-dir with each other, and with the plugin, the schema files, the server file or recording and the
/// password file. Opens nothing.
void RefuseClashingFiles(const TCommandLine& commandLine, const TInstallation& installation);

/// The same for the outputs and the inputs that were actually read, which include included files and data files.
void RefuseClashWithInputs(const TCommandLine& commandLine, const std::vector<TNamedFile>& inputs);

}  // namespace velhost
