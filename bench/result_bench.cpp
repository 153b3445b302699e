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

// Every tenth instance has one register with the value of the seed, so that results of different seeds differ.
std::string RegisterText(std::size_t instance, std::size_t number, unsigned seed) {
  const bool differs = instance % 10 == 0 && number == 7;
  return fmt::format(
      R"("Register_{:03}":{{"address":"0x{:06X}","width":64,"value":"0x{:016X}","role":"errors","fields":[)"
      R"({{"bits":"0","name":"Parity error","value":1}},{{"bits":"5:4","name":"Link speed","value":2,"text":"5 GT/s"}}]}})",
      number, number * 8, std::uint64_t{0x21} + (differs ? seed << 8U : 0));
}

std::string InstanceText(std::size_t instance, unsigned seed) {
  std::string properties;
  std::string registers;
  for (std::size_t i = 0; i < kRegistersOfInstance; ++i) {
    properties += fmt::format(R"({}"Register_{:03}":[0,0,{},0,0,0,33,0,0,0,0,0,0,0])", i == 0 ? "" : ",", i, i);
    registers += (i == 0 ? "" : ",") + RegisterText(instance, i, seed);
  }
  return fmt::format(
      R"({{"kind":"instance","class":"KROSG_A","key":"KROSG_A/node0/instance{0}","origin":{{"path":"r8","node":0,)"
      R"("chip":0,"instance":{0}}},"properties":{{{1}}},"registers":{{{2}}}}})",
      instance, properties, registers);
}

TStoredBytes ResultText(std::size_t instances, unsigned seed) {
  std::string text =
      R"({"kind":"instancecollection","format_version":2,"source":{"sp":["sim"],"target":"sim","simulated":true},)"
      R"("machine_type":"4411","plugin":{"name":"N","version":"1","interface_version":"1"},)"
      R"("schema":{"paths":[],"sha256":"ab","example":false},"instances":[)";
  for (std::size_t i = 0; i < instances; ++i) text += (i == 0 ? "\n" : ",\n") + InstanceText(i, seed);
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

}  // namespace

int main(int argc, char** argv) {
  const bool quick = bench::IsQuick(argc, argv);
  const std::size_t instances = quick ? 20 : 2000;
  const TStoredBytes before = ResultText(instances, 1);
  const TStoredBytes after = ResultText(instances, 2);
  const auto size = static_cast<double>(before.Size());
  const int rounds = quick ? 1 : 5;
  const auto reading = bench::Measure({{[&] { Read(before); }, size}, {[&] { CountBraces(before); }, size}}, rounds);
  const std::string registers = fmt::format("{} registers", instances * kRegistersOfInstance);
  bench::Print({"12a", "reading a result of " + registers + ", against a copy of its text whose braces are counted",
                "≥ 100 MB/s", fmt::format("{:.1f}", reading[0] / reading[1]), reading[0] < 1 / kLeastSpeed,
                fmt::format("{:.0f} MB/s against {:.0f} MB/s", 1e-6 / reading[0], 1e-6 / reading[1])});
  const auto comparing = bench::Measure(
      {{[&] { Compare(before, after); }, size * 2}, {[&] { ReadBoth(before, after); }, size * 2}}, rounds);
  bench::Print({"12b", "comparing two results of " + registers + ", against reading both", "≤ 2",
                fmt::format("{:.2f}", comparing[0] / comparing[1]), comparing[0] <= 2 * comparing[1],
                fmt::format("{:.0f} MB/s against {:.0f} MB/s", 1e-6 / comparing[0], 1e-6 / comparing[1])});
  return total > 0 ? 0 : 1;
}
