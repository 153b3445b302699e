// How fast the output formats are written, compared with two yardsticks measured in the same run: copying,
// and printing every byte with snprintf.
//
// output_bench [--quick]. The instances are those of a register class with twelve registers of 14 bytes;
// their text goes to a sink that copies and discards it.
#include <array>
#include <boost/make_shared.hpp>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "bench/benchsupport.h"
#include "host/meaning/field.h"
#include "host/model/ciminstance.h"
#include "host/model/cimnamespace.h"
#include "host/output/valuetext.h"
#include "host/output/writers.h"

namespace {

using namespace NKROVEL20;
using namespace velhost;
using TType = TCIMValue::TCIMType;
using TInstances = std::vector<boost::shared_ptr<TInstance>>;

constexpr int kRegisters = 12;
constexpr int kDistinct = 64;

class TDroppingSink : public ITextSink {
 public:
  TDroppingSink() : memory_(TTextBuffer::kCapacity) {}
  void Write(std::string_view text) override {
    for (std::size_t at = 0; at < text.size(); at += memory_.size()) {
      const std::string_view part = text.substr(at, memory_.size());
      std::memcpy(memory_.data(), part.data(), part.size());
      asm volatile("" : : "r"(memory_.data()) : "memory");  // prevents the compiler from removing the copy
    }
    bytes += text.size();
  }
  std::size_t bytes = 0;

