// Loading real libraries, good and bad.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>

#include "host/model/cimnamespace.h"
#include "host/model/hostservices.h"
#include "host/plugins/pluginloader.h"
#include "tests/support/classbuilder.h"
#include "tests/support/expectfailure.h"
#include "tests/support/namespaces.h"
#include "tests/support/temporaryfolder.h"

namespace tests {
namespace {

namespace fs = std::filesystem;

bool IsMapped(const std::string& path) {
  const std::string file = fs::canonical(path).string();
  std::ifstream maps("/proc/self/maps");
  for (std::string line; std::getline(maps, line);) {
    if (line.size() >= file.size() && line.compare(line.size() - file.size(), file.size(), file) == 0) return true;
  }
  return false;
}

// Sanitizer builds deliberately keep libraries mapped.
#ifdef VELHOST_SANITIZED
constexpr bool kUnmaps = false;
#else
constexpr bool kUnmaps = true;
#endif

class RealLibraries : public testing::Test {
 protected:
  RealLibraries() {
    logger_.AddSink(ILogger::kVerbose,
                    [this](ILogger::EVELLogSeverity, const std::string& text) { said_.push_back(text); });
    THostServices::SetCoreLogger(&logger_);
  }
  ~RealLibraries() override {
    // A plugin that stays mapped logs when the process ends; it must not use this logger.
    THostServices::SetCoreLogger(nullptr);
  }

  // A separate copy, because in sanitizer builds a library stays mapped from one test to the next.
  std::string TestPlugin(const std::string& name) const {
    const std::string copy = folder_ + "/" + name + ".so";
    fs::copy_file(TEST_PLUGIN_FOLDER + name + ".so", copy, fs::copy_options::skip_existing);
    return copy;
  }

  void ExpectUnusable(const std::string& path, const std::string& reason) {
    ExpectHostError(EFailure::kAbsent, "plugin " + path + " cannot be used: " + reason, [&] { loader_.Load(path); });
    EXPECT_EQ(IsMapped(path), !kUnmaps);
  }
  // Expects these log lines from the plugins; "unloaded" only if libraries are unmapped.
  void ExpectSaid(std::vector<std::string> texts) {
    if (!kUnmaps) std::erase_if(texts, [](const std::string& text) { return text.ends_with(" unloaded"); });
    EXPECT_EQ(said_, texts);
  }

