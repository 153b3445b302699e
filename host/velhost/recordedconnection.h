// Recordings in place of a server.
#pragma once

#include <memory>
#include <string>

#include "host/velhost/inputs.h"
#include "host/velhost/serverconnection.h"

namespace velhost {

/// Opens the file of "replay:FILE". Sets the process's time zone to the recorded offset. Throws THostError.
std::unique_ptr<IServerConnection> ConnectReplay(const std::string& path, bool timing, TInputs& inputs);

}  // namespace velhost
