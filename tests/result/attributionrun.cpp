#include "tests/result/attributionrun.h"

#include <algorithm>
#include <boost/endian/conversion.hpp>
#include <cstdio>
#include <cstdlib>

#include "host/bmc/iserviceprocessor.h"
#include "host/bmc/supervision.h"
#include "host/schema/collectorneeds.h"
#include "tests/result/collectorplugin.h"

namespace tests {

namespace {

using CollectorProfile::EPath;

// Stops the run before an exchange.
class TStoppingProcessor : public TForwardingServiceProcessor {
 public:
  TStoppingProcessor(IServiceProcessor& inner, TStopSignal& stop, std::uint64_t left)
      : TForwardingServiceProcessor(inner), stop_(stop), left_(left) {}
  std::optional<TIpmiAnswer> SendIpmi(const TIpmiRequest& request, const TStopSignal& stop) override {
    Count();
    return TForwardingServiceProcessor::SendIpmi(request, stop);
  }
  std::optional<TDotAnswer> SendDot(const TDotRequest& request, const TStopSignal& stop) override {
    Count();
    return TForwardingServiceProcessor::SendDot(request, stop);
  }

 private:
  void Count() {
    if (left_ > 0 && --left_ == 0) stop_.RequestStop();
  }
  TStopSignal& stop_;
  std::uint64_t left_;
};

TBytes BytesOf(const TCIMValue& value) {
  TBytes bytes;
  for (const TCIMValue& element : static_cast<const std::vector<TCIMValue>&>(value)) {
    bytes.push_back(static_cast<std::uint8_t>(element.ToInteger()));
  }
  return bytes;
}

const TRegisterFacts* FindValue(const TInstanceFacts& facts, std::size_t property) {
  for (const TRegisterFacts& one : *facts.registers) {
    if (one.property == property) return &one;
  }
  return nullptr;
}

const TMissing* FindMissing(const TInstanceFacts& facts, const std::string& property) {
  for (const TMissing& one : facts.missing) {
    if (one.property == property) return &one;
  }
  return nullptr;
}

// The number at the end of "node0/instance3#2", or that after the "#"; 1 without one.
unsigned NumberIn(const std::string& key, const char* before) {
  const std::size_t at = key.rfind(before);
  return at == std::string::npos
             ? 1
             : static_cast<unsigned>(std::strtoul(key.c_str() + at + std::string(before).size(), nullptr, 10));
}

std::string TextOf(const TInstance& instance, const std::string& property) {
  const TCIMValue* const value = instance.Find(property);
  return value == nullptr ? std::string() : value->ToString(10);
}

}  // namespace

TAttributionRun::TAttributionRun(unsigned seed, EPlanted planted)
    : dice_(seed), case_(MakeRandomCase(dice_)), processor_(dice_, case_.discovery) {
  const TDiscovery& found = case_.discovery;
  const TPlanServer server = {found.bmcNodes, found.ipmiDriver, found.dotCommands, found.communicates,
                              found.serviceProcessors};
  const auto isCollectable = [this](const TCIMClass& cimClass) { return MeetsCollectorNeeds(*case_.schema, cimClass); };
  truth_ = MakePlan({*case_.schema, case_.machineType, server, case_.requests, true, isCollectable});
  plan_ = truth_;
  Plant(plan_, planted);
  THostServices::SetEnvironment(this);
}

TAttributionRun::~TAttributionRun() {
  TServiceProcessorHub::Install(nullptr, nullptr);
  THostServices::SetEnvironment(nullptr);
}

void TAttributionRun::Run() {
  TResultReasons reasons(plan_);
  TPlanFollower follower(plan_, reasons);
  follower_ = &follower;
  TStoppingProcessor stopping(processor_, stop_, dice_.Percent(25) ? dice_.Below(40) : 0);
  TSupervisedServiceProcessor supervised(stopping);
  supervised.AddObserver(follower);
  TSizeLimit limit(supervised);
  limit.SetRefusalCallback([&follower](const std::string& sentence) { follower.OnSizeRefused(sentence); });
  TServiceProcessorHub::Install(&limit, &stop_);
  case_.schema->SetCommitCallback([this](const boost::shared_ptr<const TInstance>& i) { OnCommit(*i); });
  Collector().Callbacks().Init();
  for (std::size_t i = 0; i < case_.requests.size() && !stop_.IsStopped(); ++i) {
    limit.BeginRequest();
    RunRequest(i);
  }
  Collector().Callbacks().DeInit();
  isWhole_ = isWhole_ && !stop_.IsStopped();
  CheckEnd(reasons, follower);
}

void TAttributionRun::RunRequest(std::size_t number) {
  request_ = number;
  if (MayDepart()) isWhole_ = false;
  std::vector<boost::shared_ptr<ICIMClass>> classes;
  for (const TAskedClass& asked : case_.requests[number]) classes.push_back(asked.cimClass);
  std::string exception;
  follower_->BeginRequest(number);
  try {
    Collector().Query()->GetData(case_.schema, classes);
  } catch (const std::exception& thrown) {
    exception = "it failed";
    ++seen_["exception"];
    isWhole_ = false;
  }
  follower_->EndRequest(exception);
}

bool TAttributionRun::MayDepart() const {
  const auto& turns = truth_.requests[request_].turns;
  return std::any_of(turns.begin(), turns.end(),
                     [this](const TPlannedTurn& turn) { return truth_.ClassOf(turn).turn == ETurn::kUnknown; });
}

void TAttributionRun::Expect(bool condition, const TInstanceFacts& facts, const std::string& what) {
  if (!condition) complaints_.push_back(facts.key + ": " + what);
}

const TPlannedClass* TAttributionRun::PlannedClass(const TInstance& instance) const {
  for (const TPlannedClass& planned : truth_.classes) {
    if (planned.cimClass.get() == &instance.Class()) return &planned;
  }
  return nullptr;
}

void TAttributionRun::OnCommit(const TInstance& instance) {
  const TInstanceFacts facts = follower_->OnCommit(instance);
  Note(facts);
  Expect(keys_.insert(facts.key).second, facts, "the key is there twice");
  const std::string start = instance.Class().Name() + "/";
  Expect(facts.key.compare(0, start.size(), start) == 0, facts, "the key is of another class");
  if (facts.key.find('?') != std::string::npos) {
    Expect(MayDepart(), facts, "the place of a planned class is unknown");
    return;
  }
  const TPlannedClass* const planned = PlannedClass(instance);
  switch (planned->path) {
    case EPath::kR8: return CheckR8(instance, facts, *planned);
    case EPath::kJfr: return CheckJfr(instance, facts, *planned);
    default: return CheckFile(instance, facts);
  }
}

void TAttributionRun::Note(const TInstanceFacts& facts) {
  const auto count = [this](bool isSo, const char* word) { seen_[word] += isSo ? 1U : 0U; };
  const EPath path = facts.origin ? facts.origin->path : EPath::kNone;
  count(path == EPath::kNone, "unknown place");
  count(path == EPath::kR8, "r8");
  count(path == EPath::kJfr, "jfr");
  count(path == EPath::kCapture, "file");
  count(facts.isCut, "cut file");
  count(facts.key.find('#') != std::string::npos, "second turn");
  for (const TMissing& missing : facts.missing) {
    count(missing.how.how == EHow::kNotSent, "not sent");
    count(missing.where.addresses.has_value(), "missing of several addresses");
    count(missing.where.index.has_value(), "missing of a block");
  }
  if (!facts.registers) return;
  for (const TRegisterFacts& value : *facts.registers) count(value.folded.has_value(), "folded");
}

void TAttributionRun::CheckR8(const TInstance& instance, const TInstanceFacts& facts, const TPlannedClass& planned) {
  const std::string identity = TextOf(instance, "InstanceID");
  Expect(NumberIn(facts.key, "instance") == NumberIn(identity, ":"), facts, "its identity is " + identity);
  for (const TPlannedRegister& one : planned.registers) {
    const bool isSet = instance.IsSet(one.property);
    const TRegisterFacts* const value = FindValue(facts, one.property);
    const std::string& name = planned.cimClass->Properties()[one.property]->Definition().name;
    Expect(isSet == (value != nullptr), facts, name + " has a property or a value, but not both");
    Expect(isSet != (FindMissing(facts, name) != nullptr), facts, name + " is both there and missing, or neither");
    if (isSet && value != nullptr) CheckR8Value(instance, facts, planned, *value);
  }
  CheckTime(instance, facts);
}

void TAttributionRun::CheckR8Value(const TInstance& instance, const TInstanceFacts& facts, const TPlannedClass& planned,
                                   const TRegisterFacts& value) {
  const TBytes bytes = BytesOf(instance.Value(value.property));
  const std::uint64_t sent = value.value | std::uint64_t{value.upper.value_or(0)} << 32U;
  const std::uint64_t shown =
      value.isNarrow ? boost::endian::load_big_u32(bytes.data() + 3) : boost::endian::load_big_u64(bytes.data() + 3);
  const std::uint64_t collected = value.folded ? *value.folded : value.value;
  Expect(shown == collected, facts, "the collector has another value");
  const auto source = processor_.sources.find(sent);
  if (source == processor_.sources.end()) {
    Expect(false, facts, "a value was never sent");
    return;
  }
  const auto& [chip, address, reading] = source->second;
  const bool isBridge = planned.cimClass->Name().find("BRIDGE") != std::string::npos;
  const unsigned instanceNumber = isBridge ? static_cast<unsigned>(chip) - 1 : reading % planned.instances;
  const unsigned turn = isBridge ? reading : reading / planned.instances;
  Expect(address == value.place, facts, "a value is of another address");
  Expect(instanceNumber == NumberIn(facts.key, "instance"), facts, "a value is of another instance");
  Expect(turn + 1 == NumberIn(facts.key, "#"), facts, "a value is of another turn");
  Expect(!isBridge || chip == facts.origin->chip, facts, "a value is of another chip");
}

// Only the last two bytes make a time: seconds since 1970.
void TAttributionRun::CheckTime(const TInstance& instance, const TInstanceFacts& facts) {
  const std::string time = TextOf(instance, "StatisticTime");
  const std::string& raw = facts.origin->timeRaw;
  Expect(time.empty() == raw.empty(), facts, "a time and its bytes are not there together");
  Expect(time.empty() == (FindMissing(facts, "StatisticTime") != nullptr), facts, "a time is there and missing");
  if (time.empty() || raw.size() != 11) return;
  const auto seconds = static_cast<unsigned>(std::strtoul((raw.substr(6, 2) + raw.substr(9, 2)).c_str(), nullptr, 16));
  char expected[16];
  std::snprintf(expected, sizeof expected, "%02u%02u%02u", seconds / 3600, seconds / 60 % 60, seconds % 60);
  Expect(time.substr(8, 6) == expected, facts, "the time " + time + " is not of the bytes " + raw);
}

void TAttributionRun::CheckJfr(const TInstance& instance, const TInstanceFacts& facts, const TPlannedClass& planned) {
  const TBytes& block = processor_.blocks[static_cast<int>(NumberIn(facts.key, "/sp"))];
  const auto byteAt = [&block](std::size_t at) { return at < block.size() ? block[at] : std::uint8_t{'0'}; };
  const bool isFirst = byteAt(2) != 0 && byteAt(3) != 0;
  const std::size_t header = isFirst ? 0 : 2040;
  const bool hasTime = block.size() >= header + 7;
  Expect(hasTime != (FindMissing(facts, "StatisticTime") != nullptr), facts, "a time is there and missing");
  for (const TPlannedRegister& one : planned.registers) {
    const std::string& name = planned.cimClass->Properties()[one.property]->Definition().name;
    const std::size_t offset = (isFirst ? 7U : 0U) + (one.index + NumberIn(facts.key, "instance") * 256) * 8;
    const bool isWhole = offset + 11 <= block.size();
    const TRegisterFacts* const value = FindValue(facts, one.property);
    Expect(isWhole == (value != nullptr), facts, name + " came and has no value, or has one and did not come");
    Expect(isWhole != (FindMissing(facts, name) != nullptr), facts, name + " is both there and missing, or neither");
    TBytes record;
    for (std::size_t i = 0; i < 11; ++i) record.push_back(byteAt(offset + i));
    TBytes shown = BytesOf(instance.Value(one.property));
    shown.erase(shown.begin() + 3, shown.begin() + 6);
    Expect(shown == record, facts, name + " is of another record");
    if (value != nullptr)
      Expect(value->value == boost::endian::load_big_u64(record.data() + 3), facts, name + " differs");
  }
}

void TAttributionRun::CheckFile(const TInstance& instance, const TInstanceFacts& facts) {
  const TNumberingProcessor::TFile& file = processor_.file;
  const std::string place = "/node" + std::to_string(file.node) + "/" + file.area;
  Expect(facts.key.find(place) != std::string::npos, facts, "the file is " + place);
  Expect(TextOf(instance, "FileName") == facts.file->area, facts, "the file has another name");
  Expect(TextOf(instance, "SourceNode") == std::to_string(facts.origin->owner + 1), facts,
         "the file is of another node");
  Expect(facts.file->reportedSize == file.size, facts, "the file has another size");
  Expect(static_cast<std::int64_t>(facts.file->received) == file.received, facts,
         "another number of bytes was received");
  Expect(facts.isCut == file.firstMissing.has_value() || stop_.IsStopped(), facts, "the file is whole, or not");
  if (!facts.missing.empty() && file.firstMissing) {
    Expect(*file.firstMissing < file.size, facts, "nothing can be missing");
    const auto offset = facts.missing[0].where.offset.value_or(0);
    Expect(static_cast<std::int64_t>(offset) == *file.firstMissing, facts, "another byte is the first one missing");
  }
}

// Of whole runs.
std::uint64_t TAttributionRun::PlannedInstances() const {
  std::uint64_t instances = 0;
  for (const TPlannedRequest& request : truth_.requests) {
    for (const TPlannedTurn& turn : request.turns) {
      const TPlannedClass& planned = truth_.ClassOf(turn);
      if (!turn.isReached || planned.turn != ETurn::kPlanned || !planned.hasWay) continue;
      if (planned.path == EPath::kR8) instances += planned.registers.empty() ? 0 : planned.instances;
      if (planned.path == EPath::kJfr)
        instances += std::uint64_t{planned.instances} * static_cast<unsigned>(case_.discovery.serviceProcessors);
      if (planned.path == EPath::kCapture) instances += 3U * static_cast<unsigned>(case_.discovery.bmcNodes);
    }
  }
  return instances;
}

// Whatever was planned is delivered or unread, and each exchange is counted.
void TAttributionRun::CheckEnd(TResultReasons& reasons, const TPlanFollower& follower) {
  const TResultSummary summary = reasons.Close(std::nullopt);
  const TInstanceFacts run = {"the run", {}, {}, {}, {}, false};
  Expect(summary.exchanges == processor_.exchanges, run, "exchanges were not counted");
  for (const TUnread& unread : summary.unread) seen_["discarded"] += unread.code == EUnread::kDiscarded ? 1U : 0U;
  if (!isWhole_) return;
  ++seen_["whole run"];
  Expect(PlannedInstances() == keys_.size() + summary.unread.size(), run,
         "an instance is neither delivered nor unread");
  std::uint64_t failures = 0;
  for (const TExchangeFailure& failure : summary.failed) {
    if (failure.kind != EExchangeKind::kDot) failures += failure.repeat;
    Expect(failure.isPlaced || failure.kind == EExchangeKind::kDot, run, "a failed exchange has no place");
  }
  Expect(failures == processor_.failures, run, "failures were not counted");
  Expect(follower.PlannedMade() == truth_.Total(), run, "not all planned reads were made");
  for (const TReason& reason : summary.reasons) Expect(reason.code != EReason::kRequestFailed, run, reason.message);
}

}  // namespace tests
