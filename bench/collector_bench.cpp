// The overhead of the collector apart from I/O, with a service processor that answers at once.
//
// collector_bench [--quick | ROW]; with the number of a row, only that one is run, for use with perf.
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <sstream>

#include "bench/benchsupport.h"
#include "bench/collectorsupport.h"
#include "jfr/TJFRErrorData.h"
#include "wire/registerblock.h"
#include "wire/registerread.h"
#include "wire/storagearea.h"

using namespace NKROVEL20;
using namespace velhost;

namespace {

constexpr int kRegisters = 1000;
constexpr int kJfrRegisters = 50;
constexpr std::uint32_t kSmallFile = 128U << 10U;
constexpr std::uint32_t kLargeFile = 1U << 20U;

// Answers registers, timestamps, blocks and one storage area of a configurable size.
class TInstantServiceProcessor : public IServiceProcessor {
 public:
  TInstantServiceProcessor() : block(wire::RegisterBlockCommand::kBlockSize) {
    for (std::size_t i = 0; i < block.size(); ++i) block[i] = static_cast<std::uint8_t>(i * 37 + 1);
  }

  std::vector<std::uint8_t> block;  // its first header has month 75; any but 0 will do
  std::uint32_t areaSize = 0;

  TDiscovery Discover() override { return {1, true, true, true, 1}; }

  std::optional<TIpmiAnswer> SendIpmi(const TIpmiRequest& request, const TStopSignal&) override {
    TIpmiAnswer answer;
    if (request.NetworkFunction() == wire::StorageArea::kNetworkFunction) {
      AnswerStorageArea(request, answer.data);
    } else {
      answer.data.resize(wire::RegisterRead::kResponseSize);
      for (std::size_t i = 0; i < answer.data.size(); ++i) answer.data[i] = static_cast<std::uint8_t>(100 + 11 * i);
    }
    return answer;
  }

  std::optional<TDotAnswer> SendDot(const TDotRequest&, const TStopSignal&) override { return TDotAnswer{block}; }

 private:
  void AnswerStorageArea(const TIpmiRequest& request, std::vector<std::uint8_t>& data) const {
    namespace Wire = wire::StorageArea;
    data.assign(Wire::kManufacturerId.begin(), Wire::kManufacturerId.end());
    if (request.Buffer()[Wire::kSubCommand] == Wire::kRead) {
      data.insert(data.end(), {10, 0});
      data.insert(data.end(), 10, 0xA5);
      return;
    }
    for (int i = 0; i < 4; ++i) data.push_back(static_cast<std::uint8_t>(areaSize >> (8 * i)));
  }
};

// The texts of one register read as formatted by the baseline: one stream per value.
std::string StreamPerValue(const unsigned char* data, unsigned long last) {
  std::string text;
  for (unsigned long i = 0; i <= last; ++i) {
    if (i % 8 == 0) text += "\n";
    std::ostringstream stream;
    stream << static_cast<unsigned int>(data[i]);
    text += stream.str() + " ";
  }
  return text + "\n";
}

std::size_t StreamedRegister() {
  wire::TCommandBuffer buffer(wire::RegisterRead::kNetworkFunction, wire::RegisterRead::kRegisterRead, 4);
  std::size_t size = StreamPerValue(buffer.Data(), wire::TCommandBuffer::kSize).size();
  for (std::size_t i = 0; i < 14; ++i) buffer[9 + i] = static_cast<std::uint8_t>(100 + 11 * i);
  size += StreamPerValue(buffer.Data(), wire::TCommandBuffer::kSize).size();
  return size + StreamPerValue(buffer.Data() + 9, 14).size();
}

class TCollectorBench {
 public:
  explicit TCollectorBench(bool quick) : quick_(quick), host_(serviceProcessor_) {
    bench::AddR8Class(*schema_, kRegisters, 1);
    bench::AddJfrClass(*schema_, kJfrRegisters);
    bench::AddCaptureClass(*schema_);
  }

  void R8() {
    torgareg::TTORGARegPluginCallbacks plugin;
    const int streamed = quick_ ? 1 : 100;
    const auto times = bench::Measure({{[&] {
                                          for (int i = 0; i < streamed; ++i) sink_ += StreamedRegister();
                                        },
                                        static_cast<double>(streamed)},
                                       {[&] { bench::Collect(plugin, schema_, bench::kR8Class); }, kRegisters}},
                                      quick_ ? 1 : 41);
    const double ratio = times[0] / times[1];
    bench::Print({"1",
                  "one R8 register through the whole plugin: processor time, against its texts formatted with one "
                  "stream per value",
                  "≥ 25", fmt::format("{:.1f}", ratio), ratio >= 25,
                  bench::Microseconds(times[1]) + " against " + bench::Microseconds(times[0])});
  }

