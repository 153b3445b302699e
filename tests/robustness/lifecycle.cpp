// The built plugin over a long life: loaded, used and unloaded repeatedly; used repeatedly; next to a second plugin
// object, of another library or of the same one; used after DeInit. Compares what the process holds before and after:
// blocks from operator new, bytes from malloc, descriptors, mappings.
//
//   GLIBC_TUNABLES=glibc.malloc.tcache_count=0 lifecycle PLUGIN [--quick]
//
// With this tunable, malloc's statistics count freed blocks as free at once.
#include <malloc.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <memory>
#include <set>

#include "host/bmc/iserviceprocessor.h"
#include "host/bmc/sim/simulatedserver.h"
#include "host/model/hostservices.h"
#include "host/plugins/pluginloader.h"
#include "plugin/torgaplugin.h"
#include "tests/robustness/allocation.h"
#include "tests/robustness/collection.h"
#include "tests/support/temporaryfolder.h"

namespace {

using namespace NKROVEL20;
using namespace velhost;
namespace fs = std::filesystem;

// Sanitizer builds keep libraries mapped, and a mapped library is not initialised again. The statistics of
// malloc do not cover the sanitizer's own malloc.
#ifdef VELHOST_SANITIZED
constexpr bool kUnloads = false;
#else
constexpr bool kUnloads = true;
#endif

// The logging singleton created by each load is never deleted: one block of malloc's smallest size.
constexpr long kLoggerBytes = 32;
// A block may be up to sixteen bytes larger than requested if the remainder would be too small for a block.
constexpr long kSlackBytes = 4096;

struct THoldings {
  long blocks = 0;
  long bytes = 0;
  long descriptors = 0;
  long mappings = 0;
};

THoldings Measure() {
  THoldings now;
  now.blocks = allocation::LiveBlocks();
  const struct mallinfo2 info = mallinfo2();
  now.bytes = static_cast<long>(info.uordblks + info.hblkhd);
  now.descriptors = std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator());
  std::ifstream maps("/proc/self/maps");
  for (std::string line; std::getline(maps, line);) ++now.mappings;
  return now;
}

class TEnvironment : public IHostEnvironment {
 public:
  std::string MachineType() override { return "6203"; }
  TCIMDateTime LocalTime() override { return {2026, 1, 31, 12, 34, 56, 0, 60}; }
};

class TLife : public ILogger {
 public:
  explicit TLife(std::string plugin)
      : plugin_(std::move(plugin)), server_(sweep::MakeServer("6203")), schema_(sweep::MakeSchema("6203")) {
    THostServices::SetCoreLogger(this);
    THostServices::SetEnvironment(&environment_);
    TServiceProcessorHub::Install(&server_, nullptr);
    schema_->SetCommitCallback([this](const boost::shared_ptr<const TInstance>& instance) {
      ++committed_;
      text_ += sweep::KeyOf(*instance) + "\n" + sweep::TextOf(*instance);
      const std::string number = sweep::PropertyText(*instance, "RecordID");
      if (!number.empty()) numbers_.push_back(number);
    });
    for (const std::string& name : sweep::AllClasses()) classes_.push_back(schema_->FindClass(name));
    text_.reserve(size_t{1} << 16U);
    numbers_.reserve(64);
    expected_ = Ask(*loader_.Load(plugin_));
    Expect(committed_ == sweep::kInstances, "the first collection has not all instances");
  }
  ~TLife() override {
    TServiceProcessorHub::Install(nullptr, nullptr);
    THostServices::SetEnvironment(nullptr);
    THostServices::SetCoreLogger(nullptr);
  }
  void Log(EVELLogSeverity /*severity*/, const std::string& /*message*/) override { ++lines_; }

  void Loads(long count) {
    if (!kUnloads) return;
    Repeat("load, collect, unload", count, 1, [this] { Compare(Ask(*loader_.Load(plugin_))); });
  }

  void Collections(long count) {
    const auto plugin = LoadCopy("collections");
    Repeat("collect", count, 0, [this, &plugin] { Compare(Ask(*plugin)); });
  }

  void SecondLibrary() {
    const auto first = LoadCopy("first");
    const auto second = LoadCopy("second");
    first->Callbacks().Init();
    second->Callbacks().Init();
    InTurn(
        "two libraries", [&] { return GetData(*first); }, [&] { return GetData(*second); });
  }

