#include "tests/robustness/sweephost.h"

#include <boost/make_shared.hpp>

#include "host/core/assertionfailure.h"
#include "host/serviceprocessor/serviceprocessorhub.h"
#include "nkrovel20/tvelexception.h"
#include "plugin/logmessage.h"
#include "tests/support/classbuilder.h"

namespace sweep {

using namespace NKROVEL20;
using testsupport::TClassBuilder;
using testsupport::TType;

namespace {

constexpr const char* kJfrClass = "KROSG_X_PCIIOBRIDGE_StatisticData";
constexpr const char* kBridgeClass = "KROSG_VO_PCIIOBRIDGE_StatisticData";
constexpr const char* kMemoryClass = "KROSG_T4_MEMCTL_StatisticData";
constexpr const char* kFileClass = "KROSG_DCAPFile";
constexpr int kRequests = 4;

class TManager : public TPluginManagerNamespace {
 public:
  TPluginManagerProvider* RegisterPlugin(IPluginCallbacks*) override {
    return reinterpret_cast<TPluginManagerProvider*>(this);  // any handle but null lets lines pass
  }
  boost::shared_ptr<ICIMClass> GetClass(const std::string&, const TPropertyMap&) override { return {}; }
  std::string GetMachineType() const override { return {}; }
};

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

std::vector<std::uint8_t> MakeBlock(bool firstCopy) {
  std::vector<std::uint8_t> block(4096);
  for (std::size_t i = 0; i < block.size(); ++i) block[i] = static_cast<std::uint8_t>(i * 31 + 7);
  block[2] = firstCopy ? 5 : 0;
  block[3] = 6;
  block[2042] = 7;
  block[2043] = 8;
  return block;
}

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
      area.data.assign(size, static_cast<std::uint8_t>(0x40 + size));
      area.size = static_cast<std::int32_t>(size);
      added.areas.push_back(area);
      size += 8;
    }
    server.nodes.push_back(added);
  }
  return server;
}

bool StartsWith(const std::string& text, const char* prefix) { return text.rfind(prefix, 0) == 0; }

std::string TextOf(const TInstance& instance) {
  std::string text;
  for (std::size_t i = 0; i < instance.Class().Properties().size(); ++i) {
    const std::string& name = instance.Class().Properties()[i]->Definition().name;
    // A capture file's number depends on how many there were before it.
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

}  // namespace

bool TTamperer::SendIpmi(int node, TIPMICommandBuffer& buffer, int& length, const TStopSignal& stop) {
  const std::size_t place = count_++;
  const TIPMICommandBuffer request = buffer;
  const int requestLength = length;
  bool answered = inner_.SendIpmi(node, buffer, length, stop);
  const auto tamper = ipmi_.find(place);
  if (tamper != ipmi_.end()) {
    if (onHurt) onHurt(false);
    answered = tamper->second(buffer, length) && answered;
  }
  if (!answered) {
    buffer = request;
    length = requestLength;
  }
  if (onExchange) onExchange(false, buffer, length);
  return answered;
}

bool TTamperer::SendDot(int serviceProcessor, const dotCmd& command, std::span<std::uint8_t> response, int& length,
                        const TStopSignal& stop) {
  const std::size_t place = count_++;
  const bool answered = inner_.SendDot(serviceProcessor, command, response, length, stop);
  if (onExchange) onExchange(true, {}, length);
  const auto tamper = dot_.find(place);
  if (tamper == dot_.end()) return answered;
  if (onHurt) onHurt(true);
  return tamper->second(response, length) && answered;
}

THost::THost(const std::string& machineType)
    : machineType_(machineType),
      server_(MakeServer(machineType)),
      tamperer_(server_),
      schema_(MakeSchema(machineType)) {
  THostServices::SetPluginManager(boost::make_shared<TManager>());
  THostServices::SetCoreLogger(this);
  THostServices::SetEnvironment(this);
  TServiceProcessorHub::Install(&tamperer_, nullptr);
  plugin_ = new torgareg::TTORGARegPluginCallbacks();
  NoteExchanges();
}

THost::~THost() {
  plugin_->PrepareForUnload();
  torgareg::LogMessage::setPluginInstance(nullptr);
  TServiceProcessorHub::Install(nullptr, nullptr);
  THostServices::SetEnvironment(nullptr);
  THostServices::SetCoreLogger(nullptr);
  THostServices::SetPluginManager({});
}

void THost::NoteExchanges() {
  tamperer_.onExchange = [this](bool isDot, const TIPMICommandBuffer& response, int length) {
    exchanges_.push_back({isDot, isDot ? class_ : part_, length, !isDot && response.DataLength() > 0});
  };
  Run();
  tamperer_.onExchange = nullptr;
}

// The trace tells what is being collected: an exchange belongs to what stands there when it is made.
void THost::Log(EVELLogSeverity, const std::string& message) {
  if (StartsWith(message, "Entering collection for requested class ")) {
    ++begun_;
    class_ = message.substr(message.rfind(' ') + 1);
    part_ = class_;
  } else if (StartsWith(message, "Current instance index ")) {
    part_ = class_ + " " + message.substr(message.rfind(' ') + 1);
  } else if (StartsWith(message, "Enter ReadErrFFDC")) {
    ++files_;
  } else if (StartsWith(message, "The system has")) {
    static const char* const names[] = {"cpu_err", "ioh_err", "zyn_err"};
    part_ = std::string(names[(files_ - 1) % 3]) + " " + std::to_string(message.back() - '0' + 1);
  } else if (message == "Completed buildCIMInstances." || message == "Complete to collect KROSG_DCAPFile") {
    ++ended_;
  }
}

TOutcome THost::Run() {
  TOutcome outcome;
  files_ = begun_ = ended_ = 0;
  schema_->SetCommitCallback([&outcome](const boost::shared_ptr<const TInstance>& instance) {
    outcome.instances[KeyOf(*instance)].push_back(TextOf(*instance));
  });
  tamperer_.onHurt = [this, &outcome](bool isDot) { outcome.hurt.push_back(isDot ? class_ : part_); };
  plugin_->Init();
  std::vector<boost::shared_ptr<ICIMClass>> classes;
  for (const char* name : {kJfrClass, kBridgeClass, kMemoryClass, kFileClass})
    classes.push_back(schema_->FindClass(name));
  try {
    plugin_->GetData(schema_, classes);
  } catch (const std::exception& exception) {
    outcome.exception = exception.what();
  }
  plugin_->DeInit();
  schema_->SetCommitCallback({});
  outcome.traceIsWhole = begun_ == kRequests && ended_ == kRequests;
  tamperer_.Reset();
  tamperer_.onHurt = nullptr;
  return outcome;
}

}  // namespace sweep
