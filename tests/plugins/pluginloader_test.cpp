// Loading through a test double of the operating system's loader.
#include <gtest/gtest.h>

#include <boost/make_shared.hpp>
#include <boost/pointer_cast.hpp>
#include <csignal>
#include <functional>
#include <stdexcept>

#include "host/model/hostservices.h"
#include "host/plugins/pluginloader.h"
#include "tests/plugins/testplugin.h"
#include "tests/support/expectfailure.h"
#include "tests/support/namespaces.h"

namespace tests {
namespace {

using testplugin::TTestPlugin;

class PluginRegistry : public testing::Test {
 protected:
  TPluginRegistry registry_;
  TTestPlugin first_{"first"};
  TTestPlugin second_{"second"};
};

TEST_F(PluginRegistry, AcceptsTheRegistrationOfALibraryThatIsBeingLoaded) {
  registry_.BeginLoading("a.so");
  const TPluginManagerProvider* const handle = registry_.RegisterPlugin(&first_);
  ASSERT_NE(handle, nullptr);
  const auto outcome = registry_.EndLoading();
  EXPECT_EQ(outcome.provider.get(), handle);
  EXPECT_EQ(handle->Path(), "a.so");
  EXPECT_EQ(handle->Plugin(), &first_);
  EXPECT_TRUE(outcome.refusals.empty());
}

TEST_F(PluginRegistry, RefusesASecondRegistrationAndKeepsTheFirst) {
  registry_.BeginLoading("a.so");
  registry_.RegisterPlugin(&first_);
  EXPECT_EQ(registry_.RegisterPlugin(&second_), nullptr);
  EXPECT_EQ(registry_.RegisterPlugin(&first_), nullptr);
  const auto outcome = registry_.EndLoading();
  EXPECT_EQ(outcome.provider->Plugin(), &first_);
  EXPECT_EQ(outcome.refusals,
            (std::vector<std::string>{"it registered a second plugin object", "it registered a second plugin object"}));
}

TEST_F(PluginRegistry, RefusesANullObject) {
  registry_.BeginLoading("a.so");
  EXPECT_EQ(registry_.RegisterPlugin(nullptr), nullptr);
  const auto outcome = registry_.EndLoading();
  EXPECT_FALSE(outcome.provider);
  EXPECT_EQ(outcome.refusals, std::vector<std::string>{"it registered a null plugin object"});
}

TEST_F(PluginRegistry, RefusesBeforeAndAfterLoading) {
  EXPECT_EQ(registry_.RegisterPlugin(&first_), nullptr);
  registry_.BeginLoading("a.so");
  registry_.EndLoading();
  EXPECT_EQ(registry_.RegisterPlugin(&first_), nullptr);
  EXPECT_EQ(registry_.EndLoading().refusals,
            std::vector<std::string>{"a plugin registered while no library was being loaded"});
}

TEST_F(PluginRegistry, EachLoadingStartsAnew) {
  registry_.RegisterPlugin(&first_);
  registry_.BeginLoading("a.so");
  registry_.RegisterPlugin(&first_);
  registry_.EndLoading();
  registry_.BeginLoading("b.so");
  const auto outcome = registry_.EndLoading();
  EXPECT_FALSE(outcome.provider);
  EXPECT_TRUE(outcome.refusals.empty());
}

TEST_F(PluginRegistry, IsANamespaceWithoutClasses) {
  const boost::shared_ptr<ICIMNamespace> asNamespace = boost::make_shared<TPluginRegistry>();
  EXPECT_FALSE(asNamespace->GetClass("KROSG_DCAPFile", {}));
  EXPECT_EQ(asNamespace->GetMachineType(), "");
  EXPECT_TRUE(boost::dynamic_pointer_cast<TPluginManagerNamespace>(asNamespace));
}

using testplugin::Register;
using testplugin::TTestPlugin;

// A library whose initialiser is a function of the test. Its path must exist, so it is that of the test program.
class TScriptedLoader : public ILibraryLoader {
 public:
  using TInitialiser = std::function<void()>;

  explicit TScriptedLoader(TInitialiser initialiser) : initialiser_(std::move(initialiser)) {}
  ~TScriptedLoader() override { EXPECT_EQ(open_, 0) << "a library is still open"; }

  void Refuse(const std::string& reason) { reason_ = reason; }
  int Open() const { return open_; }

  void* Open(const std::string&, std::string& error) override {
    initialiser_();
    error = reason_;
    if (!reason_.empty()) return nullptr;
    ++open_;
    return this;
  }
  void Close(void* library) override {
    EXPECT_EQ(library, this);
    --open_;
  }

