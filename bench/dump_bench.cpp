// The collector's byte dump against the same text made with one stream per value. Exits with 1 where the
// target is missed.
#include <cstdlib>
#include <sstream>
#include <vector>

#include "bench/benchsupport.h"
#include "plugin/registerdump.h"

namespace {

constexpr int kRounds = 15;
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

// Every byte value about as often as any other, in no order that a branch predictor could learn.
std::vector<unsigned char> MixedBytes(std::size_t size) {
  std::vector<unsigned char> bytes(size);
  unsigned int state = 12345;
  for (unsigned char& byte : bytes) {
    state = state * 1664525U + 1013904223U;
    byte = static_cast<unsigned char>(state >> 24U);
  }
  return bytes;
}

// Keeps the compiler from leaving the dump out.
std::size_t total = 0;

// True when the target is met.
bool Compare(const char* what, std::size_t size) {
  const std::vector<unsigned char> bytes = MixedBytes(size);
  const auto last = static_cast<unsigned long>(size - 1);
  if (torgareg::dumpBytes(bytes.data(), last) != DumpWithStreams(bytes.data(), last)) std::abort();
  const auto repeat = [&](int times, std::string (*dump)(const unsigned char*, unsigned long)) {
    return [&bytes, last, times, dump] {
      for (int i = 0; i < times; ++i) total += dump(bytes.data(), last).size();
    };
  };
  const int slow = static_cast<int>(400000 / size);
  const int fast = slow * 30;
  const auto medians = bench::Measure({{"table", repeat(fast, &torgareg::dumpBytes), static_cast<double>(size) * fast},
                                       {"streams", repeat(slow, &DumpWithStreams), static_cast<double>(size) * slow}},
                                      kRounds);
  char guide[96];
  std::snprintf(guide, sizeof guide, "%.0f MB/s against %.1f MB/s", 1e-6 / medians[0], 1e-6 / medians[1]);
  const double ratio = medians[1] / medians[0];
  bench::Report(std::string("Byte dump of ") + what + ", against one stream per value", "at least 30 times", ratio,
                guide);
  return ratio >= kTarget;
}

}  // namespace

int main() {
  const bool command = Compare("a command buffer (257 bytes)", 257);
  const bool block = Compare("a register block (4097 bytes)", 4097);
  return command && block && total > 0 ? 0 : 1;
}
