// One [[fault]] table of a server file.
#pragma once

#include "host/bmc/sim/serverfile.h"
#include "host/bmc/sim/tomltable.h"

namespace velhost {

/// Throws THostError (kMalformed), at its place, for a fault that cannot be carried out as written.
TFault ReadFault(const TTomlTable& table);

}  // namespace velhost
