// Classes of a test schema, written as one expression:
//
//   ns->AddClass(TClassBuilder("CHIP", "SUPER").Machines({"6203"}).MaxInstances(2).Register("R", 0x10, 8));
//   ns->AddClass(TClassBuilder("ODD").With("MaxInstanceCount", TCIMValue("2")).Bytes("R", {{"Index", TCIMValue(5)}}));
//
// Header-only, so that the fuzz targets can use it too.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "host/model/cimclass.h"
#include "tests/support/namespaces.h"

namespace tests {

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

using TQualifiers = std::vector<std::pair<std::string, NKROVEL20::TCIMValue>>;

inline constexpr velhost::TQualifierFlavor kRestricted = {true, false, false};

inline velhost::TQualifierDefinition Qualifier(const std::string& name, const NKROVEL20::TCIMValue& value,
                                               velhost::TQualifierFlavor flavor = {}) {
  return {name, value, flavor, {}};
}

class TClassBuilder : public velhost::TClassDefinition {
 public:
  explicit TClassBuilder(const std::string& itsName, const std::string& itsSuperClass = {}) {
    name = itsName;
    superClass = itsSuperClass;
  }

  TClassBuilder& With(const std::string& qualifier, const NKROVEL20::TCIMValue& value,
                      velhost::TQualifierFlavor flavor = {}) {
    qualifiers.push_back(Qualifier(qualifier, value, flavor));
    return *this;
  }
  TClassBuilder& Machines(const std::vector<std::string>& types) {
    return With("SupportedMachineTypes", Strings(types));
  }
  TClassBuilder& MaxInstances(std::uint16_t count) { return With("MaxInstanceCount", Number(TType::kUint16, count)); }

  TClassBuilder& Property(TType type, const std::string& property, bool isArray = false,
                          const TQualifiers& itsQualifiers = {}) {
    velhost::TPropertyDefinition definition;
    definition.name = property;
    definition.type = type;
    definition.isArray = isArray;
    for (const auto& [qualifier, value] : itsQualifiers) definition.qualifiers.push_back(Qualifier(qualifier, value));
    properties.push_back(definition);
    return *this;
  }
  TClassBuilder& Text(const std::string& property, const TQualifiers& itsQualifiers = {}) {
    return Property(TType::kString, property, false, itsQualifiers);
  }
  TClassBuilder& Time(const std::string& property) { return Property(TType::kDateTime, property); }
  /// An array of unsigned 8-bit numbers, as register properties are.
  TClassBuilder& Bytes(const std::string& property, const TQualifiers& itsQualifiers = {}) {
    return Property(TType::kUint8, property, true, itsQualifiers);
  }
  /// A register read by address, as the R8 classes declare it.
  TClassBuilder& Register(const std::string& property, std::uint32_t address, std::uint32_t maxLen) {
    return Bytes(property, {{"Offset", Number(TType::kUint32, address)}, {"MaxLen", Number(TType::kUint32, maxLen)}});
  }
  /// A register with several addresses.
  TClassBuilder& Register(const std::string& property, const std::vector<std::uint32_t>& addresses,
                          std::uint32_t maxLen) {
    return Bytes(property, {{"Offset", Numbers(addresses)}, {"MaxLen", Number(TType::kUint32, maxLen)}});
  }
  /// A record of a register block, as the JFR classes declare it.
  TClassBuilder& Record(const std::string& property, std::uint16_t index) {
    return Bytes(property, {{"Index", Number(TType::kUint16, index)}, {"MaxLen", Number(TType::kUint32, 8)}});
  }
  /// The four properties that every collected register instance has besides its registers.
  TClassBuilder& Identification() {
    return Text("InstanceID").Text("ElementName").Text("MachineType").Time("StatisticTime");
  }
  /// The eight properties of a capture file.
  TClassBuilder& CaptureProperties() {
    return Text("FileName")
        .Text("ErrRawData")
        .Time("MessageTimestamp")
        .Text("SourceNode")
        .Text("CreationClassName")
        .Text("LogCreationClassName")
        .Text("LogName")
        .Text("RecordID");
  }
};

}  // namespace tests
