// A class as a schema declares it: plain data passed from a schema reader to the object model.
#pragma once
#include "host/base/api.h"

#include <cstdint>
#include <string>
#include <vector>

#include "host/base/textdiagnostic.h"
#include "nkrovel20/tcimvalue.h"

namespace velhost {

struct TQualifierFlavor {
  bool overridable = true;  ///< EnableOverride or DisableOverride
  bool toSubclass = true;   ///< ToSubclass or Restricted
  bool translatable = false;
};

struct TQualifierDefinition {
  std::string name;
  TCIMValue value;
  TQualifierFlavor flavor;
  TSourceLocation location;
  bool isDefault = false;  ///< the value is the default from the qualifier's declaration
};

struct TPropertyDefinition {
  std::string name;
  TCIMValue::TCIMType type = TCIMValue::TCIMType::kNone;
  bool isArray = false;
  std::uint32_t arraySize = 0;  ///< N of "[N]"; 0 for "[]" and scalars
  std::string referenceClass;   ///< only for references
  TCIMValue defaultValue;       ///< null if the schema has none
  std::vector<TQualifierDefinition> qualifiers;
  TSourceLocation location;
};

struct TClassDefinition {
  std::string name;
  std::string superClass;  ///< empty for a root class
  std::vector<TQualifierDefinition> qualifiers;
  std::vector<TPropertyDefinition> properties;
  TSourceLocation location;
};

}  // namespace velhost
