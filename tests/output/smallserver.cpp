#include "tests/output/smallserver.h"

namespace tests {

namespace {

using CollectorProfile::EPath;

constexpr const char* kBridge = "KROSG_VO_PCIIOBRIDGE_StatisticData";
constexpr const char* kMemory = "KROSG_X_MEMCTL_StatisticData";
constexpr const char* kFile = "KROSG_DCAPFile";
constexpr std::uint32_t kCount = 0xABCDEF;
constexpr std::uint32_t kLog = 0xABCDF0;
constexpr THow kAbsent = {EHow::kCompletionCode, 203};

TWhere At(std::uint32_t address) {
  TWhere where;
  where.address = address;
  return where;
}

TWhere AtIndex(std::uint16_t index) {
  TWhere where;
  where.index = index;
  return where;
}

TWhere AtOffset(std::uint64_t offset) {
  TWhere where;
  where.offset = offset;
  return where;
}

TOrigin From(EPath path, int owner) {
  TOrigin origin;
  origin.path = path;
  origin.owner = owner;
  return origin;
}

TExchangeFailure FailedRegister(std::int32_t registerIndex, std::uint32_t address, int instance) {
  TExchangeFailure failure;
  failure.kind = EExchangeKind::kRegister;
  failure.isPlaced = true;
  failure.how = kAbsent;
  failure.place.number = instance;
  failure.registerIndex = registerIndex;
  failure.address = address;
  return failure;
}

TExchangeFailure FailedArea(EExchangeKind kind, int area, THow how) {
  TExchangeFailure failure;
  failure.turn = 2;
  failure.kind = kind;
  failure.isPlaced = true;
  failure.how = how;
  failure.place.number = area;
  return failure;
}

}  // namespace

TSmallServer::TSmallServer() {
  document_.header = Header();
  document_.header.run.labels = {{"rack", "7"}};
  document_.header.source = {{"sim:small.toml"}, "sim:small.toml", true, "", "", ""};
  document_.header.plugin.interfaceVersion = "1.0";
  document_.header.schema.paths = {"small.mof"};
  AddBridge();
  AddMemoryControllers();
  AddFile();
  smallPlan_ = MakePlan();
  document_.summary = Summary();
}

TInstancePtr TSmallServer::Statistics(const std::string& className, const std::string& identity,
                                      const std::string& elementName, const TCIMDateTime& time,
                                      const std::vector<std::pair<std::string, TCIMValue>>& registers) {
  std::vector<TPropertyDefinition> properties = {
      Property("InstanceID", TType::kString), Property("ElementName", TType::kString),
      Property("MachineType", TType::kString), Property("StatisticTime", TType::kDateTime)};
  const bool isBridge = className == kBridge;
  if (isBridge) properties.push_back(Property("Count", TType::kUint8, true));
  properties.push_back(Property(isBridge ? "Log" : "First", TType::kUint8, true));
  std::vector<std::pair<std::string, TCIMValue>> values = {{"InstanceID", TCIMValue(identity)},
                                                           {"ElementName", TCIMValue(elementName)},
                                                           {"MachineType", TCIMValue("6203")},
                                                           {"StatisticTime", TCIMValue(time)}};
  values.insert(values.end(), registers.begin(), registers.end());
  return Make(Define(className, "", properties), values);
}

void TSmallServer::AddBridge() {
  const auto instance = Statistics(kBridge, "KROSG:KROSG_VO_PCIIOBRIDGE_StatisticData:6203:0", "PCI I/O bridge,0",
                                   TCIMDateTime(1970, 1, 1, 6, 8, 56, 0, 0),
                                   {{"Count", Bytes({0xAB, 0xCD, 0xEF, 0, 0, 1, 1, 0, 0, 0, 0xEF, 0xFE, 0xFE, 0xEF})}});
  TInstanceFacts facts;
  facts.key = "KROSG_VO_PCIIOBRIDGE_StatisticData/node0/instance0";
  facts.origin = From(EPath::kR8, 0);
  facts.origin->chip = 1;
  facts.origin->instance = 0;
  facts.origin->timeRaw = "12 34 56 78";
  facts.missing = {{"Log", At(kLog), kAbsent}};
  TRegisterFacts& count = facts.registers.emplace().emplace_back();
  count.property = 4;
  count.place = kCount;
  count.isNarrow = true;
  count.value = 0x100;
  count.folded = 0x101;
  document_.instances.emplace_back(instance, facts);
}

// The second has the filler of a block of one byte.
void TSmallServer::AddMemoryControllers() {
  const std::string identity = "KROSG:KROSG_MEMCTL_StatisticData:6203:0";
  const std::string name = "Memory and I/O controller,0";
  TInstanceFacts facts;
  facts.key = "KROSG_X_MEMCTL_StatisticData/sp0/instance0";
  facts.origin = From(EPath::kJfr, 0);
  facts.origin->instance = 0;
  TRegisterFacts& first = facts.registers.emplace().emplace_back();
  first.property = 4;
  first.isIndex = true;
  first.value = 0x0000001A3F4C2E40;
  first.identification = {0x0B, 0x00, 0x54};
  document_.instances.emplace_back(
      Statistics(kMemory, identity, name, TCIMDateTime(2026, 1, 31, 11, 30, 5, 0, 0),
                 {{"First", Bytes({0x0B, 0, 0x54, 32, 61, 32, 0, 0, 0, 0x1A, 0x3F, 0x4C, 0x2E, 0x40})}}),
      facts);

  facts.key = "KROSG_X_MEMCTL_StatisticData/sp1/instance0";
  facts.origin->owner = 1;
  facts.missing = {{"First", AtIndex(0), {EHow::kShort, 0}}, {"StatisticTime", {}, {EHow::kShort, 1}}};
  facts.registers->clear();
  document_.instances.emplace_back(
      Statistics(kMemory, identity, name, TCIMDateTime(2048, 48, 48, 48, 48, 48, 0, 0),
                 {{"First", Bytes({48, 48, 48, 32, 61, 32, 48, 48, 48, 48, 48, 48, 48, 48})}}),
      facts);
}

void TSmallServer::AddFile() {
  std::vector<TPropertyDefinition> properties;
  for (const std::string_view name : CollectorProfile::kCaptureProperties) {
    properties.push_back(Property(std::string(name), name == "MessageTimestamp" ? TType::kDateTime : TType::kString));
  }
  const auto instance =
      Make(Define(kFile, "", properties), {{"FileName", TCIMValue("cpu_err")},
                                           {"ErrRawData", TCIMValue("0a ff 00 00 00 00 00 00 00 00 00 00 ")},
                                           {"MessageTimestamp", TCIMValue(Moment())},
                                           {"SourceNode", TCIMValue("1")},
                                           {"CreationClassName", TCIMValue(kFile)},
                                           {"LogCreationClassName", TCIMValue(kFile)},
                                           {"LogName", TCIMValue(kFile)},
                                           {"RecordID", TCIMValue("0")}});
  TInstanceFacts facts;
  facts.key = "KROSG_DCAPFile/node0/cpu_err";
  facts.origin = From(EPath::kCapture, 0);
  facts.file = {"cpu_err", 12, 3};
  facts.missing = {{"ErrRawData", AtOffset(3), {EHow::kShort, 3}}};
  document_.instances.emplace_back(instance, facts);
}

TPlannedClass TSmallServer::Planned(const std::string& className, EPath path) {
  TPlannedClass planned;
  planned.cimClass = cimNamespace_->FindClass(className);
  planned.path = path;
  planned.turn = ETurn::kPlanned;
  planned.hasWay = true;
  return planned;
}

TPlan TSmallServer::MakePlan() {
  TPlan plan;
  plan.machineType = "6203";
  plan.server = {1, true, true, true, 2};
  plan.blocks = 2;
  plan.classes = {Planned(kBridge, EPath::kR8), Planned(kMemory, EPath::kJfr), Planned(kFile, EPath::kCapture)};
  TPlannedClass& bridge = plan.classes[0];
  bridge.isBridge = true;
  bridge.instances = 2;
  bridge.registers = {{4, {kCount}, 0, true}, {5, {kLog}, 0, false}};
  bridge.readsOfInstance = 2;
  plan.classes[1].instances = 1;
  plan.classes[1].registers = {{4, {}, 0, false}};
  for (std::size_t i = 0; i < plan.classes.size(); ++i) {
    plan.requests.emplace_back().turns.emplace_back().planClass = i;
  }
  return plan;
}

std::vector<TExchangeFailure> TSmallServer::Failures() const {
  TExchangeFailure block;
  block.turn = 1;
  block.kind = EExchangeKind::kDot;
  block.how = {EHow::kShort, 1};
  block.owner = 1;
  return {FailedRegister(1, kLog, 0),
          FailedRegister(0, kCount, 1),
          FailedRegister(1, kLog, 1),
          block,
          FailedArea(EExchangeKind::kRead, 0, {EHow::kShort, 3}),
          FailedArea(EExchangeKind::kRead, 0, {EHow::kShort, 0}),
          FailedArea(EExchangeKind::kOpen, 1, kAbsent),
          FailedArea(EExchangeKind::kOpen, 2, kAbsent)};
}

TResultSummary TSmallServer::Summary() const {
  TResultSummary summary;
  summary.status = EResultStatus::kPartial;
  summary.exitStatus = 3;
  summary.message =
      "KROSG_X_MEMCTL_StatisticData: 1 of 2 register blocks was too short; KROSG_DCAPFile: 1 of 3 capture files is "
      "missing or incomplete";
  summary.reasons = {{EReason::kBlockShort, kMemory, 1, "1 of 2 register blocks was too short"},
                     {EReason::kFileUnread, kFile, 1, "1 of 3 capture files is missing or incomplete"}};
  summary.exchanges = 15;
  summary.failed = Failures();
  summary.unread = {{0, {0, 1}, EUnread::kAbsent}, {2, {0, 1}, EUnread::kAbsent}, {2, {0, 2}, EUnread::kAbsent}};
  summary.elapsedMs = 4;
  summary.plan = &smallPlan_;
  return summary;
}

}  // namespace tests
