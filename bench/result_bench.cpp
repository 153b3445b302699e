// How fast a result is read back, compared with counting its braces, and how long a comparison of two results takes,
// compared with reading both.
//
// result_bench [--quick]
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "bench/benchsupport.h"
#include "host/change/comparedside.h"
#include "host/change/resultdiff.h"
#include "host/readback/resultreader.h"

namespace {

using namespace velhost;

constexpr double kLeastSpeed = 100e6;  // bytes a second
constexpr std::size_t kRegistersOfInstance = 50;

/// Which results are made: one register of each `oneIn`-th instance has the seed in its value.
struct TVariety {
  unsigned seed = 1;
  std::size_t oneIn = 1;
};

std::string RegisterText(std::size_t instance, std::size_t number, TVariety variety) {
  const bool differs = instance % variety.oneIn == 0 && number == 7;
  return fmt::format(
      R"("Register_{:03}":{{"address":"0x{:06X}","width":64,"value":"0x{:016X}","role":"errors","fields":[)"
      R"({{"bits":"0","name":"Parity error","value":1}},{{"bits":"5:4","name":"Link speed","value":2,"text":"5 GT/s"}}]}})",
      number, number * 8, std::uint64_t{0x21} + (differs ? variety.seed << 8U : 0));
}

std::string InstanceText(std::size_t instance, TVariety variety) {
  std::string properties;
  std::string registers;
  for (std::size_t i = 0; i < kRegistersOfInstance; ++i) {
    properties += fmt::format(R"({}"Register_{:03}":[0,0,{},0,0,0,33,0,0,0,0,0,0,0])", i == 0 ? "" : ",", i, i);
    registers += (i == 0 ? "" : ",") + RegisterText(instance, i, variety);
  }
  return fmt::format(
      R"({{"kind":"instance","class":"KROSG_A","key":"KROSG_A/node0/instance{0}","origin":{{"path":"r8","node":0,)"
      R"("chip":0,"instance":{0}}},"properties":{{{1}}},"registers":{{{2}}}}})",
      instance, properties, registers);
}

TStoredBytes ResultText(std::size_t instances, TVariety variety) {
  std::string text =
      R"({"kind":"instancecollection","format_version":2,"source":{"sp":["sim"],"target":"sim","simulated":true},)"
      R"("machine_type":"4411","plugin":{"name":"N","version":"1","interface_version":"1"},)"
      R"("schema":{"paths":[],"sha256":"ab","example":false},"instances":[)";
  for (std::size_t i = 0; i < instances; ++i) text += (i == 0 ? "\n" : ",\n") + InstanceText(i, variety);
  text +=
      R"(],"status":"complete","exit_status":0,"reasons":[],"exchanges":{"total":0,"failed":[]},"unread":[],"findings":[],)"
      R"("run":{"id":"i","started":"s","elapsed_ms":0,"host":"h","velhost":"v","labels":{}}})";
  return std::vector<std::uint8_t>(text.begin(), text.end());
}

// Prevents the compiler from removing the work.
std::size_t total = 0;

void Read(const TStoredBytes& text) { total += TResultReader("r", text, EReadDetail::kAll).Result().instances; }

void CountBraces(const TStoredBytes& text) {
  const std::vector<std::uint8_t> bytes = text.Read(0, text.Size());
  total += static_cast<std::size_t>(std::count(bytes.begin(), bytes.end(), '{'));
}

void ReadBoth(const TStoredBytes& before, const TStoredBytes& after) {
  for (const TStoredBytes& text : {before, after}) TComparedSide("r", text, nullptr);
}

void Compare(const TStoredBytes& before, const TStoredBytes& after) {
  TComparedSide one("before", before, nullptr);
  TComparedSide other("after", after, nullptr);
  total += CompareResults(one, other).Count();
}

void CompareWithReading(const char* number, const std::string& what, std::size_t instances, std::size_t oneIn,
                        bool quick) {
  const TStoredBytes before = ResultText(instances, {1, oneIn});
  const TStoredBytes after = ResultText(instances, {2, oneIn});
  const auto size = static_cast<double>(before.Size() + after.Size());
  const auto times = bench::Measure({{[&] { Compare(before, after); }, size}, {[&] { ReadBoth(before, after); }, size}},
                                    quick ? 1 : 5);
  bench::Print({number,
                fmt::format("comparing two results of {} registers, {}, against reading both",
                            instances * kRegistersOfInstance, what),
                "≤ 2", fmt::format("{:.2f}", times[0] / times[1]), times[0] <= 2 * times[1],
                fmt::format("{:.0f} MB/s against {:.0f} MB/s", 1e-6 / times[0], 1e-6 / times[1])});
}

}  // namespace

int main(int argc, char** argv) {
  const bool quick = bench::IsQuick(argc, argv);
  const std::size_t instances = quick ? 20 : 2000;
  const TStoredBytes text = ResultText(instances, {});
  const auto size = static_cast<double>(text.Size());
  const auto times = bench::Measure({{[&] { Read(text); }, size}, {[&] { CountBraces(text); }, size}}, quick ? 1 : 5);
  bench::Print({"12a",
                fmt::format("reading a result of {} registers, against a copy of its text whose braces are counted",
                            instances * kRegistersOfInstance),
                "≥ 100 MB/s", fmt::format("{:.1f}", times[0] / times[1]), times[0] < 1 / kLeastSpeed,
                fmt::format("{:.0f} MB/s against {:.0f} MB/s", 1e-6 / times[0], 1e-6 / times[1])});
  CompareWithReading("12b", "of which one instance in ten has changed", instances, 10, quick);
  CompareWithReading("12c", "every instance of which has changed", instances, 1, quick);
  return total > 0 ? 0 : 1;
}
