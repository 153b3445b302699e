// Classes of a test schema, written as one expression:
//
//   ns->AddClass(TClassBuilder("CHIP", "SUPER").Machines({"6203"}).MaxInstances(2).Register("R", 0x10, 8));
//
// Header only, so that the fuzz targets can use it too.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "host/model/classdefinition.h"

namespace testsupport {

using TType = NKROVEL20::TCIMValue::TCIMType;

inline NKROVEL20::TCIMValue Number(TType type, std::uint64_t number) {
  return NKROVEL20::TCIMValue::FromInteger(type, number);
}

/// An array of uint32 values.
inline NKROVEL20::TCIMValue Numbers(const std::vector<std::uint32_t>& numbers) {
  std::vector<NKROVEL20::TCIMValue> elements;
  for (const std::uint32_t number : numbers) elements.push_back(Number(TType::kUint32, number));
  return NKROVEL20::TCIMValue(TType::kUint32, 0, elements);
}

/// An array of strings.
inline NKROVEL20::TCIMValue Strings(const std::vector<std::string>& texts) {
  return NKROVEL20::TCIMValue(TType::kString, 0, std::vector<NKROVEL20::TCIMValue>(texts.begin(), texts.end()));
}

class TClassBuilder {
 public:
  explicit TClassBuilder(const std::string& name, const std::string& superClass = {}) {
    definition_.name = name;
    definition_.superClass = superClass;
  }

  TClassBuilder& Qualifier(const std::string& name, const NKROVEL20::TCIMValue& value) {
    definition_.qualifiers.push_back({name, value, {}, {}});
    return *this;
  }
  TClassBuilder& Machines(const std::vector<std::string>& types) {
    return Qualifier("SupportedMachineTypes", Strings(types));
  }
  TClassBuilder& MaxInstances(std::uint16_t count) {
    return Qualifier("MaxInstanceCount", Number(TType::kUint16, count));
  }

  /// A scalar property without qualifiers.
  TClassBuilder& Scalar(const std::string& name, TType type) {
    velhost::TPropertyDefinition property;
    property.name = name;
    property.type = type;
    definition_.properties.push_back(property);
    return *this;
  }
  /// An array property with these qualifiers.
  TClassBuilder& Array(const std::string& name,
                       const std::vector<std::pair<std::string, NKROVEL20::TCIMValue>>& qualifiers,
                       TType type = TType::kUint8) {
    velhost::TPropertyDefinition property;
    property.name = name;
    property.type = type;
    property.isArray = true;
    for (const auto& [qualifier, value] : qualifiers) property.qualifiers.push_back({qualifier, value, {}, {}});
    definition_.properties.push_back(property);
    return *this;
  }
  /// A register that is read by address, as the R8 classes declare it.
  TClassBuilder& Register(const std::string& name, std::uint32_t address, std::uint32_t maxLen) {
    return Array(name, {{"Offset", Number(TType::kUint32, address)}, {"MaxLen", Number(TType::kUint32, maxLen)}});
  }
  /// A register with several addresses.
  TClassBuilder& Register(const std::string& name, const std::vector<std::uint32_t>& addresses, std::uint32_t maxLen) {
    return Array(name, {{"Offset", Numbers(addresses)}, {"MaxLen", Number(TType::kUint32, maxLen)}});
  }
  /// A record of a register block, as the JFR classes declare it.
  TClassBuilder& Record(const std::string& name, std::uint16_t index) {
    return Array(name, {{"Index", Number(TType::kUint16, index)}, {"MaxLen", Number(TType::kUint32, 8)}});
  }
  /// The four properties that every collected register instance carries beside its registers.
  TClassBuilder& Identification() {
    return Scalar("InstanceID", TType::kString)
        .Scalar("ElementName", TType::kString)
        .Scalar("MachineType", TType::kString)
        .Scalar("StatisticTime", TType::kDateTime);
  }
  /// The eight properties of a capture file.
  TClassBuilder& CaptureProperties() {
    for (const char* const name : {"FileName", "ErrRawData"}) Scalar(name, TType::kString);
    Scalar("MessageTimestamp", TType::kDateTime);
    for (const char* const name : {"SourceNode", "CreationClassName", "LogCreationClassName", "LogName", "RecordID"}) {
      Scalar(name, TType::kString);
    }
    return *this;
  }

  operator const velhost::TClassDefinition&() const { return definition_; }  // NOLINT: reads as the class itself

 private:
  velhost::TClassDefinition definition_;
};

}  // namespace testsupport
