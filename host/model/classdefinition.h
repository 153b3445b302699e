// A class as a schema declares it: plain data between a schema reader and the object model.
#pragma once
#include "host/base/api.h"

#include <cstdint>
#include <string>
#include <vector>

#include "host/base/textdiagnostic.h"
#include "nkrovel20/tcimvalue.h"

namespace velhost {

struct TQualifierFlavor {
  bool overridable = true;  ///< EnableOverride against DisableOverride
  bool toSubclass = true;   ///< ToSubclass against Restricted
  bool translatable = false;
};

struct TQualifierDefinition {
  std::string name;
  TCIMValue value;
  TQualifierFlavor flavor;
  TSourceLocation location;
  bool isDefault = false;  ///< the value is the one that the qualifier's declaration gives
};

struct TPropertyDefinition {
  std::string name;
  TCIMValue::TCIMType type = TCIMValue::TCIMType::kNone;
  bool isArray = false;
  std::uint32_t arraySize = 0;  ///< N of "[N]"; 0 for "[]" and scalars
  std::string referenceClass;   ///< of a reference
  TCIMValue defaultValue;       ///< null where the schema gives none
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
