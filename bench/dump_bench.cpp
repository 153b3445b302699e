// The collector's byte dump, compared with the same text made with one stream per value.
//
// dump_bench [--quick]
#include <cstdlib>
#include <sstream>
#include <vector>

#include "bench/benchsupport.h"
#include "plugin/registerdump.h"

namespace {

constexpr double kTarget = 30;

std::string DumpWithStreams(const unsigned char* data, unsigned long last) {
  std::string text;
  for (unsigned long i = 0; i <= last; ++i) {
    if (i % 8 == 0) text += '\n';
    std::ostringstream value;
    value << static_cast<unsigned int>(data[i]);
    text += value.str() + ' ';
  }
  return text + '\n';
}

// Every byte value about equally often, in an order that a branch predictor cannot learn.
std::vector<unsigned char> MixedBytes(std::size_t size) {
  std::vector<unsigned char> bytes(size);
  unsigned int state = 12345;
  for (unsigned char& byte : bytes) {
    state = state * 1664525U + 1013904223U;
    byte = static_cast<unsigned char>(state >> 24U);
  }
  return bytes;
}

// Prevents the compiler from removing the dump.
std::size_t total = 0;

void Compare(const char* number, const char* what, std::size_t size, bool quick) {
  const std::vector<unsigned char> bytes = MixedBytes(size);
  const auto last = static_cast<unsigned long>(size - 1);
  if (torgareg::dumpBytes(bytes.data(), last) != DumpWithStreams(bytes.data(), last)) std::abort();
  const auto repeat = [&](int times, std::string (*dump)(const unsigned char*, unsigned long)) {
    return [&bytes, last, times, dump] {
      for (int i = 0; i < times; ++i) total += dump(bytes.data(), last).size();
    };
  };
  const int slow = quick ? 1 : static_cast<int>(400000 / size);
  const int fast = slow * 30;
  const auto medians = bench::Measure({{repeat(fast, &torgareg::dumpBytes), static_cast<double>(size) * fast},
                                       {repeat(slow, &DumpWithStreams), static_cast<double>(size) * slow}},
                                      quick ? 1 : 15);
  const double ratio = medians[1] / medians[0];
  bench::Print({number, std::string("dump of ") + what + ": bytes per second, against one stream per value", "≥ 30",
                fmt::format("{:.0f}", ratio), ratio >= kTarget,
                fmt::format("{:.0f} MB/s against {:.1f} MB/s", 1e-6 / medians[0], 1e-6 / medians[1])});
}

}  // namespace

int main(int argc, char** argv) {
  const bool quick = bench::IsQuick(argc, argv);
  Compare("2a", "a command buffer (257 bytes)", 257, quick);
  Compare("2b", "a register block (4097 bytes)", 4097, quick);
  return total > 0 ? 0 : 1;
}
