#include "tests/output/foundserver.h"

#include "host/result/findings.h"

namespace tests {

namespace {

constexpr const char* kBridge = "KROSG_VO_PCIIOBRIDGE_StatisticData";
constexpr std::size_t kLog = 4;  // the only register of 64 bits

enum ERegister : std::size_t { kStatus, kMask, kSeverity, kFirst, kHeaderLog, kCorrectable, kReplays, kLink };
static_assert(kHeaderLog == kLog);

TFieldMeaning Bit(unsigned bit, const std::string& name) { return {{bit, bit}, false, name, {}}; }

}  // namespace

TFoundServer::TFoundServer() {
  std::vector<TPropertyDefinition> properties;
  for (const char* name : {"ErrorStatus", "ErrorMask", "ErrorSeverity", "FirstErrorPointer", "HeaderLog",
                           "CorrectableStatus", "ReplayCount", "LinkStatus"}) {
    properties.push_back(Property(name, TType::kUint8, true));
  }
  bridge_ = Define(kBridge, "", properties);
  Describe();
  document_ = {Header(), {}, Complete()};
  AddBridge(0, {{kStatus, 0x00150000},
                {kMask, 0x00100000},
                {kSeverity, 0x00140000},
                {kFirst, 0xFFFFFFF2},
                {kHeaderLog, 0x4A00000104000004},
                {kCorrectable, 0x00000081},
                {kReplays, 17},
                {kLink, 0x00000041}});
  AddBridge(1, {{kStatus, 0x00010000}, {kSeverity, 0}, {kCorrectable, 0}, {kReplays, 0}, {kLink, 0}});
  SortFindings(document_.summary.findings);
}

void TFoundServer::Describe() {
  meaning_.registers.resize(8);
  for (std::size_t i = 0; i < 8; ++i) {
    meaning_.registers[i].property = i;
    meaning_.registers[i].width = i == kLog ? 64 : 32;
  }
  TRegisterMeaning& status = meaning_.registers[kStatus];
  status.role = ERole::kErrors;
  status.fields = {Bit(16, "Unexpected completion"), Bit(18, "Malformed TLP"), Bit(20, "Unsupported request")};
  status.maskedBy = kMask;
  status.fatalBy = kSeverity;
  status.firstError = {kFirst, {4, 0}};
  status.evidence = {kHeaderLog};
  meaning_.registers[kMask].role = ERole::kMask;
  meaning_.registers[kMask].fields = status.fields;
  meaning_.registers[kSeverity].role = ERole::kSeverity;
  meaning_.registers[kFirst].role = ERole::kFirstError;
  meaning_.registers[kHeaderLog].role = ERole::kLog;
  meaning_.registers[kHeaderLog].fields = {{{15, 0}, true, "Requester", {}}, {{63, 24}, false, "Rest", {}}};
  TRegisterMeaning& correctable = meaning_.registers[kCorrectable];
  correctable.role = ERole::kErrors;
  correctable.severity = ESeverity::kCorrected;
  correctable.fields = {Bit(0, "Receiver error")};
  correctable.evidence = {kReplays};
  meaning_.registers[kReplays].role = ERole::kCounter;
  meaning_.registers[kReplays].unit = "packets";
  TRegisterMeaning& link = meaning_.registers[kLink];
  link.isMsb0 = true;
  link.fields = {{{3, 0}, false, "Speed", {{0, 0, "no link"}, {1, 1, "2.5 GT/s"}}}, {{9, 4}, false, "Lanes", {}}};
}

void TFoundServer::AddBridge(int instance, const std::vector<std::pair<std::size_t, std::uint64_t>>& values) {
  TInstanceFacts facts;
  facts.key = std::string(kBridge) + "/node0/instance" + std::to_string(instance);
  facts.origin = TOrigin{CollectorProfile::EPath::kR8, 0, instance + 1, instance, {}};
  facts.registers.emplace();
  std::vector<std::pair<std::string, TCIMValue>> properties;
  for (const auto& [index, value] : values) {
    TRegisterFacts& one = facts.registers->emplace_back();
    one.property = index;
    one.place = 0x2D0100 + static_cast<std::uint32_t>(index) * 8;
    one.isNarrow = index != kLog;
    one.value = value;
    properties.emplace_back(bridge_->Properties()[index]->Definition().name, Bytes({1}));
  }
  for (const std::size_t index : {kMask, kFirst, kHeaderLog}) {
    if (instance == 0) break;
    TMissing& missing = facts.missing.emplace_back();
    missing.property = bridge_->Properties()[index]->Definition().name;
    missing.where.address = 0x2D0100 + static_cast<std::uint32_t>(index) * 8;
  }
  AddMeaning(meaning_, *bridge_, facts);
  auto& all = document_.summary.findings;
  all.insert(all.end(), facts.findings.begin(), facts.findings.end());
  document_.instances.emplace_back(Make(bridge_, properties), facts);
}

}  // namespace tests
