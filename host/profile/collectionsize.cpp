#include "host/profile/collectionsize.h"

#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace velhost::CollectorProfile {

namespace {

using TElements = std::vector<TCIMValue>;

constexpr std::size_t kBytesOfAnElement = 16;

// Without the qualifier, the collector stops at the first register.
std::uint64_t AddressCount(const TPropertyDecl& property) {
  const auto offset = property.Qualifiers().Find(std::string(kOffset));
  if (!offset || !offset->GetValue().IsArray()) return 1;
  return static_cast<const TElements&>(offset->GetValue()).size();
}

std::string TooMany(std::uint64_t count, const std::string& what, std::uint64_t most) {
  return "takes " + std::to_string(count) + " " + what + ", expected at most " + std::to_string(most);
}

std::size_t BytesOf(const TElements& elements) {
  std::size_t bytes = 0;
  for (const TCIMValue& element : elements) bytes += element.ToString(10).size() + kBytesOfAnElement;
  return bytes;
}

}  // namespace

TCollectionSize& TCollectionSize::operator+=(const TCollectionSize& other) {
  instances += other.instances;
  reads += other.reads;
  properties += other.properties;
  return *this;
}

TCollectionSize SizeOf(const TCIMClass& cimClass, EPath path, std::uint64_t serviceProcessors) {
  TCollectionSize size;
  if (path != EPath::kR8 && path != EPath::kJfr) return size;
  size.instances = InstanceCountOf(cimClass) * (path == EPath::kJfr ? serviceProcessors : 1);
  for (const auto& property : cimClass.Properties()) {
    if (IsRegister(cimClass, *property, path)) size.reads += path == EPath::kR8 ? AddressCount(*property) : 1;
  }
  size.reads *= size.instances;
  size.properties = size.instances * cimClass.Properties().size();
  return size;
}

std::string ProblemOf(const TCollectionSize& size) {
  if (size.instances > kMostInstances) return TooMany(size.instances, "instances", kMostInstances);
  if (size.reads > kMostRegisterReads) return TooMany(size.reads, "register reads", kMostRegisterReads);
  if (size.properties <= kMostInstanceProperties) return {};
  return TooMany(size.properties, "properties of instances", kMostInstanceProperties);
}

std::string AddressProblemOf(const TPropertyDecl& property) {
  const std::uint64_t count = AddressCount(property);
  if (count <= kMostAddresses) return {};
  return "has " + std::to_string(count) + " addresses in its qualifier '" + std::string(kOffset) +
         "', expected at most " + std::to_string(kMostAddresses);
}

std::string MachineTypesProblemOf(const TNamespace& cimNamespace) {
  std::size_t bytes = 0;
  std::unordered_map<const TElements*, std::size_t> known;  // lists may be shared; each is counted once
  for (const auto& cimClass : cimNamespace.Classes()) {
    const auto qualifier = cimClass->Qualifiers().Find(std::string(kSupportedMachineTypes));
    if (!qualifier || !qualifier->GetValue().IsArray()) continue;
    const TElements& elements = qualifier->GetValue();
    const auto [list, isNew] = known.emplace(&elements, 0);
    if (isNew) list->second = BytesOf(elements);
    bytes += list->second;
  }
  if (bytes <= kMostMachineTypeBytes) return {};
  return "the classes have " + std::to_string(bytes) + " bytes in their qualifiers '" +
         std::string(kSupportedMachineTypes) +
         "', including inherited ones and 16 for each element, expected at most " +
         std::to_string(kMostMachineTypeBytes);
}

}  // namespace velhost::CollectorProfile
