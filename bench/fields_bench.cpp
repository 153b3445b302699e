// How long it takes to decode the fields of a register, compared with printing its value with snprintf.
//
// fields_bench [--quick]
#include <array>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "bench/benchsupport.h"
#include "host/meaning/field.h"

namespace {

using namespace velhost;

constexpr double kTarget = 0.5e-6;

// 24 fields: single bits, and four of several bits whose values have texts. Eight bits are not described.
TRegisterMeaning ErrorRegister() {
  TRegisterMeaning meaning;
  meaning.role = ERole::kErrors;
  meaning.width = 64;
  for (unsigned bit = 0; bit < 20; ++bit) {
    meaning.fields.push_back({{bit, bit}, false, "Field " + std::to_string(bit), {}});
  }
  for (unsigned low = 28; low < 64; low += 9) {
    const std::vector<TValueText> texts = {{1, 1, "one"}, {2, 3, "several"}, {256, 511, "many"}};
    meaning.fields.push_back({{low + 8, low}, false, "Field " + std::to_string(low), texts});
  }
  return meaning;
}

// In an order that a branch predictor cannot learn.
std::vector<std::uint64_t> MixedValues(std::size_t count, std::uint64_t keep, std::uint32_t oneIn) {
  std::vector<std::uint64_t> values;
  std::uint64_t state = 12345;
  for (std::size_t i = 0; i < count; ++i) {
    state = state * 6364136223846793005U + 1442695040888963407U;
    const std::uint64_t mixed = (state >> 32U) * 0x9E3779B97F4A7C15U;
    values.push_back((state >> 40U) % oneIn == 0 ? mixed & keep : 0);
  }
  return values;
}

// Prevents the compiler from removing the work.
std::size_t total = 0;

void Decode(const TRegisterMeaning& meaning, const std::vector<std::uint64_t>& values) {
  for (const std::uint64_t value : values) total += DecodeFields(meaning, value).size();
}

void Print(const std::vector<std::uint64_t>& values) {
  std::array<char, 24> text;
  for (const std::uint64_t value : values) {
    total += static_cast<std::size_t>(
        std::snprintf(text.data(), text.size(), "0x%016llX", static_cast<unsigned long long>(value)));
  }
}

void Compare(const char* number, const std::string& what, const std::vector<std::uint64_t>& values, bool quick) {
  const TRegisterMeaning meaning = ErrorRegister();
  const auto count = static_cast<double>(values.size());
  const auto times =
      bench::Measure({{[&] { Decode(meaning, values); }, count}, {[&] { Print(values); }, count}}, quick ? 1 : 15);
  bench::Print(
      {number,
       fmt::format("fields of {} registers, {}: time for each, against snprintf of its value", values.size(), what),
       "< 0.5 µs", fmt::format("{:.2f}", times[0] / times[1]), times[0] < kTarget,
       fmt::format("{} against {}", bench::Microseconds(times[0]), bench::Microseconds(times[1]))});
}

}  // namespace

int main(int argc, char** argv) {
  const bool quick = bench::IsQuick(argc, argv);
  const std::size_t count = quick ? 1000 : 100000;
  Compare("10a", "one in ten not zero", MixedValues(count, 0x00000000000FFFFF, 10), quick);
  Compare("10b", "half of all bits set", MixedValues(count, 0xFFFFFFFFFFFFFFFF, 1), quick);
  return total > 0 ? 0 : 1;
}
