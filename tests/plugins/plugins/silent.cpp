// Loads and never registers.
#include "tests/plugins/plugins/testplugin.h"

namespace {
const testplugin::TUnloadMark mark("silent");
}
