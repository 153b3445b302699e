#include "host/profile/collectorprofile.h"

#include <algorithm>
#include <map>
#include <memory>
#include <unordered_map>
#include <utility>

#include "host/base/names.h"
#include "wire/registerread.h"

namespace velhost::CollectorProfile {

namespace {

const TPropertyMap kNoContext;
constexpr std::array<std::uint8_t, 4> kMarkerTail = {0xEF, 0xFE, 0xFE, 0xEF};
constexpr std::array<std::uint8_t, 3> kEqualsSign = {' ', '=', ' '};

template <typename TItems, typename TItem>
bool Contains(const TItems& names, const TItem& name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

using TElements = std::vector<TCIMValue>;

// A plain substring test, like the collector's: "6101" serves both "6101" and "610".
const TCIMValue* MatchIn(const TElements& elements, const std::string& machineType) {
  const auto found = std::find_if(elements.begin(), elements.end(), [&](const TCIMValue& element) {
    return element.ToString(10).find(machineType) != std::string::npos;
  });
  return found == elements.end() ? nullptr : &*found;
}

// Searches many classes. Classes that inherit a list or share a qualifier's default share its elements, which
// are searched only once.
class TServingElements {
 public:
  explicit TServingElements(const std::string& machineType) : machineType_(machineType) {}

  /// Null if there is none.
  const TCIMValue* Of(const TCIMClass& cimClass) {
    const auto qualifier = cimClass.Qualifiers().Find(std::string(kSupportedMachineTypes));
    if (!qualifier || !qualifier->GetValue().IsArray()) return nullptr;
    const TElements& elements = qualifier->GetValue();
    const auto [known, isNew] = known_.emplace(&elements, nullptr);
    if (isNew) known->second = MatchIn(elements, machineType_);
    return known->second;
  }

 private:
  const std::string& machineType_;
  std::unordered_map<const TElements*, const TCIMValue*> known_;
};

boost::shared_ptr<TCIMClass> DelegateOf(const TNamespace& cimNamespace, std::string_view baseClass,
                                        TServingElements& elements) {
  const auto base = cimNamespace.FindClass(baseClass);
  if (!base) return {};
  for (const auto& candidate : cimNamespace.Classes()) {
    if (candidate->DescendsFrom(*base) && elements.Of(*candidate) != nullptr) return candidate;
  }
  return {};
}

std::string BaseClassOf(const TCIMClass& cimClass) {
  for (const TCIMClass* above = cimClass.SuperClass().get(); above != nullptr; above = above->SuperClass().get()) {
    for (const std::string_view base : kJfrBaseClasses) {
      if (EqualNames(base, above->Name())) return above->Name();
    }
  }
  return {};
}

// The subclasses that the collector serves on the JFR path, each with the base class it is collected for. If
// several base classes chose the same subclass, the first one by name.
std::map<std::string, std::string> DelegatesOf(const TNamespace& cimNamespace, TServingElements& elements) {
  auto bases = kJfrBaseClasses;
  std::sort(bases.begin(), bases.end());
  std::map<std::string, std::string> delegates;
  for (const std::string_view base : bases) {
    const auto delegate = DelegateOf(cimNamespace, base, elements);
    if (delegate) delegates.emplace(delegate->Name(), cimNamespace.FindClass(base)->Name());
  }
  return delegates;
}

// The bytes of an array of 14 numbers, each of which fits into a byte.
std::optional<std::array<std::uint8_t, wire::RegisterRecord::kSize>> BytesOf(const TCIMValue& value) {
  if (value.IsNull() || !value.IsArray()) return std::nullopt;
  const auto& elements = static_cast<const std::vector<TCIMValue>&>(value);
  if (elements.size() != wire::RegisterRecord::kSize) return std::nullopt;
  std::array<std::uint8_t, wire::RegisterRecord::kSize> bytes{};
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    if (elements[i].IsNull() || elements[i].GetType() != TCIMValue::TCIMType::kUint8) return std::nullopt;
    bytes.at(i) = static_cast<std::uint8_t>(elements[i].ToInteger());
  }
  return bytes;
}

TServedClass Describe(const boost::shared_ptr<TCIMClass>& cimClass, EPath path) {
  TServedClass entry;
  entry.cimClass = cimClass;
  entry.path = path;
  if (path == EPath::kCapture) return entry;
  entry.instances = InstanceCountOf(*cimClass);
  entry.registers = RegistersOf(*cimClass, path).size();
  return entry;
}

// The collector checks first whether a class is a JFR delegate, even if its name belongs to another path. It
// compares the names of requested classes case-sensitively.
EPath PathOf(const TCIMClass& cimClass, bool isDelegate) {
  if (isDelegate) return EPath::kJfr;
  if (EqualNames(cimClass.Name(), kCaptureClass)) return EPath::kCapture;
  if (Contains(kR8Classes, cimClass.Name())) return EPath::kR8;
  return BaseClassOf(cimClass).empty() ? EPath::kNone : EPath::kJfr;
}

}  // namespace

const char* NameOfPath(EPath path) {
  switch (path) {
    case EPath::kR8: return "R8";
    case EPath::kJfr: return "JFR";
    case EPath::kCapture: return "FFDC";
    case EPath::kNone: break;
  }
  return "none";
}

bool IsSkippedName(EPath path, std::string_view propertyName) {
  static constexpr std::array<std::string_view, 4> kSkipped = {"MachineType", "DateTimeOfCollection", "StatisticTime",
                                                               "InstanceID"};
  return Contains(kSkipped, propertyName) || (path == EPath::kR8 && propertyName == "ElementName");
}

bool IsRegister(const TCIMClass& cimClass, const TPropertyDecl& property, EPath path) {
  if (path != EPath::kR8 && path != EPath::kJfr) return false;
  const auto origin = property.GetClassOrigin(kNoContext);
  if (!origin || IsSkippedName(path, property.Definition().name)) return false;
  const std::string& originName = origin->GetName(kNoContext);
  return originName == cimClass.Name() || (cimClass.SuperClass() && originName == cimClass.SuperClass()->Name());
}

std::vector<boost::shared_ptr<TPropertyDecl>> RegistersOf(const TCIMClass& cimClass, EPath path) {
  std::vector<boost::shared_ptr<TPropertyDecl>> registers;
  for (const auto& property : cimClass.Properties()) {
    if (IsRegister(cimClass, *property, path)) registers.push_back(property);
  }
  return registers;
}

namespace {

bool IsNarrow(const TPropertyDecl& property) {
  const auto length = property.Qualifiers().Find(std::string(kMaxLen));
  if (!length || length->GetValue().IsArray()) return false;
  try {
    return static_cast<unsigned int>(length->GetValue()) == 4;
  } catch (const std::exception&) {
    return false;
  }
}

}  // namespace

std::vector<TRegisterShape> RegisterShapesOf(const TCIMClass& cimClass, EPath path) {
  std::vector<TRegisterShape> shapes;
  for (std::size_t i = 0; i < cimClass.Properties().size(); ++i) {
    const TPropertyDecl& property = *cimClass.Properties()[i];
    if (IsRegister(cimClass, property, path)) shapes.push_back({i, path == EPath::kR8 && IsNarrow(property)});
  }
  return shapes;
}

unsigned int InstanceCountOf(const TCIMClass& cimClass) {
  const auto qualifier = cimClass.Qualifiers().Find(std::string(kMaxInstanceCount));
  if (!qualifier || qualifier->GetValue().IsArray()) return 0;
  try {
    return static_cast<unsigned short>(qualifier->GetValue());
  } catch (const std::exception&) {
    return 0;
  }
}

std::optional<std::string> MatchingElement(const TCIMClass& cimClass, const std::string& machineType) {
  const TCIMValue* const element = TServingElements(machineType).Of(cimClass);
  return element ? std::optional(element->ToString(10)) : std::nullopt;
}

boost::shared_ptr<TCIMClass> DelegateOf(const TNamespace& cimNamespace, std::string_view baseClass,
                                        const std::string& machineType) {
  TServingElements elements(machineType);
  return DelegateOf(cimNamespace, baseClass, elements);
}

std::vector<TServedClass> CollectableClasses(const TNamespace& cimNamespace, const std::string& machineType) {
  TServingElements elements(machineType);
  const auto delegates = DelegatesOf(cimNamespace, elements);
  std::vector<TServedClass> classes;
  for (const auto& candidate : cimNamespace.Classes()) {
    const auto delegate = delegates.find(candidate->Name());
    const EPath path = PathOf(*candidate, delegate != delegates.end());
    if (path == EPath::kNone) continue;
    TServedClass entry = Describe(candidate, path);
    const TCIMValue* const element = elements.Of(*candidate);
    if (path == EPath::kCapture) {
      entry.served = candidate->Name() == kCaptureClass;
    } else if (path == EPath::kR8) {
      entry.served = element != nullptr;
    } else {
      entry.served = delegate != delegates.end();
      entry.baseClass = entry.served ? delegate->second : BaseClassOf(*candidate);
    }
    if (entry.served && element && path != EPath::kCapture) entry.servedBy = element->ToString(10);
    classes.push_back(std::move(entry));
  }
  std::stable_partition(classes.begin(), classes.end(),
                        [](const TServedClass& entry) { return entry.path != EPath::kCapture; });
  return classes;
}

bool IsEightByteFamily(std::string_view machineType) {
  static constexpr std::array<std::string_view, 4> kFamily = {"4411", "4414", "4523", "4524"};
  return Contains(kFamily, machineType);
}

std::optional<TRegisterValue> SplitRegisterValue(EPath path, const TCIMValue& value) {
  const auto bytes = BytesOf(value);
  if (!bytes || (path != EPath::kR8 && path != EPath::kJfr)) return std::nullopt;
  TRegisterValue result{{(*bytes)[0], (*bytes)[1], (*bytes)[2]}, {}};
  const auto part = [&bytes](std::size_t start, std::size_t size) {
    const auto* first = bytes->data() + start;
    return std::vector<std::uint8_t>(first, first + size);
  };
  if (path == EPath::kJfr) {
    if (!std::equal(kEqualsSign.begin(), kEqualsSign.end(), bytes->begin() + 3)) return std::nullopt;
    result.value = part(6, 8);
    return result;
  }
  const bool marked = std::equal(kMarkerTail.begin(), kMarkerTail.end(), bytes->begin() + 10);
  result.value = part(3, marked ? 4 : 8);
  return result;
}

}  // namespace velhost::CollectorProfile
