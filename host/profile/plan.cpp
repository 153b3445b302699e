#include "host/profile/plan.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <unordered_map>
#include <utility>

#include "host/base/names.h"
#include "host/base/text.h"
#include "wire/registerread.h"

namespace velhost {

namespace {

using CollectorProfile::EPath;
using CollectorProfile::kJfrBaseClasses;
using CollectorProfile::TServedClass;
using TElements = std::vector<TCIMValue>;

constexpr std::size_t kMostMachineTypesNamed = 8;

template <typename TNames>
bool Contains(const TNames& names, std::string_view name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

// Null if the class has no list of machine types.
const TElements* MachineTypesOf(const TCIMClass& cimClass) {
  const auto qualifier = cimClass.Qualifiers().Find(std::string(CollectorProfile::kSupportedMachineTypes));
  if (!qualifier || !qualifier->GetValue().IsArray()) return nullptr;
  return &static_cast<const TElements&>(qualifier->GetValue());
}

// "its machine types are "4411", "4414""; a schema may list any number of them.
std::string MachineTypesText(const TCIMClass& cimClass) {
  const TElements* const elements = MachineTypesOf(cimClass);
  if (elements == nullptr || elements->empty()) return "it lists no machine types";
  const std::size_t named = std::min(elements->size(), kMostMachineTypesNamed);
  std::vector<std::string> texts;
  for (std::size_t i = 0; i < named; ++i) texts.push_back(Quoted((*elements)[i].ToString(10)));
  const std::size_t left = elements->size() - named;
  return "its machine types are " + Listed(texts, ", ") + (left > 0 ? " and " + std::to_string(left) + " more" : "");
}

std::vector<std::uint32_t> AddressesOf(const TPropertyDecl& property) {
  const TCIMValue& offset = property.Qualifiers().Find(std::string(CollectorProfile::kOffset))->GetValue();
  const auto sent = [](const TCIMValue& value) {
    return static_cast<unsigned int>(value) & wire::RegisterRead::kAddressMask;
  };
  if (!offset.IsArray()) return {sent(offset)};
  std::vector<std::uint32_t> addresses;
  for (const TCIMValue& element : static_cast<const TElements&>(offset)) addresses.push_back(sent(element));
  return addresses;
}

TPlannedRegister PlannedRegister(const TPropertyDecl& property, std::size_t place, EPath path) {
  const auto valueOf = [&property](std::string_view qualifier) -> const TCIMValue& {
    return property.Qualifiers().Find(std::string(qualifier))->GetValue();
  };
  TPlannedRegister planned;
  planned.property = place;
  if (path == EPath::kJfr) {
    planned.index = static_cast<unsigned short>(valueOf(CollectorProfile::kIndex));
    return planned;
  }
  planned.addresses = AddressesOf(property);
  planned.isNarrow = static_cast<unsigned int>(valueOf(CollectorProfile::kMaxLen)) == 4;
  return planned;
}

bool IsReadable(const TCIMClass& cimClass, EPath path) {
  const auto registers = CollectorProfile::RegistersOf(cimClass, path);
  return std::all_of(registers.begin(), registers.end(), [](const auto& property) {
    return property->Definition().isArray && property->Definition().type == TCIMValue::TCIMType::kUint8;
  });
}

void AddMeaning(TPlannedClass& planned) {
  if (planned.registers.empty()) return;
  std::vector<TRegisterShape> shapes;
  for (const TPlannedRegister& one : planned.registers) shapes.push_back({one.property, one.isNarrow});
  planned.meaning = std::make_shared<const TClassMeaning>(CompileMeaning(*planned.cimClass, shapes, &planned.slips));
}

void AddRegisters(TPlannedClass& planned) {
  const TCIMClass& cimClass = *planned.cimClass;
  if (planned.path == EPath::kCapture) return;
  planned.instances = CollectorProfile::InstanceCountOf(cimClass);
  planned.isBridge = planned.path == EPath::kR8 && Contains(CollectorProfile::kR8BridgeClasses, cimClass.Name());
  for (std::size_t i = 0; i < cimClass.Properties().size(); ++i) {
    const TPropertyDecl& property = *cimClass.Properties()[i];
    if (!CollectorProfile::IsRegister(cimClass, property, planned.path)) continue;
    planned.registers.push_back(PlannedRegister(property, i, planned.path));
    planned.readsOfInstance += planned.registers.back().addresses.size();
  }
  AddMeaning(planned);
}

class TPlanMaker {
 public:
  explicit TPlanMaker(const TPlanInput& input);
  TPlan Make();

 private:
  std::size_t AddClass(const boost::shared_ptr<TCIMClass>& cimClass);
  TPlannedRequest RequestOf(const std::vector<TAskedClass>& asked);
  void Classify(TPlannedClass& planned) const;
  void ClassifyServed(TPlannedClass& planned, const TServedClass& entry) const;
  std::string MissingWay(EPath path) const;
  std::string WhyNot(const TCIMClass& cimClass) const;
  std::string WhyNoBlock(const TCIMClass& cimClass, std::string_view baseClass) const;
  const TServedClass* EntryOf(const TCIMClass& cimClass) const;

  const TPlanInput& input_;
  /// For each base class the subclass that serves the machine type; kept, because finding it takes all classes.
  std::array<boost::shared_ptr<TCIMClass>, kJfrBaseClasses.size()> delegates_;
  std::vector<TServedClass> collectable_;
  std::unordered_map<const TCIMClass*, const TServedClass*> entries_;
  std::unordered_map<const TCIMClass*, std::pair<std::size_t, unsigned>> added_;  // its number and its turns
  TPlan plan_;
};

TPlanMaker::TPlanMaker(const TPlanInput& input)
    : input_(input), collectable_(CollectorProfile::CollectableClasses(input.cimNamespace, input.machineType)) {
  for (const TServedClass& entry : collectable_) entries_.emplace(entry.cimClass.get(), &entry);
  for (std::size_t i = 0; i < delegates_.size(); ++i) {
    const std::string_view base = kJfrBaseClasses.at(i);
    delegates_.at(i) = CollectorProfile::DelegateOf(input.cimNamespace, base, input.machineType);
  }
}

TPlan TPlanMaker::Make() {
  const TPlanServer& server = input_.server;
  plan_.machineType = input_.machineType;
  plan_.isEightByte = CollectorProfile::IsEightByteFamily(input_.machineType);
  plan_.server = server;
  if (server.dotCommands && server.communicates) plan_.blocks = static_cast<std::uint8_t>(server.serviceProcessors);
  for (const auto& asked : input_.requests) plan_.requests.push_back(RequestOf(asked));
  return std::move(plan_);
}

TPlannedRequest TPlanMaker::RequestOf(const std::vector<TAskedClass>& asked) {
  TPlannedRequest request;
  bool isReached = true;
  for (const TAskedClass& one : asked) {
    TPlannedTurn turn;
    turn.planClass = AddClass(one.cimClass);
    turn.time = ++added_[one.cimClass.get()].second;
    turn.isReached = isReached;
    turn.isNamed = one.isNamed;
    request.turns.push_back(turn);
    if (plan_.ClassOf(turn).path == EPath::kCapture) isReached = false;
  }
  return request;
}

std::size_t TPlanMaker::AddClass(const boost::shared_ptr<TCIMClass>& cimClass) {
  const auto [found, isNew] = added_.emplace(cimClass.get(), std::pair(plan_.classes.size(), 0U));
  if (isNew) {
    TPlannedClass planned;
    planned.cimClass = cimClass;
    Classify(planned);
    plan_.classes.push_back(std::move(planned));
  }
  return found->second.first;
}

void TPlanMaker::Classify(TPlannedClass& planned) const {
  if (!input_.isCollector) {
    planned.turn = ETurn::kUnknown;
    return;
  }
  const TCIMClass& cimClass = *planned.cimClass;
  const TServedClass* const entry = EntryOf(cimClass);
  if (entry != nullptr && entry->served) {
    ClassifyServed(planned, *entry);
    return;
  }
  planned.whyNotServed = WhyNot(cimClass);
  if (!Contains(CollectorProfile::kR8Classes, cimClass.Name())) return;
  planned.path = EPath::kR8;
  planned.hasWay = HasWay(EPath::kR8, input_.server);
  if (MachineTypesOf(cimClass) == nullptr) planned.turn = ETurn::kUnknown;
}

void TPlanMaker::ClassifyServed(TPlannedClass& planned, const TServedClass& entry) const {
  planned = PlanOfClass(planned.cimClass, entry.path, input_.isCollectable(*planned.cimClass));
  planned.hasWay = HasWay(entry.path, input_.server);
  if (!planned.hasWay) planned.whyNotServed = MissingWay(entry.path);
}

std::string TPlanMaker::MissingWay(EPath path) const {
  if (path != EPath::kJfr) return "there is no BMC node";
  return input_.server.dotCommands ? "no service processor was found" : "no service processor accepts dot commands";
}

std::string TPlanMaker::WhyNot(const TCIMClass& cimClass) const {
  const TServedClass* const entry = EntryOf(cimClass);
  if (entry != nullptr && entry->path == EPath::kR8) return MachineTypesText(cimClass);
  if (entry != nullptr && entry->path == EPath::kJfr) return WhyNoBlock(cimClass, entry->baseClass);
  for (const std::string_view base : kJfrBaseClasses) {
    if (EqualNames(base, cimClass.Name())) return WhyNoBlock(cimClass, cimClass.Name());
  }
  return "the collector does not support this class";
}

// A class below a base class, or a base class itself.
std::string TPlanMaker::WhyNoBlock(const TCIMClass& cimClass, std::string_view baseClass) const {
  const bool isBase = cimClass.Name() == baseClass;
  const auto* const base = std::find_if(kJfrBaseClasses.begin(), kJfrBaseClasses.end(),
                                        [baseClass](std::string_view name) { return EqualNames(name, baseClass); });
  const auto& delegate = delegates_.at(static_cast<std::size_t>(base - kJfrBaseClasses.begin()));
  if (delegate && (isBase || CollectorProfile::MatchingElement(cimClass, input_.machineType))) {
    return delegate->Name() + " serves this machine";
  }
  return isBase ? "none of its subclasses serves this machine" : MachineTypesText(cimClass);
}

const TServedClass* TPlanMaker::EntryOf(const TCIMClass& cimClass) const {
  const auto found = entries_.find(&cimClass);
  return found == entries_.end() ? nullptr : found->second;
}

// Over all turns of the path that are reached.
std::uint64_t SumOfReads(const TPlan& plan, EPath path) {
  std::uint64_t sum = 0;
  for (const TPlannedRequest& request : plan.requests) {
    for (const TPlannedTurn& turn : request.turns) {
      if (turn.isReached && plan.ClassOf(turn).path == path) sum += plan.ReadsOf(turn);
    }
  }
  return sum;
}

}  // namespace

bool HasWay(EPath path, const TPlanServer& server) {
  if (path != EPath::kJfr) return server.bmcNodes >= 1;
  return server.dotCommands && static_cast<std::uint8_t>(server.serviceProcessors) > 0;
}

TPlannedClass PlanOfClass(const boost::shared_ptr<TCIMClass>& cimClass, EPath path, bool isCollectable) {
  TPlannedClass planned;
  planned.cimClass = cimClass;
  planned.path = path;
  if (path == EPath::kNone) return planned;
  planned.turn = ETurn::kUnknown;
  if (!isCollectable || !IsReadable(*cimClass, path)) return planned;
  planned.turn = ETurn::kPlanned;
  AddRegisters(planned);
  return planned;
}

TPlan MakePlan(const TPlanInput& input) { return TPlanMaker(input).Make(); }

std::uint64_t TPlan::ReadsOf(const TPlannedTurn& turn) const {
  const TPlannedClass& planned = ClassOf(turn);
  if (planned.turn != ETurn::kPlanned) return 0;
  return planned.path == EPath::kJfr ? blocks : std::uint64_t{planned.readsOfInstance} * planned.instances;
}

std::uint32_t TPlan::FirstTurn(std::size_t request) const {
  std::size_t turns = 0;
  for (std::size_t i = 0; i < request; ++i) turns += requests[i].turns.size();
  return static_cast<std::uint32_t>(turns);
}

std::uint64_t TPlan::RegisterReads() const { return SumOfReads(*this, EPath::kR8); }

std::uint64_t TPlan::DotCommands() const { return SumOfReads(*this, EPath::kJfr); }

std::string KeyOf(const TPlannedClass& planned, unsigned time, TPlace place) {
  std::string key = planned.cimClass->Name();
  key += planned.path == EPath::kJfr ? "/sp" : "/node";
  key += std::to_string(place.owner) + "/";
  key += planned.path == EPath::kCapture ? std::string(kCaptureAreas.at(static_cast<std::size_t>(place.number)))
                                         : "instance" + std::to_string(place.number);
  if (time > 1) key += "#" + std::to_string(time);
  return key;
}

}  // namespace velhost
