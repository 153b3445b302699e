// How fast the output forms are written, beside two yardsticks measured in the same run: copying the
// same number of bytes, and printing the same bytes with snprintf.
//
// output_bench [INSTANCES], 100000 unless given. The instances are those of a register class with
// twelve registers of 14 bytes; their text goes to a sink that copies it and drops it.
#include <sys/resource.h>

#include <array>
#include <boost/make_shared.hpp>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "host/core/ciminstance.h"
#include "host/core/cimnamespace.h"
#include "host/output/textbuffer.h"
#include "host/output/writers.h"

namespace {

using namespace NKROVEL20;
using TType = TCIMValue::TCIMType;
using TClock = std::chrono::steady_clock;
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

double MegabytesPerSecond(std::size_t bytes, TClock::duration time) {
  return static_cast<double>(bytes) / 1e6 / std::chrono::duration<double>(time).count();
}

double MeasureCopy(std::size_t bytes) {
  const std::string block(TTextBuffer::kCapacity, 'x');
  TDroppingSink sink;
  const auto start = TClock::now();
  while (sink.bytes < bytes) sink.Write(block);
  return MegabytesPerSecond(sink.bytes, TClock::now() - start);
}

double MeasurePrinting(std::size_t bytes) {
  TDroppingSink sink;
  const auto start = TClock::now();
  for (unsigned int value = 0; sink.bytes < bytes; ++value) {
    std::array<char, 8> text;
    const int size = std::snprintf(text.data(), text.size(), "%u,", value & 0xFFU);
    sink.Write(std::string_view(text.data(), static_cast<std::size_t>(size)));
  }
  return MegabytesPerSecond(sink.bytes, TClock::now() - start);
}

struct TMeasurement {
  std::size_t bytes;
  double speed;
};

TMeasurement MeasureForm(EOutputForm form, const TInstances& instances, std::size_t count) {
  TDroppingSink sink;
  const auto writer = MakeWriter(form, sink, {});
  const auto start = TClock::now();
  writer->Begin({"6203", "Engineering Information Collector", "1.0", "1.0"});
  for (std::size_t n = 0; n < count; ++n) writer->Instance(*instances[n % instances.size()], false);
  writer->End({});
  return {sink.bytes, MegabytesPerSecond(sink.bytes, TClock::now() - start)};
}

long PeakKilobytes() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss;
}

}  // namespace

int main(int argc, char** argv) {
  const std::size_t count = argc > 1 ? std::strtoul(argv[1], nullptr, 10) : 100000;
  const auto cimNamespace = TNamespace::Create();
  const TInstances instances = MakeInstances(*cimNamespace);
  const double copy = MeasureCopy(std::size_t{1} << 30);
  const double printing = MeasurePrinting(std::size_t{1} << 26);
  std::printf("%zu instances; copying %.0f MB/s, snprintf %.0f MB/s\n", count, copy, printing);
  for (const EOutputForm form :
       {EOutputForm::kJson, EOutputForm::kJsonl, EOutputForm::kMof, EOutputForm::kCimXml, EOutputForm::kTable}) {
    const long before = PeakKilobytes();
    const TMeasurement result = MeasureForm(form, instances, count);
    std::printf("%-7s %7.1f MB %7.0f MB/s  %5.2f of copying  %5.2f of snprintf  peak memory +%ld kB\n",
                NameOfForm(form), static_cast<double>(result.bytes) / 1e6, result.speed, result.speed / copy,
                result.speed / printing, PeakKilobytes() - before);
  }
  return 0;
}
