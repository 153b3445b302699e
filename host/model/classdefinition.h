// A class as a schema declares it: plain data between a schema reader and the object model.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "nkrovel20/tcimvalue.h"

namespace NKROVEL20 {

/// A place in a schema text. `file` is a display name; line and column count from 1, 0 is unknown.
struct TSourceLocation {
  std::string file;
  std::uint32_t line = 0;
  std::uint32_t column = 0;
};

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

}  // namespace NKROVEL20
