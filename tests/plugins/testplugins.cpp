// Small plugins, most of them faulty. Each is a library of its own, which is compiled from this file and does what
// TEST_PLUGIN names as it is loaded.
#include <cstdlib>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>

#include "tests/plugins/testplugin.h"

namespace {

using namespace NKROVEL20;
using testplugin::Register;
using testplugin::Say;
using testplugin::TTestPlugin;

std::optional<testplugin::TUnloadMark> mark;

/// Answers requests: it commits an empty instance of each class.
class TQueryPlugin : public TTestPlugin, public IPluginBasicQueryCallbacks {
 public:
  TQueryPlugin() : TTestPlugin("query") {}
  void GetData(boost::shared_ptr<ICIMNamespace>, std::vector<boost::shared_ptr<ICIMClass>>& classes) override {
    for (const auto& requested : classes) requested->CreateInstance({})->Commit({});
  }
};

/// Tries to register again in Init.
class TLatePlugin : public TTestPlugin {
 public:
  TLatePlugin() : TTestPlugin("late") {}
  void Init() override { Say(Register(this) == nullptr ? "late refused" : "late taken"); }
};

/// Answers requests, but throws in the operation named by the environment variable FAILING_OPERATION: a standard
/// exception if FAILING_TEXT is set, otherwise an int.
class TFailingPlugin : public TTestPlugin, public IPluginBasicQueryCallbacks {
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

// Logs whether the second one got a handle.
void RegisterTwo() {
  static TTestPlugin second("second");
  Register(new TTestPlugin("first"));
  Say(Register(&second) == nullptr ? "second refused" : "second taken");
}

void ThrowWithAHost() {
  if (TRootObject::GetPluginManager()) throw std::runtime_error("no licence for this server");
}

bool Load(const std::string& plugin) {
  static const std::map<std::string, void (*)()> loads = {{"good", [] { Register(new TTestPlugin("good")); }},
                                                          {"query", [] { Register(new TQueryPlugin()); }},
                                                          {"late", [] { Register(new TLatePlugin()); }},
                                                          {"failing", [] { Register(new TFailingPlugin()); }},
                                                          {"twice", RegisterTwo},
                                                          {"null", [] { Register(nullptr); }},
                                                          {"silent", [] {}},
                                                          {"throwing", ThrowWithAHost}};
  const bool marksItsEnd = plugin != "late" && plugin != "failing" && plugin != "throwing";
  if (marksItsEnd) mark.emplace(plugin);
  loads.at(plugin)();
  return true;
}

[[maybe_unused]] const bool loaded = Load(TEST_PLUGIN);

}  // namespace
