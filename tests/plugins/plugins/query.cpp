// Registers a plugin object that answers requests: it commits an empty instance of each class.
#include "tests/plugins/plugins/testplugin.h"

namespace {

using namespace NKROVEL20;

class TQueryPlugin : public testplugin::TTestPlugin, public IPluginBasicQueryCallbacks {
 public:
  TQueryPlugin() : TTestPlugin("query") {}
  void GetData(boost::shared_ptr<ICIMNamespace>, std::vector<boost::shared_ptr<ICIMClass>>& classes) override {
    for (const auto& requested : classes) requested->CreateInstance({})->Commit({});
  }
};

const testplugin::TUnloadMark mark("query");
[[maybe_unused]] const auto* const handle = testplugin::Register(new TQueryPlugin());

}  // namespace