 private:
  std::vector<char> memory_;
};

TPropertyDefinition Property(const std::string& name, TType type, bool isArray) {
  TPropertyDefinition property;
  property.name = name;
  property.type = type;
  property.isArray = isArray;
  return property;
}

TClassDefinition RegisterClass() {
  TClassDefinition definition;
  definition.name = "KROSG_VO_PCIIOBRIDGE_StatisticData";
  for (const char* name : {"InstanceID", "ElementName", "MachineType"}) {
    definition.properties.push_back(Property(name, TType::kString, false));
  }
  definition.properties.push_back(Property("StatisticTime", TType::kDateTime, false));
  for (int i = 0; i < kRegisters; ++i) {
    definition.properties.push_back(Property("ErrorRegister" + std::to_string(i), TType::kUint8, true));
  }
  return definition;
}

TCIMValue Register(int seed) {
  std::vector<TCIMValue> bytes;
  for (int i = 0; i < 14; ++i) bytes.emplace_back(static_cast<unsigned char>((seed * 37 + i * 61) & 0xFF));
  return TCIMValue(TType::kUint8, 14, bytes);
}

TInstances MakeInstances(TNamespace& cimNamespace) {
  const auto cimClass = cimNamespace.AddClass(RegisterClass());
  TInstances instances;
  for (int n = 0; n < kDistinct; ++n) {
    auto instance = boost::dynamic_pointer_cast<TInstance>(cimClass->CreateInstance({}));
    instance->SetProperty("InstanceID", "KROSG:KROSG_VO_PCIIOBRIDGE_StatisticData:6203:" + std::to_string(n), {});
    instance->SetProperty("ElementName", "PCI I/O bridge," + std::to_string(n), {});
    instance->SetProperty("MachineType", "6203", {});
    instance->SetProperty("StatisticTime", TCIMDateTime(2026, 1, 31, 12, 34, 56, 0, 60), {});
    for (int i = 0; i < kRegisters; ++i) {
      instance->SetProperty("ErrorRegister" + std::to_string(i), Register(n * kRegisters + i), {});
    }
    instances.push_back(instance);
  }
  return instances;
}

std::size_t Copy(std::size_t bytes) {
  const std::string block(TTextBuffer::kCapacity, 'x');
  TDroppingSink sink;
  while (sink.bytes < bytes) sink.Write(block);
  return sink.bytes;
}

// Prints every byte value with snprintf, followed by a comma.
std::size_t Print(std::size_t bytes) {
  TDroppingSink sink;
  for (unsigned int value = 0; sink.bytes < bytes; ++value) {
    std::array<char, 8> text;
    const int size = std::snprintf(text.data(), text.size(), "%u,", value & 0xFFU);
    sink.Write(std::string_view(text.data(), static_cast<std::size_t>(size)));
  }
  return sink.bytes;
}

// Four fields, one of which has a text.
TRegisterMeaning MeaningOfRegister() {
  TRegisterMeaning meaning;
  meaning.role = ERole::kErrors;
  meaning.fields = {{{3, 0}, false, "Link speed", {{15, 15, "32 GT/s"}}},
                    {{7, 4}, false, "Lanes", {}},
                    {{47, 8}, true, "Address", {}},
                    {{63, 48}, false, "Requester", {}}};
  return meaning;
}

// Of an R8 instance, of which one register is missing.
TInstanceFacts FactsOf(const TInstance& instance, const TRegisterMeaning& meaning) {
  TInstanceFacts facts;
  facts.key = instance.Class().Name() + "/node0/instance0";
  facts.origin = TOrigin{CollectorProfile::EPath::kR8, 0, 1, 0, "12 34 56 78"};
  facts.missing = {{"ErrorRegister12", {}, {EHow::kCompletionCode, 0xC3}}};
  facts.missing[0].where.address = 0x0D0160;
  facts.registers.emplace();
  for (std::uint32_t i = 0; i < kRegisters; ++i) {
    TRegisterFacts& one = facts.registers->emplace_back();
    one.property = 4 + i;
    one.place = 0x0D0100 + i * 8;
    one.value = 0x0123456789ABCDEF + i;
    one.meaning = &meaning;
    one.fields = DecodeFields(meaning, one.value);
  }
  return facts;
}

std::size_t WriteForm(EOutputForm form, const TInstances& instances, std::size_t count) {
  TDroppingSink sink;
  const auto writer = MakeWriter(form, sink, {});
  const TRegisterMeaning meaning = MeaningOfRegister();
  const TInstanceFacts facts = FactsOf(*instances.front(), meaning);
  writer->Begin({});
  for (std::size_t n = 0; n < count; ++n) writer->Instance(*instances[n % instances.size()], facts);
  writer->End({});
  return sink.bytes;
}

struct TCounts {
  std::size_t instances;
  std::size_t yardstick;  ///< number of bytes copied and printed as yardsticks
  int rounds;
};

void ReportForm(const char* number, const std::string& name, double target, const TInstances& instances,
                const TCounts& counts) {
  const EOutputForm form = *FormByName(name);
  const double bytes =
      static_cast<double>(WriteForm(form, instances, 1000)) / 1000 * static_cast<double>(counts.instances);
  const long before = bench::PeakMemory();
  const auto yardstick = static_cast<double>(counts.yardstick);
  const auto times = bench::Measure({{[&] { WriteForm(form, instances, counts.instances); }, bytes},
                                     {[&] { Copy(counts.yardstick * 16); }, yardstick * 16},
                                     {[&] { Print(counts.yardstick); }, yardstick}},
                                    counts.rounds);
  const double rate = 1e-6 / times[0];
  bench::Print(
      {number,
       fmt::format("{} instances as {}: bytes per second, against snprintf of each byte", counts.instances, name),
       target > 0 ? fmt::format("{:.0f} MB/s", target) : "", fmt::format("{:.1f}", times[2] / times[0]), rate >= target,
       fmt::format("{:.0f} MB/s; copying {:.0f}, snprintf {:.0f} MB/s; {:.0f} MB of text, peak memory "
                   "+{:.0f} KiB",
                   rate, 1e-6 / times[1], 1e-6 / times[2], bytes / 1e6,
                   static_cast<double>(bench::PeakMemory() - before) / 1024)});
}

}  // namespace

int main(int argc, char** argv) {
  const bool quick = bench::IsQuick(argc, argv);
  const TCounts counts = quick ? TCounts{1000, 1U << 12U, 1} : TCounts{100000, 1U << 22U, 3};
  const auto cimNamespace = TNamespace::Create();
  const TInstances instances = MakeInstances(*cimNamespace);
  ReportForm("9a", "json", 100, instances, counts);
  ReportForm("9b", "mof", 100, instances, counts);
  ReportForm("9c", "cimxml", 100, instances, counts);
  ReportForm("9d", "jsonl", 0, instances, counts);
  ReportForm("9e", "table", 0, instances, counts);
  return 0;
}