  // Two plugin objects of the collector that is linked into this program.
  void SecondObject() {
    torgareg::TTORGARegPluginCallbacks first;
    torgareg::TTORGARegPluginCallbacks second;
    first.Init();
    second.Init();
    InTurn(
        "two objects of a library", [&] { return GetData(first); }, [&] { return GetData(second); });
    first.DeInit();
    second.DeInit();
  }

  // The order of calls is not checked, and the numbering continues.
  void AfterDeInit() {
    const auto plugin = LoadCopy("after");
    Compare(Ask(*plugin));
    const long before = asked_;
    Compare(GetData(*plugin));
    Expect(numbers_.front() == "6", "DeInit touched the numbering");
    std::printf("  %-24s %7ld collections\n", "GetData after DeInit", asked_ - before);
  }

  long Failures() const { return failures_; }

 private:
  // A library that is already loaded does not register again, so each object uses a separate copy.
  std::unique_ptr<TLoadedPlugin> LoadCopy(const std::string& name) {
    const std::string copy = folder_.Path().string() + "/" + name + ".so";
    fs::copy_file(plugin_, copy);
    return loader_.Load(copy);
  }

  // Each object has its own numbering of capture files.
  void InTurn(const char* what, const std::function<std::string()>& first, const std::function<std::string()>& second) {
    const long before = asked_;
    for (const char* number : {"0", "6"}) {
      for (const auto* ask : {&first, &second}) {
        Compare((*ask)());
        Expect(numbers_.front() == number, "the second object counts the first one's files");
      }
    }
    std::printf("  %-24s %7ld collections\n", what, asked_ - before);
  }

  std::string GetData(TLoadedPlugin& plugin) { return GetData(*plugin.Query()); }
  std::string GetData(IPluginBasicQueryCallbacks& plugin) {
    ++asked_;
    text_.clear();
    numbers_.clear();
    plugin.GetData(schema_, classes_);
    return text_;
  }
  std::string Ask(TLoadedPlugin& plugin) {
    plugin.Callbacks().Init();
    std::string text = GetData(plugin);
    plugin.Callbacks().DeInit();
    return text;
  }

  void Repeat(const char* what, long count, long loggers, const std::function<void()>& action) {
    constexpr long kWarmUp = 20;
    for (long i = 0; i < kWarmUp; ++i) action();
    const THoldings before = Measure();
    const auto start = std::chrono::steady_clock::now();
    long done = 0;
    for (; done < count; ++done) action();
    const auto elapsed = std::chrono::duration<double>(std::chrono::steady_clock::now() - start);
    const THoldings after = Measure();
    std::printf("  %-24s %7ld times: %+ld blocks, %+ld bytes, %+ld descriptors, %+ld mappings, %.1f s\n", what, done,
                after.blocks - before.blocks, after.bytes - before.bytes, after.descriptors - before.descriptors,
                after.mappings - before.mappings, elapsed.count());
    Expect(after.blocks - before.blocks == loggers * count, "blocks are left behind");
    const long grown = after.bytes - before.bytes - loggers * count * kLoggerBytes;
    Expect(grown <= kSlackBytes || !kUnloads, "memory grows");
    Expect(after.descriptors == before.descriptors, "descriptors are left open");
    Expect(after.mappings == before.mappings || !kUnloads, "mappings are left behind");
  }

  void Compare(const std::string& text) { Expect(text == expected_, "the instances are not those of the first time"); }
  void Expect(bool holds, const char* failure) {
    if (!holds && ++failures_ <= 20) std::cerr << "FAILED: " << failure << "\n";
  }

  tests::TTemporaryFolder folder_;
  std::string plugin_;
  TEnvironment environment_;
  TSimulatedServer server_;
  boost::shared_ptr<TNamespace> schema_;
  std::vector<boost::shared_ptr<ICIMClass>> classes_;
  TDynamicLibraryLoader libraries_;
  TPluginLoader loader_{libraries_};
  std::string text_;
  std::vector<std::string> numbers_;
  std::string expected_;
  long lines_ = 0;
  long asked_ = 0;
  std::size_t committed_ = 0;
  long failures_ = 0;
};

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    std::cerr << "usage: lifecycle PLUGIN [--quick]\n";
    return 64;
  }
  const bool quick = argc > 2 && std::strcmp(argv[2], "--quick") == 0;
  TLife life(argv[1]);
  life.Loads(quick ? 200 : 10'000);
  life.Collections(quick ? 500 : 100'000);
  life.SecondLibrary();
  life.SecondObject();
  life.AfterDeInit();
  std::printf("%ld failures\n", life.Failures());
  return life.Failures() == 0 ? 0 : 1;
}