  TTemporaryFolder temporary_;
  const std::string folder_ = temporary_.Path();
  std::vector<std::string> said_;
  TTraceLogger logger_;
  TDynamicLibraryLoader libraries_;
  TPluginLoader loader_{libraries_};
};

TEST_F(RealLibraries, APluginIsLoadedUsedAndUnmapped) {
  auto plugin = loader_.Load(TestPlugin("good"));
  EXPECT_EQ(plugin->Callbacks().GetName(), "good");
  EXPECT_TRUE(IsMapped(TestPlugin("good")));
  plugin->Callbacks().Init();
  plugin->Callbacks().DeInit();
  plugin.reset();
  EXPECT_EQ(IsMapped(TestPlugin("good")), !kUnmaps);
  ExpectSaid({"good init", "good deinit", "good deleted", "good unloaded"});
}

TEST_F(RealLibraries, APluginWithoutRequestsHasNoQueryInterface) {
  EXPECT_EQ(loader_.Load(TestPlugin("good"))->Query(), nullptr);
}

TEST_F(RealLibraries, TheQueryInterfaceIsFoundAcrossLibraries) {
  const auto plugin = loader_.Load(TestPlugin("query"));
  ASSERT_NE(plugin->Query(), nullptr);
  const auto cimNamespace = TNamespace::Create();
  std::vector<boost::shared_ptr<ICIMClass>> classes = {cimNamespace->AddClass(TClassBuilder("A")),
                                                       cimNamespace->AddClass(TClassBuilder("B"))};
  std::string committed;
  cimNamespace->SetCommitCallback(
      [&committed](const boost::shared_ptr<const TInstance>& instance) { committed += instance->Class().Name(); });
  plugin->Query()->GetData(cimNamespace, classes);
  EXPECT_EQ(committed, "AB");
}

TEST_F(RealLibraries, OnePluginCanBeLoadedTwiceInSequence) {
  for (int i = 0; i < 2; ++i) {
    if (!kUnmaps && i == 1) break;  // a library that stays mapped runs its initialiser once
    EXPECT_EQ(loader_.Load(TestPlugin("good"))->Callbacks().GetName(), "good");
  }
  ExpectSaid(kUnmaps ? std::vector<std::string>{"good deleted", "good unloaded", "good deleted", "good unloaded"}
                     : std::vector<std::string>{"good deleted"});
}

TEST_F(RealLibraries, TwoPluginsCanCoexist) {
  fs::copy_file(TestPlugin("good"), folder_ + "/copy.so");
  auto first = loader_.Load(TestPlugin("good"));
  auto second = loader_.Load(folder_ + "/copy.so");
  EXPECT_NE(&first->Callbacks(), &second->Callbacks());
  EXPECT_EQ(first->Path(), TestPlugin("good"));
  EXPECT_EQ(second->Path(), folder_ + "/copy.so");
  first.reset();
  EXPECT_EQ(second->Callbacks().GetName(), "good");
}

TEST_F(RealLibraries, ALoadedLibraryDoesNotRegisterAgain) {
  const auto first = loader_.Load(TestPlugin("good"));
  ExpectHostError(
      EFailure::kAbsent,
      "plugin " + TestPlugin("good") + " cannot be used: it registered no plugin object while it was being loaded",
      [this] { loader_.Load(TestPlugin("good")); });
  EXPECT_EQ(first->Callbacks().GetName(), "good");
}

TEST_F(RealLibraries, TheCollectorLoadsAndUnloads) {
  const std::string path = folder_ + "/collector.so";
  fs::copy_file(COLLECTOR_PLUGIN, path);
  auto plugin = loader_.Load(path);
  EXPECT_EQ(plugin->Callbacks().GetName(), "Engineering Information Collector");
  EXPECT_NE(plugin->Query(), nullptr);
  plugin.reset();
  EXPECT_EQ(IsMapped(path), !kUnmaps);
}

TEST_F(RealLibraries, ALibraryThatNeverRegistersIsRefusedAndUnloaded) {
  ExpectUnusable(TestPlugin("silent"), "it registered no plugin object while it was being loaded");
  ExpectSaid({"silent unloaded"});
}

TEST_F(RealLibraries, ASecondRegistrationIsRefusedAndTheFirstObjectDeleted) {
  ExpectUnusable(TestPlugin("twice"), "it registered a second plugin object");
  ExpectSaid(kUnmaps ? std::vector<std::string>{"second refused", "first deleted", "second deleted", "twice unloaded"}
                     : std::vector<std::string>{"second refused", "first deleted"});
}

TEST_F(RealLibraries, ANullRegistrationIsRefused) {
  ExpectUnusable(TestPlugin("null"), "it registered a null plugin object");
  ExpectSaid({"null unloaded"});
}

TEST_F(RealLibraries, ARegistrationAfterLoadingIsRefused) {
  const auto plugin = loader_.Load(TestPlugin("late"));
  plugin->Callbacks().Init();
  ExpectSaid({"late refused"});
}

TEST_F(RealLibraries, AMissingFileIsNamed) {
  ExpectHostError(EFailure::kAbsent, "cannot open plugin " + folder_ + "/none.so: No such file or directory",
                  [this] { loader_.Load(folder_ + "/none.so"); });
}

TEST_F(RealLibraries, AFileThatIsNotALibraryIsRefused) {
  const std::string path = folder_ + "/text.so";
  std::ofstream(path) << "not a library\n";
  ExpectHostError(EFailure::kAbsent, "plugin " + path + " cannot be loaded as a library: " + path + ": file too short",
                  [&] { loader_.Load(path); });
  std::ofstream(path) << std::string(4096, 'x');
  ExpectHostError(EFailure::kAbsent,
                  "plugin " + path + " cannot be loaded as a library: " + path + ": invalid ELF header",
                  [&] { loader_.Load(path); });
}

TEST_F(RealLibraries, AFolderIsNotALibrary) {
  ExpectHostError(
      EFailure::kAbsent,
      "plugin " + folder_ + " cannot be loaded as a library: " + folder_ + ": cannot read file data: Is a directory",
      [this] { loader_.Load(folder_); });
}

// Root may read everything, so this runs as another user in a separate process.
TEST_F(RealLibraries, AFileWithoutReadPermissionIsReported) {
  const std::string path = TestPlugin("good");
  ASSERT_EQ(chmod(path.c_str(), 0), 0);
  ASSERT_EQ(chmod(folder_.c_str(), 0755), 0);
  const pid_t child = fork();
  if (child == 0) {
    if (geteuid() == 0 && setuid(65534) != 0) _exit(2);
    ExpectHostError(EFailure::kDenied, "cannot open plugin " + path + ": Permission denied",
                    [&] { loader_.Load(path); });
    _exit(HasFailure() ? 1 : 0);
  }
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
}

// Otherwise, a bare name would be looked up only in the system's library folders.
TEST_F(RealLibraries, ABareNameIsAFileInTheCurrentFolder) {
  TestPlugin("good");
  const fs::path before = fs::current_path();
  fs::current_path(folder_);
  EXPECT_EQ(loader_.Load("good.so")->Callbacks().GetName(), "good");
  fs::current_path(before);
}

using RealLibrariesDeathTest = RealLibraries;

TEST_F(RealLibrariesDeathTest, AnInitialiserThatThrowsEndsTheProcess) {
  EXPECT_EXIT(loader_.Load(TestPlugin("throwing")), testing::KilledBySignal(SIGABRT),
              "^plugin .*/throwing.so threw while it was being loaded: no licence for this server\n$");
}

}  // namespace
}  // namespace tests
