// The qualifiers that a schema declares, and their uses on its elements.
#pragma once

#include <cstdint>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "host/model/cimclass.h"
#include "host/schema/mofvalue.h"
#include "host/schema/schemaload.h"
#include "host/schema/schemalog.h"

namespace velhost {

struct TDeclaredQualifier {
  std::string_view name;
  TValueSlot slot;
  TCIMValue defaultValue;
  std::uint32_t scope;  ///< Mof::kScope bits
  TQualifierFlavor flavor;
  TSchemaUnit unit;  ///< where it is declared
  Mof::TSpan place;
};

/// Which qualifier values of an element are kept; all of them are checked. kFixed: those that an overriding element
/// must not change, and those that hide an inherited value of that kind.
enum class EKeptValues { kNone, kFixed, kAll };

/// An element that has qualifiers.
struct TQualifiedElement {
  std::uint32_t scope;             ///< one of Mof::kScope; 0: not checked
  const TQualifierSet* inherited;  ///< the qualifiers of the overridden element; null if there is none
  EKeptValues keeps;
};

class TQualifierTable {
 public:
  TQualifierTable(const TSchemaLimits& limits, const Mof::TNameSet& mentioned, TSchemaLog& log)
      : limits_(limits), mentioned_(mentioned), log_(log), values_(log) {}

  /// Registers a declaration. A second one of the same name is an error.
  void Declare(const TSchemaUnit& unit, const Mof::TQualifierSyntax& syntax);

  /// The qualifiers used, with their values and effective flavors (those of the use, else those of the declaration).
  /// Errors are reported, and that use is left out.
  std::vector<TQualifierDefinition> Resolve(const TSchemaUnit& unit, Mof::TRange uses,
                                            const TQualifiedElement& element);

 private:
  friend struct TSchemaTestPeer;

  /// Returns null and reports an error if the name is not declared.
  const TDeclaredQualifier* Find(const TSchemaUnit& unit, Mof::TSpan name);
  bool HasScope(const TSchemaUnit& unit, const Mof::TQualifierUse& use, const TDeclaredQualifier& declared,
                std::uint32_t scope);
  bool ReadValue(const TSchemaUnit& unit, const Mof::TQualifierUse& use, const TDeclaredQualifier& declared, bool keep,
                 TQualifierDefinition& definition);
  /// Returns false and reports an error if the use changes an inherited value that must not be overridden.
  bool MayOverride(const TSchemaUnit& unit, const Mof::TQualifierUse& use, const TDeclaredQualifier& declared,
                   const TQualifierDefinition& definition, const TQualifierSet* inherited);

  const TSchemaLimits& limits_;
  const Mof::TNameSet& mentioned_;
  TSchemaLog& log_;
  TValueReader values_;
  std::unordered_map<std::string_view, TDeclaredQualifier, TNameHash, TNameEqual> declared_;
  std::vector<std::string_view> names_;  // in declaration order
};

}  // namespace velhost
