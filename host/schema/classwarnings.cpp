#include "host/schema/classwarnings.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/base/text.h"
#include "host/profile/collectionsize.h"
#include "host/profile/collectorprofile.h"
#include "wire/registerread.h"

namespace velhost {

namespace {

using CollectorProfile::EPath;
using wire::RegisterRead::kAddressMask;

class TRegisterWarnings {
 public:
  TRegisterWarnings(const TCIMClass& cimClass, EPath path, TNeedFindings& findings)
      : class_(cimClass), path_(path), findings_(findings) {}

  void Warn(const TPropertyDecl& property) {
    if (path_ == EPath::kR8) {
      WarnOfAddresses(property);
    } else {
      WarnOfIndex(property);
    }
    WarnOfLength(property);
  }

 private:
  // Null unless the register has the qualifier with a number or numbers.
  static boost::shared_ptr<const TQualifier> Find(const TPropertyDecl& property, std::string_view name) {
    const auto qualifier = property.Qualifiers().Find(std::string(name));
    const bool isUsable = qualifier && !qualifier->GetValue().IsNull() && IsInteger(qualifier->GetValue());
    return isUsable ? qualifier : nullptr;
  }

  // At the qualifier, which an overriding property may have inherited; but if the property is hidden, there, so that it
  // is not quoted.
  void WarnAt(const TQualifier& qualifier, const TPropertyDecl& property, const std::string& predicate) {
    const TSourceLocation& place = property.Definition().location;
    findings_.Warning(findings_.MayQuote(place) ? qualifier.Location() : place,
                      Named(class_, property) + " has " + predicate);
  }

  void WarnOfAddresses(const TPropertyDecl& property) {
    const auto offset = Find(property, CollectorProfile::kOffset);
    if (!offset) return;
    const TCIMValue& value = offset->GetValue();
    if (!value.IsArray()) return WarnOfAddress(property, *offset, value);
    const std::vector<TCIMValue>& addresses = value;
    WarnOfAddressCount(property, *offset, addresses.size());
    for (const TCIMValue& address : addresses) WarnOfAddress(property, *offset, address);
  }

  void WarnOfAddressCount(const TPropertyDecl& property, const TQualifier& offset, std::size_t count) {
    if (count == 1 || count > CollectorProfile::kMostAddresses) return;
    const std::string found = count == 0 ? "no address" : std::to_string(count) + " addresses";
    WarnAt(offset, property, found + " in its qualifier " + SingleQuoted(CollectorProfile::kOffset) + ", expected one");
  }

  void WarnOfAddress(const TPropertyDecl& property, const TQualifier& offset, const TCIMValue& address) {
    const std::uint64_t whole = address.ToInteger();
    const auto sent = static_cast<std::uint32_t>(whole & kAddressMask);
    if (whole > kAddressMask) {
      WarnAt(offset, property,
             fmt::format("an address above 24 bits: 0x{:X} is sent as 0x{:06X}, expected at most "
                         "0x{:06X}",
                         whole, sent, kAddressMask));
    }
    WarnOfSecond(property, offset, sent);
  }

  void WarnOfIndex(const TPropertyDecl& property) {
    const auto index = Find(property, CollectorProfile::kIndex);
    if (!index || index->GetValue().IsArray() || index->GetValue().ToInteger() > 0xFFFF) return;
    WarnOfSecond(property, *index, static_cast<std::uint32_t>(index->GetValue().ToInteger()));
  }

  // An address that one register has twice is reported with the number of its addresses.
  void WarnOfSecond(const TPropertyDecl& property, const TQualifier& qualifier, std::uint32_t place) {
    const TPropertyDecl* const first = firsts_.emplace(place, &property).first->second;
    if (first == &property) return;
    const TPropertyDefinition& definition = first->Definition();
    const std::string other = findings_.MayQuote(definition.location) ? "the register " + SingleQuoted(definition.name)
                                                                      : "an earlier register";
    const std::string name = path_ == EPath::kR8 ? fmt::format("address 0x{:06X}", place)
                                                 : fmt::format("{} {}", CollectorProfile::kIndex, place);
    WarnAt(qualifier, property, "the " + name + " of " + other + ", expected one of its own");
  }

