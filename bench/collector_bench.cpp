// What the collector costs beside the wire, against a service processor that answers at once.
#include <sys/resource.h>

#include <cstring>
#include <sstream>

#include "bench/benchsupport.h"
#include "host/core/cimnamespace.h"
#include "host/core/hostservices.h"
#include "host/serviceprocessor/serviceprocessorhub.h"
#include "jfr/TJFRErrorData.h"
#include "nkrovel20/registercommands.h"
#include "nkrovel20/storageareacommands.h"
#include "plugin/torgaplugin.h"
#include "r8/r8errordata.h"

using namespace NKROVEL20;

namespace {

constexpr int kRegisters = 1000;
constexpr int kJfrRegisters = 50;

// Answers registers, timestamps, blocks and one storage area of a settable size.
class TInstantServiceProcessor : public IServiceProcessor {
 public:
  std::uint32_t areaSize = 0;

  int BmcNodeCount() override { return 1; }
  bool IpmiDriverPresent() override { return true; }
  bool TakesDotCommands() override { return true; }
  bool CheckCommunication() override { return true; }
  int DiscoverServiceProcessors() override { return 1; }

  bool SendIpmi(int, TIPMICommandBuffer& buffer, int& length, const TStopSignal&) override {
    std::size_t size = RegisterCommands::kResponseSize;
    if (buffer[TIPMICommandBuffer::kNetworkFunction] == StorageAreaCommands::kNetworkFunction) {
      size = AnswerStorageArea(buffer);
    } else {
      for (std::size_t i = 0; i < size; ++i) {
        buffer[TIPMICommandBuffer::kData + i] = static_cast<std::uint8_t>(100 + 11 * i);
      }
    }
    buffer[TIPMICommandBuffer::kCompletionCode] = 0;
    buffer[TIPMICommandBuffer::kDataLength] = static_cast<std::uint8_t>(size);
    length = static_cast<int>(TIPMICommandBuffer::kData + size);
    return true;
  }

  bool SendDot(int, const dotCmd&, std::span<std::uint8_t> response, int& length, const TStopSignal&) override {
    for (std::size_t i = 0; i < response.size(); ++i) response[i] = static_cast<std::uint8_t>(i * 37 + 1);
    response[2] = 5;
    response[3] = 6;
    length = static_cast<int>(response.size());
    return true;
  }

 private:
  std::size_t AnswerStorageArea(TIPMICommandBuffer& buffer) const {
    namespace Wire = StorageAreaCommands;
    if (buffer[Wire::kSubCommand] == Wire::kQuerySize) {
      for (std::size_t i = 0; i < 4; ++i) {
        buffer[Wire::kResponseSize + i] = static_cast<std::uint8_t>(areaSize >> (8 * i));
      }
    }
    if (buffer[Wire::kSubCommand] != Wire::kRead) return 7;
    std::memset(buffer.Data() + Wire::kResponseData, 0xA5, 10);
    return 3 + 2 + 10;
  }
};

class TDroppingPluginManager : public TPluginManagerNamespace {
 public:
  TPluginManagerProvider* RegisterPlugin(IPluginCallbacks*) override {
    return reinterpret_cast<TPluginManagerProvider*>(this);  // any handle but null: lines are passed on
  }
  boost::shared_ptr<ICIMClass> GetClass(const std::string&, const TPropertyMap&) override { return {}; }
  std::string GetMachineType() const override { return {}; }
};

class TDroppingLogger : public ILogger {
 public:
  std::size_t bytes = 0;
  void Log(EVELLogSeverity, const std::string& message) override { bytes += message.size(); }
};

TQualifierDefinition Number(const std::string& name, int value) { return {name, TCIMValue(value), {}, {}}; }

TPropertyDefinition RegisterProperty(int number, const std::vector<TQualifierDefinition>& qualifiers) {
  TPropertyDefinition property;
  property.name = "Register" + std::to_string(number);
  property.type = TCIMValue::TCIMType::kUint8;
  property.isArray = true;
  property.qualifiers = qualifiers;
  return property;
}

TPropertyDefinition Scalar(const std::string& name, TCIMValue::TCIMType::ECIMType type) {
  TPropertyDefinition property;
  property.name = name;
  property.type = type;
  return property;
}

boost::shared_ptr<TNamespace> MakeSchema(int r8Registers) {
  using TType = TCIMValue::TCIMType;
  const auto schema = TNamespace::Create();
  schema->SetMachineType("6203");
  TClassDefinition top;
  top.name = "CIM_Top";
  top.properties = {Scalar("InstanceID", TType::kString), Scalar("ElementName", TType::kString),
                    Scalar("MachineType", TType::kString), Scalar("StatisticTime", TType::kDateTime)};
  schema->AddClass(top);
  const TQualifierDefinition types = {
      "SupportedMachineTypes", TCIMValue(TType(TType::kString), 1, {TCIMValue("6203")}), {}, {}};
  for (const char* base :
       {"KROSG_PCIIOBRIDGE_StatisticData", "KROSG_MEMCTL_StatisticData", "KROSG_L3Cache_StatisticData"}) {
    TClassDefinition definition;
    definition.name = base;
    definition.superClass = "CIM_Top";
    schema->AddClass(definition);
  }
  TClassDefinition r8;
  r8.name = "KROSG_VO_PCIIOBRIDGE_StatisticData";
  r8.superClass = "CIM_Top";
  r8.qualifiers = {types, Number("MaxInstanceCount", 1)};
  for (int i = 0; i < r8Registers; ++i) {
    r8.properties.push_back(RegisterProperty(i, {Number("Offset", 0x1000 + 8 * i), Number("MaxLen", 8)}));
  }
  schema->AddClass(r8);
  TClassDefinition jfr;
  jfr.name = "KROSG_X_PCIIOBRIDGE_StatisticData";
  jfr.superClass = "KROSG_PCIIOBRIDGE_StatisticData";
  jfr.qualifiers = {types, Number("MaxInstanceCount", 1)};
  for (int i = 0; i < kJfrRegisters; ++i) jfr.properties.push_back(RegisterProperty(i, {Number("Index", 2 * i)}));
  schema->AddClass(jfr);
  TClassDefinition file;
  file.name = "KROSG_DCAPFile";
  for (const char* name :
       {"FileName", "ErrRawData", "SourceNode", "CreationClassName", "LogCreationClassName", "LogName", "RecordID"}) {
    file.properties.push_back(Scalar(name, TType::kString));
  }
  file.properties.push_back(Scalar("MessageTimestamp", TType::kDateTime));
  schema->AddClass(file);
  return schema;
}

// The texts of one register read as the baseline formats them: one stream per value.
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
  TIPMICommandBuffer buffer(RegisterCommands::kNetworkFunction, RegisterCommands::kRegisterRead, 4);
  std::size_t size = StreamPerValue(buffer.Data(), TIPMICommandBuffer::kSize).size();
  for (std::size_t i = 0; i < 14; ++i) buffer[9 + i] = static_cast<std::uint8_t>(100 + 11 * i);
  size += StreamPerValue(buffer.Data(), TIPMICommandBuffer::kSize).size();
  return size + StreamPerValue(buffer.Data() + 9, 14).size();
}

