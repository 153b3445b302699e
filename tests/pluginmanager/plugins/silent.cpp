// Loads and never registers.
#include "tests/pluginmanager/plugins/testplugin.h"

namespace {
const testplugin::TUnloadMark mark("silent");
}