 private:
  TInitialiser initialiser_;
  std::string reason_;
  int open_ = 0;
};

const std::string kFile = "/proc/self/exe";

TEST(PluginLoader, ReturnsTheRegisteredPlugin) {
  TScriptedLoader library([] { Register(new TTestPlugin("good")); });
  TPluginLoader loader(library);
  const auto plugin = loader.Load(kFile);
  EXPECT_EQ(plugin->Callbacks().GetName(), "good");
  EXPECT_EQ(plugin->Path(), kFile);
  EXPECT_EQ(plugin->Query(), nullptr);
  EXPECT_EQ(library.Open(), 1);
}

TEST(PluginLoader, RefusesALibraryThatRegistersNothing) {
  TScriptedLoader library([] {});
  TPluginLoader loader(library);
  ExpectHostError(EFailure::kAbsent,
                  "plugin /proc/self/exe cannot be used: it registered no plugin object while it was being loaded",
                  [&] { loader.Load(kFile); });
  EXPECT_EQ(library.Open(), 0);
}

TEST(PluginLoader, RefusesALibraryThatRegistersANullObject) {
  TScriptedLoader library([] { Register(nullptr); });
  TPluginLoader loader(library);
  ExpectHostError(EFailure::kAbsent, "plugin /proc/self/exe cannot be used: it registered a null plugin object",
                  [&] { loader.Load(kFile); });
  EXPECT_EQ(library.Open(), 0);
}

TEST(PluginLoader, RefusesANullObjectNextToAGoodOne) {
  TScriptedLoader library([] {
    Register(nullptr);
    Register(new TTestPlugin("good"));
  });
  TPluginLoader loader(library);
  ExpectHostError(EFailure::kAbsent, "plugin /proc/self/exe cannot be used: it registered a null plugin object",
                  [&] { loader.Load(kFile); });
}

TEST(PluginLoader, AFileThatIsMissingIsNeverOpened) {
  TScriptedLoader library([] { ADD_FAILURE() << "opened"; });
  TPluginLoader loader(library);
  ExpectHostError(EFailure::kAbsent, "cannot open plugin /nonexistent/a.so: No such file or directory",
                  [&] { loader.Load("/nonexistent/a.so"); });
}

TEST(PluginLoader, TheErrorOfTheSystemLoaderIsReported) {
  TScriptedLoader library([] {});
  library.Refuse("undefined symbol: frobnicate");
  TPluginLoader loader(library);
  ExpectHostError(EFailure::kAbsent,
                  "plugin /proc/self/exe cannot be loaded as a library: undefined symbol: frobnicate",
                  [&] { loader.Load(kFile); });
}

TEST(PluginLoader, AfterAFailureNothingRegistersUntilTheNextLoading) {
  TTestPlugin stray("stray");
  TScriptedLoader library([] {});
  library.Refuse("no");
  TPluginLoader loader(library);
  EXPECT_THROW(loader.Load(kFile), THostError);
  EXPECT_EQ(Register(&stray), nullptr);
  EXPECT_THROW(loader.Load("/nonexistent/a.so"), THostError);
  EXPECT_EQ(Register(&stray), nullptr);
}

TEST(PluginLoader, ARegistrationOutsideOfLoadingDoesNotSpoilTheNextOne) {
  TTestPlugin stray("stray");
  TScriptedLoader library([] { Register(new TTestPlugin("good")); });
  TPluginLoader loader(library);
  EXPECT_EQ(Register(&stray), nullptr);
  EXPECT_EQ(loader.Load(kFile)->Callbacks().GetName(), "good");
}

TEST(PluginLoader, ThePluginManagerIsRemovedWithTheLoader) {
  TScriptedLoader library([] {});
  {
    TPluginLoader loader(library);
    EXPECT_TRUE(TRootObject::GetPluginManager());
  }
  EXPECT_FALSE(TRootObject::GetPluginManager());
}

std::string FatalMessage(const TScriptedLoader::TInitialiser& initialiser) {
  TScriptedLoader library(initialiser);
  TPluginLoader loader(library);
  loader.SetFatalHandler([](const std::string& message) { throw message; });
  try {
    loader.Load(kFile);
  } catch (const std::string& message) {
    return message;
  }
  return "returned";
}

TEST(PluginLoader, AnInitialiserThatThrowsIsFatal) {
  EXPECT_EQ(FatalMessage([] { throw std::runtime_error("out of licences"); }),
            "plugin /proc/self/exe threw while it was being loaded: out of licences");
  EXPECT_EQ(FatalMessage([] { throw 5; }),
            "plugin /proc/self/exe threw while it was being loaded: an exception of unknown type");
}

TEST(PluginLoaderDeathTest, TheDefaultHandlerPrintsAndAborts) {
  EXPECT_EXIT(
      {
        TScriptedLoader library([] { throw std::runtime_error("out of licences"); });
        TPluginLoader loader(library);
        loader.Load(kFile);
      },
      testing::KilledBySignal(SIGABRT), "^plugin /proc/self/exe threw while it was being loaded: out of licences\n$");
}

}  // namespace
}  // namespace tests
