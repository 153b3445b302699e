// A sweep over many registers of a simulated server that answers every address: checks that time and memory
// grow in proportion to their number.
//
// sweep_bench [--quick]
#include <sys/wait.h>
#include <unistd.h>

#include <cmath>
#include <cstdlib>

#include "bench/benchsupport.h"
#include "bench/collectorsupport.h"
#include "host/base/sourcereader.h"
#include "host/bmc/sim/serverfile.h"
#include "host/bmc/sim/simulatedserver.h"
#include "host/bmc/supervision.h"
#include "host/output/writers.h"
#include "tests/support/memoryreader.h"

using namespace NKROVEL20;
using namespace velhost;
using tests::TMemoryReader;

namespace {

constexpr int kRegistersOfInstance = 100;
constexpr int kSmall = 1000;
constexpr int kLarge = 100000;

const char* const kServer = R"(machine_type = "6203"
unlisted_registers = "pattern"
[[bmc_node]]
timestamp = "12 34 56 78"
)";

class TDroppingSink : public ITextSink {
 public:
  void Write(std::string_view text) override { bytes += text.size(); }
  std::size_t bytes = 0;
};

TServerFile MakeServer() {
  TMemoryReader reader;
  reader.Add("server.toml", kServer);
  return ReadServerFile("server.toml", reader);
}

/// Works like the command: every exchange is supervised, and the instances of the request are collected and
/// written after it has ended.
class TSweep {
 public:
  explicit TSweep(int registers) : registers_(registers) {
    bench::AddR8Class(*schema_, kRegistersOfInstance, registers / kRegistersOfInstance);
    schema_->SetCommitCallback([this](const boost::shared_ptr<const TInstance>& i) { instances_.push_back(i); });
  }

  void Run() {
    torgareg::TTORGARegPluginCallbacks plugin;
    bench::Collect(plugin, schema_, bench::kR8Class);
    TDroppingSink sink;
    const auto writer = MakeWriter(EOutputForm::kJson, sink, {});
    writer->Begin({});
    for (const auto& instance : instances_) writer->Instance(*instance, {});
    writer->End({});
    if (instances_.size() != static_cast<std::size_t>(registers_ / kRegistersOfInstance)) std::abort();
    instances_.clear();
  }

 private:
  int registers_;
  TSimulatedServer server_{MakeServer()};
  TSupervisedServiceProcessor supervised_{server_};
  bench::THost host_{supervised_};
  boost::shared_ptr<TNamespace> schema_ = bench::MakeSchema();
  std::vector<boost::shared_ptr<const TInstance>> instances_;
};

/// The growth of peak memory during a sweep in a separate process, in bytes per register.
double MemoryOf(int registers) {
  std::array<int, 2> ends{};
  if (pipe(ends.data()) != 0) std::abort();
  const pid_t child = fork();
  if (child == 0) {
    TSweep(kRegistersOfInstance).Run();
    const long before = bench::PeakMemory();
    TSweep(registers).Run();
    const double grown = static_cast<double>(bench::PeakMemory() - before) / registers;
    std::_Exit(write(ends[1], &grown, sizeof grown) == sizeof grown ? 0 : 1);
  }
  double grown = 0;
  if (read(ends[0], &grown, sizeof grown) != sizeof grown) std::abort();
  waitpid(child, nullptr, 0);
  close(ends[0]);
  close(ends[1]);
  return grown;
}

void CompareMemory(bool quick) {
  const double half = MemoryOf(quick ? kSmall : kLarge / 2);
  const double whole = MemoryOf(quick ? 2 * kSmall : kLarge);
  const double ratio = whole / half;
  bench::Print({"6b", "memory for each register in a sweep of 100,000, against one of 50,000", "0.8 to 1.2",
                fmt::format("{:.2f}", ratio), std::abs(ratio - 1) <= 0.2,
                fmt::format("{:.0f} bytes against {:.0f} bytes", whole, half)});
}

void CompareTime(bool quick) {
  const auto sweep = [](int registers, int repeated) {
    return [registers, repeated] {
      for (int i = 0; i < repeated; ++i) TSweep(registers).Run();
    };
  };
  const int many = quick ? 2 * kSmall : kLarge;
  const int repeated = quick ? 1 : 20;
  const auto times = bench::Measure(
      {{sweep(kSmall, repeated), static_cast<double>(kSmall) * repeated}, {sweep(many, 1), static_cast<double>(many)}},
      quick ? 1 : 11);
  const double ratio = times[1] / times[0];
  bench::Print({"6a", "processor time for each register in a sweep of 100,000, against one of 1,000", "0.8 to 1.2",
                fmt::format("{:.2f}", ratio), std::abs(ratio - 1) <= 0.2,
                bench::Microseconds(times[1]) + " against " + bench::Microseconds(times[0])});
}

}  // namespace

int main(int argc, char** argv) {
  const bool quick = bench::IsQuick(argc, argv);
  CompareMemory(quick);
  CompareTime(quick);
  return 0;
}
