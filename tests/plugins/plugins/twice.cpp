// Registers two plugin objects, and logs whether the second one got a handle.
#include "tests/plugins/plugins/testplugin.h"

namespace {

const testplugin::TUnloadMark mark("twice");

bool RegisterTwo() {
  static testplugin::TTestPlugin second("second");
  testplugin::Register(new testplugin::TTestPlugin("first"));
  testplugin::Say(testplugin::Register(&second) == nullptr ? "second refused" : "second taken");
  return true;
}

[[maybe_unused]] const bool registered = RegisterTwo();

}  // namespace
