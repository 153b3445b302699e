// Recordings in place of a server.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "host/bmc/record/recording.h"
#include "host/velhost/inputs.h"
#include "host/velhost/serverconnection.h"

namespace velhost {

// These open the file of "replay:FILE" and "image:FILE", and set the process's time zone to the recorded offset. They
// throw THostError.
std::unique_ptr<IServerConnection> ConnectReplay(const std::string& path, bool timing, TInputs& inputs);
std::unique_ptr<IServerConnection> ConnectImage(const std::string& path, TInputs& inputs);

/// "the recording was made with another schema" if it was, as far as the recording says. `recording` may be null.
std::vector<std::string> AnotherSchemaWarnings(const TRecordingHeader* recording, const std::string& schemaSha256);

}  // namespace velhost
