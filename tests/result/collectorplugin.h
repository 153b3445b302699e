// The collector's plugin, for tests that run whole collections.
#pragma once

#include "host/plugins/pluginloader.h"
#include "tests/support/namespaces.h"

namespace tests {

/// Loaded only once: in sanitizer builds, a library stays mapped and would not register again.
TLoadedPlugin& Collector();

}  // namespace tests
