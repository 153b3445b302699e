// Converts literals to values of a declared type.
//
// Integers are checked against the type's range. Null fits every type, and an integer fits a real type; any other
// mismatch between literal and slot is an error. A literal that the scanner has reported is not reported again.
#pragma once
#include "host/base/api.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "host/schema/schemaload.h"
#include "nkrovel20/tcimvalue.h"

namespace velhost {

/// The slot that a value must fit.
struct TValueSlot {
  TCIMValue::TCIMType::ECIMType type;
  bool isArray;
  std::uint32_t size;          ///< the maximum number of elements of an array; 0: any number
  std::string_view qualifier;  ///< the qualifier that has the value; empty for a property
};

/// "uint8", "array of uint8"
std::string NameOf(const TValueSlot& slot);

/// Whether a qualifier's value is true; so is the text "true".
bool IsTrue(const TCIMValue& value);

/// A null value of the slot's type.
TCIMValue NullOf(const TValueSlot& slot);

/// An alias used in a value. It can be checked once all instances are known.
struct TAliasUse {
  TSchemaPlace place;
  std::string name;  ///< a copy, because an embedded text no longer exists by then
  std::string_view referenceClass;
};

class TValueReader {
 public:
  explicit TValueReader(TSchemaLog& log) : log_(log) {}

  /// Returns false, reports the error and sets `value` to null if the literal does not fit.
  bool Read(const TSchemaUnit& unit, const Mof::TInitializer& initializer, const TValueSlot& slot, TCIMValue& value);
  /// The same, but does not build string values, which would take time.
  bool Check(const TSchemaUnit& unit, const Mof::TInitializer& initializer, const TValueSlot& slot);

  /// The aliases found since the last call.
  std::vector<Mof::TSpan> TakeAliases();

 private:
  bool Fits(const TSchemaUnit& unit, const Mof::TInitializer& initializer, const TValueSlot& slot);
  bool Scalar(const TSchemaUnit& unit, const Mof::TLiteral& literal, const TValueSlot& slot, TCIMValue& value);
  bool Integer(const TSchemaUnit& unit, const Mof::TLiteral& literal, const TValueSlot& slot, TCIMValue& value);
  bool Real(const TSchemaUnit& unit, const Mof::TLiteral& literal, const TValueSlot& slot, TCIMValue& value);
  bool DateTime(const TSchemaUnit& unit, const Mof::TLiteral& literal, const TValueSlot& slot, TCIMValue& value);
  bool Character(const TSchemaUnit& unit, const Mof::TLiteral& literal, const TValueSlot& slot, TCIMValue& value);
  /// Reports "found FOUND, expected ..." and returns false.
  bool Mismatch(const TSchemaUnit& unit, Mof::TSpan span, const TValueSlot& slot, const std::string& found,
                const std::string& expected);
  bool Mismatch(const TSchemaUnit& unit, Mof::TSpan span, const TValueSlot& slot, const std::string& expected);

  TSchemaLog& log_;
  std::vector<Mof::TSpan> aliases_;
};

}  // namespace velhost