  void Jfr() {
    torgareg::TTORGARegPluginCallbacks plugin;
    std::vector<unsigned char> block = serviceProcessor_.block;
    block.push_back(0);  // the dump is inclusive
    const int repeated = quick_ ? 1 : 100;
    const auto dump = [&] {
      for (int i = 0; i < repeated; ++i) sink_ += torgareg::print2Array(block.data(), block.size() - 1).size();
    };
    const auto collect = [&] {
      for (int i = 0; i < repeated; ++i) bench::Collect(plugin, schema_, bench::kJfrClass);
    };
    const TCIMValue array(TCIMValue::TCIMType::kUint8, 1, {TCIMValue(static_cast<unsigned char>(7))});
    const auto hostCalls = [&] {
      for (int i = 0; i < repeated; ++i) bench::JfrHostCalls(schema_, array);
    };
    const auto values = [&] {
      for (int i = 0; i < repeated; ++i) sink_ += bench::JfrValues(kJfrRegisters);
    };
    const boost::shared_ptr<ICIMClass> counted = schema_->FindClass(bench::kJfrClass);
    const auto bookkeeping = [&] {
      for (int i = 0; i < repeated; ++i) bench::JfrBookkeeping(kJfrRegisters, counted);
    };
    const auto each = static_cast<double>(repeated);
    const auto times = bench::Measure(
        {{dump, each}, {collect, each}, {hostCalls, each}, {values, each}, {bookkeeping, each}}, quick_ ? 1 : 41);
    const double ratio = times[1] / times[0];
    PrintPart("3a", "part of row 3: the host calls alone, with values made beforehand", times[2], times[0]);
    PrintPart("3b", "part of row 3: the values alone, each built from fourteen elements and printed", times[3],
              times[0]);
    PrintPart("3c",
              "part of row 3: the bookkeeping of 3a and 3b alone: counting pointers, allocating and freeing memory",
              times[4], times[0]);
    bench::Print({"3", "one JFR instance of 50 registers from a block in memory, against the dump of that block", "≤ 3",
                  fmt::format("{:.1f}", ratio), ratio <= 3,
                  bench::Microseconds(times[1]) + " against " + bench::Microseconds(times[0])});
  }

  void CaptureFiles() {
    torgareg::TTORGARegPluginCallbacks plugin;
    const auto run = [&](std::uint32_t size) { ReadFile(plugin, size); };
    const auto times = bench::Measure({{[&] { run(kSmallFile); }}, {[&] { run(kLargeFile); }}}, quick_ ? 1 : 11);
    const double ratio = times[1] / times[0];
    bench::Print({"4a", "a capture file of 1 MiB in chunks of ten bytes: processor time, against one of 128 KiB",
                  "≤ 10", fmt::format("{:.1f}", ratio), ratio <= 10,
                  fmt::format("{:.1f} ms against {:.1f} ms", times[1] * 1e3, times[0] * 1e3)});
  }

  // Runs in a separate process, because this one has already reached a higher peak.
  void CaptureFileMemory() {
    const pid_t child = fork();
    if (child == 0) {
      MeasureCaptureFileMemory();
      std::_Exit(0);
    }
    waitpid(child, nullptr, 0);
  }

  // Has no target: a part of row 3, in units of dumps of a block.
  static void PrintPart(const char* number, const char* what, double part, double dump) {
    bench::Print({number, what, "", fmt::format("{:.1f}", part / dump), true, bench::Microseconds(part)});
  }

  bool MadeSomething() const { return sink_ + host_.logger.bytes > 0; }

 private:
  void ReadFile(torgareg::TTORGARegPluginCallbacks& plugin, std::uint32_t size) {
    serviceProcessor_.areaSize = size;
    plugin.ReadErrFFDC(schema_, "cpu_err");
  }

  void MeasureCaptureFileMemory() {
    torgareg::TTORGARegPluginCallbacks plugin;
    ReadFile(plugin, 10);
    constexpr std::uint32_t kFile = 32U << 20U;  // large enough that pages and memory pools do not matter
    const long before = bench::PeakMemory();
    ReadFile(plugin, quick_ ? kLargeFile : kFile);
    const double grown = static_cast<double>(bench::PeakMemory() - before);
    const double ratio = grown / (quick_ ? kLargeFile : kFile);
    bench::Print({"4b", "a capture file of 32 MiB: growth of the peak memory, against the file's size", "≤ 12",
                  fmt::format("{:.1f}", ratio), ratio <= 12, fmt::format("{:.0f} MiB", grown / 0x1p20)});
  }

  bool quick_;
  TInstantServiceProcessor serviceProcessor_;
  bench::THost host_;
  boost::shared_ptr<TNamespace> schema_ = bench::MakeSchema();
  std::size_t sink_ = 0;
};

}  // namespace

int main(int argc, char** argv) {
  const bool quick = bench::IsQuick(argc, argv);
  const std::string only = argc > 1 && !quick ? argv[1] : "";
  TCollectorBench collector(quick);
  if (only.empty() || only == "1") collector.R8();
  if (only.empty() || only == "3") collector.Jfr();
  if (only.empty() || only == "4") collector.CaptureFileMemory();
  if (only.empty() || only == "4") collector.CaptureFiles();
  return collector.MadeSomething() ? 0 : 1;
}
