// The built plugin in a process: load, collect, unload, load again.
#include <csignal>

#include <dlfcn.h>
#include <gtest/gtest.h>

#include "host/model/failures.h"
#include "host/plugins/pluginloader.h"
#include "tests/support/collectortest.h"
#include "tests/support/namespaces.h"

namespace tests {
namespace {

// Sanitizer builds keep libraries mapped on purpose, and a mapped library is not initialised again: there, it
// can be loaded only once per process.
#ifdef VELHOST_SANITIZED
constexpr bool kUnloads = false;
#else
constexpr bool kUnloads = true;
#endif

class LoadedLibrary : public TCollectorTest {
 protected:
  void SetUp() override {
    if (!kUnloads && IsMapped()) GTEST_SKIP() << "loaded before in this process; ctest runs each case alone";
  }
  LoadedLibrary() : loader(libraryLoader) {
    AddStatisticBase();
    AddJfrBases(*ns, "KROSG_StatisticBase");
    ns->AddClass(TClassBuilder("KROSG_VO_MEMCTL_StatisticData", "KROSG_StatisticBase")
                     .Machines({"6203"})
                     .MaxInstances(1)
                     .Register("R", 0xABCDEF, 8));
    AddCaptureClass();
  }
  // One register and no time; then one capture file of ten bytes.
  void Collect(TLoadedPlugin& plugin) {
    sp.Expect({Register(0, 0xABCDEF).Answers(RegisterData({1, 2, 3, 4, 5, 6, 7, 8})), Timestamp().Fails(0xCB),
               Open("cpu_err").Answers(OemData({1, 0, 0, 0})), Size("cpu_err").Answers(SizeData(10)),
               Read({1, 0, 0, 0}, 0, 10).Answers(ReadData(TBytes(10, 0xAB))), Close({1, 0, 0, 0}),
               Open("ioh_err").Fails(0xCB), Open("zyn_err").Fails(0xCB)});
    std::vector<boost::shared_ptr<ICIMClass>> classes = {Class("KROSG_VO_MEMCTL_StatisticData"),
                                                         Class("KROSG_DCAPFile")};
    plugin.Query()->GetData(ns, classes);
  }
  static bool IsMapped() {
    void* const library = dlopen(PLUGIN, RTLD_NOW | RTLD_NOLOAD);
    if (library != nullptr) dlclose(library);
    return library != nullptr;
  }

  TDynamicLibraryLoader libraryLoader;
  TPluginLoader loader;
};

TEST_F(LoadedLibrary, RegistersWhileItIsLoadedAndLogsNothing) {
  const auto plugin = loader.Load(PLUGIN);
  EXPECT_EQ(plugin->Callbacks().GetType(), 0);
  EXPECT_EQ(plugin->Callbacks().GetName(), "Engineering Information Collector");
  EXPECT_EQ(plugin->Callbacks().GetVersion(), "1.0");
  EXPECT_EQ(plugin->Callbacks().GetInterfaceVersion(), "1.0");
  EXPECT_NE(plugin->Query(), nullptr);
  EXPECT_TRUE(logger.Lines().empty());
  EXPECT_EQ(sp.Discoveries(), 0);
}

TEST_F(LoadedLibrary, CollectsUnloadsAndLoadsAgain) {
  for (int round = 0; round < (kUnloads ? 3 : 1); ++round) {
    auto plugin = loader.Load(PLUGIN);
    plugin->Callbacks().Init();
    Collect(*plugin);
    plugin->Callbacks().DeInit();
    ASSERT_EQ(committed.size(), 2U);
    EXPECT_EQ(TextOf(*committed[0], "R"), "{171, 205, 239, 8, 7, 6, 5, 4, 3, 2, 1, 0, 0, 0}");
    EXPECT_EQ(TextOf(*committed[1], "ErrRawData"), "ab ab ab ab ab ab ab ab ab ab ");
    EXPECT_EQ(TextOf(*committed[1], "RecordID"), "0");
    EXPECT_EQ(logger.Lines().back(), Debug("De-Initializing Engineering Information Collector"));
    committed.clear();
    logger.Clear();
    EXPECT_TRUE(IsMapped());
    plugin.reset();
    EXPECT_TRUE(logger.Lines().empty());
    EXPECT_EQ(IsMapped(), !kUnloads);
  }
}

TEST_F(LoadedLibrary, InstancesOutliveThePlugin) {
  auto plugin = loader.Load(PLUGIN);
  plugin->Callbacks().Init();
  Collect(*plugin);
  plugin.reset();
  ASSERT_EQ(committed.size(), 2U);
  EXPECT_EQ(TextOf(*committed[0], "ElementName"), "Memory controller with integrated L4 cache module,0");
}

// An exception cannot pass through the dynamic loader: the host's loader names it and ends the process.
TEST_F(LoadedLibrary, LoadingWithoutAPluginManagerAsserts) {
  THostServices::SetPluginManager({});
  EXPECT_EXIT(loader.Load(PLUGIN), testing::KilledBySignal(SIGABRT), "threw while it was being loaded: .*px != 0");
}

TEST_F(LoadedLibrary, ItsExceptionsReachTheHost) {
  const auto plugin = loader.Load(PLUGIN);
  std::vector<boost::shared_ptr<ICIMClass>> classes = {{}};
  EXPECT_THROW(plugin->Query()->GetData(ns, classes), TAssertionFailure);
}

}  // namespace
}  // namespace tests