struct TBench {
  TInstantServiceProcessor serviceProcessor;
  TDroppingLogger logger;
  std::size_t sink = 0;

  TBench() {
    THostServices::SetPluginManager(boost::shared_ptr<ICIMNamespace>(new TDroppingPluginManager()));
    THostServices::SetCoreLogger(&logger);
    TServiceProcessorHub::Install(&serviceProcessor, nullptr);
  }

  void Collect(torgareg::TTORGARegPluginCallbacks& plugin, const boost::shared_ptr<TNamespace>& schema,
               const std::string& name) {
    std::vector<boost::shared_ptr<ICIMClass>> classes = {schema->FindClass(name)};
    plugin.GetData(schema, classes);
  }

  void R8() {
    torgareg::TTORGARegPluginCallbacks plugin;
    const auto schema = MakeSchema(kRegisters);
    const auto times =
        bench::Measure({{"streams",
                         [this] {
                           for (int i = 0; i < 100; ++i) sink += StreamedRegister();
                         },
                         100},
                        {"plugin", [&] { Collect(plugin, schema, "KROSG_VO_PCIIOBRIDGE_StatisticData"); }, kRegisters}},
                       21);
    bench::Report("one R8 register through the whole plugin, against one stream per value", ">= 25",
                  times[0] / times[1], bench::Microseconds(times[1]) + " against " + bench::Microseconds(times[0]));
  }

  void Jfr() {
    torgareg::TTORGARegPluginCallbacks plugin;
    const auto schema = MakeSchema(1);
    std::vector<unsigned char> block(4097);
    int length = 0;
    const TStopSignal never;
    const dotCmd command(2, 0, 0, nullptr, nullptr);
    serviceProcessor.SendDot(0, command, {block.data(), 4096}, length, never);
    const auto times = bench::Measure({{"dump",
                                        [&] {
                                          for (int i = 0; i < 100; ++i)
                                            sink += torgareg::print2Array(block.data(), 4096).size();
                                        },
                                        100},
                                       {"plugin",
                                        [&] {
                                          for (int i = 0; i < 100; ++i)
                                            Collect(plugin, schema, "KROSG_X_PCIIOBRIDGE_StatisticData");
                                        },
                                        100}},
                                      21);
    bench::Report("one JFR instance of 50 registers, against the dump of its block", "<= 3", times[1] / times[0],
                  bench::Microseconds(times[1]) + " against " + bench::Microseconds(times[0]));
  }

  void CaptureFiles() {
    torgareg::TTORGARegPluginCallbacks plugin;
    const auto schema = MakeSchema(1);
    const auto run = [&](std::uint32_t size) {
      serviceProcessor.areaSize = size;
      plugin.ReadErrFFDC(schema, "cpu_err");
    };
    const auto times =
        bench::Measure({{"128 KiB", [&] { run(128U << 10U); }, 1}, {"1 MiB", [&] { run(1U << 20U); }, 1}}, 7);
    bench::Report("a 1 MiB capture file, against a 128 KiB one", "<= 10", times[1] / times[0],
                  bench::Microseconds(times[1]) + " against " + bench::Microseconds(times[0]));
  }
};

}  // namespace

int main() {
  TBench bench;
  bench.R8();
  bench.Jfr();
  bench.CaptureFiles();
  return bench.sink == 0 && bench.logger.bytes == 0 ? 1 : 0;
}
