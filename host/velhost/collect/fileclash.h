// Outputs that would destroy an input or another output.
#pragma once

#include <vector>

#include "host/velhost/commandline.h"
#include "host/velhost/inputs.h"
#include "host/velhost/installation.h"

namespace velhost {

/// Throws THostError (kInvalidArgument) if two outputs, or an output and an input, are one file: under one
/// path, through links, or as one inode. Devices, pipes and terminals may serve several. Looks at
/// -o, --record, --log and --capture-dir against one another, and against the plugin, the schema
/// files, the server file or recording and the password file. Opens nothing.
void RefuseClashingFiles(const TCommandLine& commandLine, const TInstallation& installation);

/// The same of the outputs against the inputs that were read, which know what includes and data files they have.
void RefuseClashWithInputs(const TCommandLine& commandLine, const std::vector<TNamedFile>& inputs);

}  // namespace velhost
