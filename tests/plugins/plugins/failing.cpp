// Answers requests, but throws in the operation named by the environment variable FAILING_OPERATION: a
// standard exception if FAILING_TEXT is set, otherwise an int.
#include <cstdlib>
#include <stdexcept>

#include "tests/plugins/plugins/testplugin.h"

namespace {

using namespace NKROVEL20;

class TFailingPlugin : public testplugin::TTestPlugin, public IPluginBasicQueryCallbacks {
 public:
  TFailingPlugin() : TTestPlugin("failing") {}
  std::string GetName() override { return FailIf("GetName"), TTestPlugin::GetName(); }
  void PrepareForUnload() override {
    TTestPlugin::PrepareForUnload();  // delete the object first, so that a failure does not leak it
    FailIf("PrepareForUnload");
  }
  void Init() override { FailIf("Init"); }
  void DeInit() override { FailIf("DeInit"); }
  void GetData(boost::shared_ptr<ICIMNamespace>, std::vector<boost::shared_ptr<ICIMClass>>&) override {}

 private:
  static void FailIf(const std::string& operation) {
    const char* const chosen = std::getenv("FAILING_OPERATION");
    if (chosen == nullptr || operation != chosen) return;
    if (const char* const text = std::getenv("FAILING_TEXT")) throw std::runtime_error(text);
    throw 7;
  }
};

[[maybe_unused]] const auto* const handle = testplugin::Register(new TFailingPlugin());

}  // namespace
