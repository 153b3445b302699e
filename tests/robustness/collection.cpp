#include "tests/robustness/collection.h"

#include "tests/support/classbuilder.h"

namespace sweep {

using namespace NKROVEL20;
using namespace velhost;
using tests::TClassBuilder;

std::vector<std::string> AllClasses() { return {kJfrClass, kBridgeClass, kMemoryClass, kFileClass}; }

boost::shared_ptr<TNamespace> MakeSchema(const std::string& machineType) {
  const auto schema = TNamespace::Create();
  schema->SetMachineType(machineType);
  schema->AddClass(TClassBuilder("KROSG_StatisticBase").Identification());
  for (const char* name :
       {"KROSG_PCIIOBRIDGE_StatisticData", "KROSG_MEMCTL_StatisticData", "KROSG_L3Cache_StatisticData"}) {
    schema->AddClass(TClassBuilder(name, "KROSG_StatisticBase"));
  }
  schema->AddClass(TClassBuilder(kJfrClass, "KROSG_PCIIOBRIDGE_StatisticData")
                       .Machines({machineType})
                       .MaxInstances(2)
                       .Record("First", 2)
                       .Record("Second", 250));
  schema->AddClass(TClassBuilder(kBridgeClass, "KROSG_StatisticBase")
                       .Machines({machineType})
                       .MaxInstances(2)
                       .Register("Wide", 0x1000, 8)
                       .Register("Narrow", 0x1008, 4));
  schema->AddClass(TClassBuilder(kMemoryClass, "KROSG_StatisticBase")
                       .Machines({machineType})
                       .MaxInstances(1)
                       .Register("Status", 0x2000, 8)
                       .Register("Pair", std::vector<std::uint32_t>{0x2008, 0x2010}, 8));
  schema->AddClass(TClassBuilder(kFileClass).CaptureProperties());
  return schema;
}

namespace {

std::vector<std::uint8_t> MakeBlock(bool firstCopy) {
  std::vector<std::uint8_t> block(4096);
  // The second instance starts 2048 bytes further on, and differs.
  for (std::size_t i = 0; i < block.size(); ++i) block[i] = static_cast<std::uint8_t>(i * 31 + 7 + i / 256);
  block[2] = firstCopy ? 5 : 0;
  block[3] = 6;
  block[2042] = 7;
  block[2043] = 8;
  return block;
}

}  // namespace

TServerFile MakeServer(const std::string& machineType) {
  TServerFile server;
  server.machineType = machineType;
  server.patternRegisters = true;
  server.dot.emplace();
  server.dot->blocks = {MakeBlock(true), MakeBlock(false)};
  for (std::size_t node = 0; node < 2; ++node) {
    TSimulatedNode added;
    added.timestamp = {0x12, 0x34, 0x56, 0x78};
    std::size_t size = 9 + 8 * node;
    for (const char* name : {"cpu_err", "ioh_err", "zyn_err"}) {
      TStorageArea area;
      area.name = name;
      area.data = std::vector<std::uint8_t>(size, static_cast<std::uint8_t>(0x40 + size));
      area.size = static_cast<std::int32_t>(size);
      added.areas.push_back(area);
      size += 8;
    }
    server.nodes.push_back(added);
  }
  return server;
}

std::string TextOf(const TInstance& instance) {
  std::string text;
  for (std::size_t i = 0; i < instance.Class().Properties().size(); ++i) {
    const std::string& name = instance.Class().Properties()[i]->Definition().name;
    if (instance.IsSet(i) && name != "RecordID") text += name + "=" + instance.Value(i).ToString(10) + "\n";
  }
  return text;
}

std::string PropertyText(const TInstance& instance, const char* name) {
  const TCIMValue* const value = instance.Find(name);
  return value ? value->ToString(10) : std::string();
}

std::string KeyOf(const TInstance& instance) {
  const std::string& name = instance.Class().Name();
  if (name == kJfrClass) return name;
  if (name == kFileClass) return PropertyText(instance, "FileName") + " " + PropertyText(instance, "SourceNode");
  const std::string id = PropertyText(instance, "InstanceID");
  return name + " " + id.substr(id.rfind(':') + 1);
}

}  // namespace sweep
