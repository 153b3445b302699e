// How fast the output forms are written, beside two yardsticks measured in the same run: copying, and
// printing every byte with snprintf.
//
// output_bench [INSTANCES], 100000 unless given. The instances are those of a register class with
// twelve registers of 14 bytes; their text goes to a sink that copies it and drops it.
#include <sys/resource.h>

#include <array>
#include <boost/make_shared.hpp>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "bench/benchsupport.h"
#include "host/core/ciminstance.h"
#include "host/core/cimnamespace.h"
#include "host/output/textbuffer.h"
#include "host/output/writers.h"

namespace {

using namespace NKROVEL20;
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
      asm volatile("" : : "r"(memory_.data()) : "memory");  // else the copy is never made
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

// Every byte value as snprintf prints it, with a comma.
std::size_t Print(std::size_t bytes) {
  TDroppingSink sink;
  for (unsigned int value = 0; sink.bytes < bytes; ++value) {
    std::array<char, 8> text;
    const int size = std::snprintf(text.data(), text.size(), "%u,", value & 0xFFU);
    sink.Write(std::string_view(text.data(), static_cast<std::size_t>(size)));
  }
  return sink.bytes;
}

std::size_t WriteForm(EOutputForm form, const TInstances& instances, std::size_t count) {
  TDroppingSink sink;
  const auto writer = MakeWriter(form, sink, {});
  writer->Begin({"6203", "Engineering Information Collector", "1.0", "1.0"});
  for (std::size_t n = 0; n < count; ++n) writer->Instance(*instances[n % instances.size()], false);
  writer->End({});
  return sink.bytes;
}

long PeakKilobytes() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss;
}

void ReportForm(EOutputForm form, const char* target, const TInstances& instances, std::size_t count) {
  constexpr int kRounds = 3;
  const double bytes = static_cast<double>(WriteForm(form, instances, 1000)) / 1000 * static_cast<double>(count);
  const long before = PeakKilobytes();
  const auto times = bench::Measure({{"form", [&] { WriteForm(form, instances, count); }, bytes},
                                     {"copying", [] { Copy(std::size_t{1} << 28); }, 0x1p28},
                                     {"snprintf", [] { Print(std::size_t{1} << 24); }, 0x1p24}},
                                    kRounds);
  std::array<char, 160> guide;
  std::snprintf(guide.data(), guide.size(), "%.0f MB/s; copying %.0f, snprintf %.0f MB/s; %.0f MB, peak memory +%ld kB",
                1e-6 / times[0], 1e-6 / times[1], 1e-6 / times[2], bytes / 1e6, PeakKilobytes() - before);
  bench::Report(std::to_string(count) + " instances as " + NameOfForm(form) + ", against snprintf of each byte", target,
                times[2] / times[0], guide.data());
}

}  // namespace

int main(int argc, char** argv) {
  const std::size_t count = argc > 1 ? std::strtoul(argv[1], nullptr, 10) : 100000;
  const auto cimNamespace = TNamespace::Create();
  const TInstances instances = MakeInstances(*cimNamespace);
  ReportForm(EOutputForm::kJson, ">= 100 MB/s", instances, count);
  ReportForm(EOutputForm::kJsonl, ">= 100 MB/s", instances, count);
  ReportForm(EOutputForm::kMof, ">= 100 MB/s", instances, count);
  ReportForm(EOutputForm::kCimXml, ">= 100 MB/s", instances, count);
  ReportForm(EOutputForm::kTable, "none", instances, count);
  return 0;
}
