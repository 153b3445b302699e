// Builders for the classes of a test's schema.
//
//   const auto schema = TNamespace::Create();
//   schema->AddClass(Class("B", "A").With("MaxInstanceCount", TCIMValue(2)).Bytes("R", {{"Index", TCIMValue(5)}}));
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "host/model/classdefinition.h"

namespace velhost {

using TQualifiers = std::vector<std::pair<std::string, TCIMValue>>;

inline constexpr TQualifierFlavor kRestricted = {true, false, false};

inline TQualifierDefinition Qualifier(const std::string& name, const TCIMValue& value, TQualifierFlavor flavor = {}) {
  TQualifierDefinition definition;
  definition.name = name;
  definition.value = value;
  definition.flavor = flavor;
  return definition;
}

/// An array of strings, such as "SupportedMachineTypes".
inline TCIMValue Texts(const std::vector<std::string>& texts) {
  return TCIMValue(TCIMValue::TCIMType::kString, 0, std::vector<TCIMValue>(texts.begin(), texts.end()));
}

class TClassBuilder : public TClassDefinition {
 public:
  TClassBuilder& With(const std::string& qualifier, const TCIMValue& value, TQualifierFlavor flavor = {}) {
    qualifiers.push_back(Qualifier(qualifier, value, flavor));
    return *this;
  }
  TClassBuilder& Property(TCIMValue::TCIMType type, const std::string& property, bool array = false,
                          const TQualifiers& itsQualifiers = {}) {
    TPropertyDefinition definition;
    definition.name = property;
    definition.type = type;
    definition.isArray = array;
    for (const auto& [qualifier, value] : itsQualifiers) {
      definition.qualifiers.push_back(Qualifier(qualifier, value));
    }
    properties.push_back(definition);
    return *this;
  }
  TClassBuilder& Text(const std::string& property, const TQualifiers& itsQualifiers = {}) {
    return Property(TCIMValue::TCIMType::kString, property, false, itsQualifiers);
  }
  TClassBuilder& Time(const std::string& property) { return Property(TCIMValue::TCIMType::kDateTime, property); }
  /// An array of unsigned 8-bit numbers, the type of register properties.
  TClassBuilder& Bytes(const std::string& property, const TQualifiers& itsQualifiers = {}) {
    return Property(TCIMValue::TCIMType::kUint8, property, true, itsQualifiers);
  }
};

inline TClassBuilder Class(const std::string& name, const std::string& superClass = {}) {
  TClassBuilder builder;
  builder.name = name;
  builder.superClass = superClass;
  return builder;
}

}  // namespace velhost
