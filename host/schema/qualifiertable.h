// The qualifiers that a schema declares, and their uses on its elements.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "host/meaning/words.h"
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
  TSchemaUnit unit;  ///< where it is declared; without a source if the host knows it by itself
  Mof::TSpan place;

  bool IsHidden() const { return unit.source != nullptr && unit.source->IsHidden(); }
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

/// The qualifiers of meaning (Meaning::kQualifiers) need no declaration. If there is one, it counts.
class TQualifierTable {
 public:
  TQualifierTable(const TSchemaLimits& limits, const Mof::TNameSet& mentioned, TSchemaLog& log);

  /// Registers a declaration. A second one of the same name is an error; one that gives a qualifier of meaning another
  /// type is a warning, because the host then takes it for another qualifier.
  void Declare(const TSchemaUnit& unit, const Mof::TQualifierSyntax& syntax);

  /// The qualifiers used, with their values and effective flavors (those of the use, else those of the declaration).
  /// Errors are reported, and that use is left out.
  std::vector<TQualifierDefinition> Resolve(const TSchemaUnit& unit, Mof::TRange uses,
                                            const TQualifiedElement& element);

 private:
  friend struct TSchemaTestPeer;

  void WarnOfAnotherType(const TSchemaUnit& unit, const Mof::TQualifierSyntax& syntax, const TValueSlot& slot);
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
  std::vector<std::string_view> names_;                                // in declaration order
  std::array<TDeclaredQualifier, Meaning::kQualifiers.size()> known_;  // parallel to Meaning::kQualifiers
};

}  // namespace velhost
