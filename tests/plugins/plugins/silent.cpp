// Never registers anything.
#include "tests/plugins/plugins/testplugin.h"

namespace {
const testplugin::TUnloadMark mark("silent");
}