  void WarnOfLength(const TPropertyDecl& property) {
    const auto length = Find(property, CollectorProfile::kMaxLen);
    if (!length || length->GetValue().IsArray()) return;
    const std::uint64_t bytes = length->GetValue().ToInteger();
    const bool isNarrow = path_ == EPath::kR8 && bytes == 4;
    if (isNarrow || bytes == 8) return;
    WarnAt(*length, property,
           "a " + std::string(CollectorProfile::kMaxLen) + " of " + length->GetValue().ToString(10) + ", expected " +
               (path_ == EPath::kR8 ? "4 or 8" : "8"));
  }

  const TCIMClass& class_;
  const EPath path_;
  TNeedFindings& findings_;
  std::map<std::uint32_t, const TPropertyDecl*> firsts_;  // the first register of each address or index
};

}  // namespace

void WarnOfRegisters(const TCIMClass& cimClass, EPath path, TNeedFindings& findings) {
  TRegisterWarnings warnings(cimClass, path, findings);
  for (const auto& property : cimClass.Properties()) {
    if (CollectorProfile::IsRegister(cimClass, *property, path)) warnings.Warn(*property);
  }
}

namespace {

using CollectorProfile::EPath;

bool HasRegisterQualifier(const TPropertyDecl& property) {
  return property.Qualifiers().Find(std::string(CollectorProfile::kOffset)) ||
         property.Qualifiers().Find(std::string(CollectorProfile::kIndex));
}

bool DeclaresRegisters(const TCIMClass& cimClass) {
  const auto& properties = cimClass.Properties();
  return std::any_of(properties.begin(), properties.end(), [&cimClass](const auto& property) {
    return property->DeclaringClass() == cimClass.Name() && HasRegisterQualifier(*property);
  });
}

}  // namespace

TClassWarnings::TClassWarnings(const TNamespace& cimNamespace, const TClassPaths& paths, TNeedFindings& findings)
    : paths_(paths), findings_(findings) {
  for (const auto& cimClass : cimNamespace.Classes()) {
    if (TClassPaths::IsR8(*cimClass) || paths.IsJfr(*cimClass)) superClasses_.insert(cimClass->SuperClass().get());
  }
}

void TClassWarnings::Warn(const TCIMClass& cimClass) {
  const bool isR8 = TClassPaths::IsR8(cimClass);
  const bool isJfr = paths_.IsJfr(cimClass);
  if (!isR8 && !isJfr) return WarnOfUnreadRegisters(cimClass);
  WarnOfNoInstances(cimClass);
  if (isR8) WarnOfRegisters(cimClass, EPath::kR8, findings_);
  if (isJfr) WarnOfRegisters(cimClass, EPath::kJfr, findings_);
}

void TClassWarnings::WarnOfUnreadRegisters(const TCIMClass& cimClass) {
  if (paths_.IsBase(cimClass) || superClasses_.count(&cimClass) != 0 || !DeclaresRegisters(cimClass)) return;
  findings_.Warning(cimClass.Location(),
                    "nothing reads the registers of " + Named(cimClass) +
                        ", expected one of the R8 classes, a subclass of a JFR base class, or the direct superclass " +
                        "of such a class" + (findings_.Keeps() ? HintFor(cimClass.Name()) : std::string()));
}

std::string TClassWarnings::HintFor(const std::string& name) {
  std::vector<std::string_view> names(CollectorProfile::kR8Classes.begin(), CollectorProfile::kR8Classes.end());
  names.insert(names.end(), CollectorProfile::kJfrBaseClasses.begin(), CollectorProfile::kJfrBaseClasses.end());
  const std::string_view nearest = NearestName(name, names, nameSearchSteps_);
  if (!EqualNames(nearest, name)) return Suggestion(nearest, "'");
  return "; did you mean " + SingleQuoted(nearest) + ", which differs only in case?";
}

void TClassWarnings::WarnOfNoInstances(const TCIMClass& cimClass) {
  const auto count = cimClass.Qualifiers().Find(std::string(CollectorProfile::kMaxInstanceCount));
  if (!count) return;
  const TCIMValue& value = count->GetValue();
  if (value.IsArray() || value.IsNull() || !IsInteger(value) || value.ToInteger() != 0) return;
  findings_.Warning(count->Location(), Named(cimClass) + " is never collected: found a " +
                                           std::string(CollectorProfile::kMaxInstanceCount) +
                                           " of 0, expected at least 1");
}

}  // namespace velhost
