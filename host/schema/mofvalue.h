// Literals as values of a declared type.
//
// Integers are checked against the type's range. Null fits every type, and an integer a real type;
// otherwise a literal is of the slot's kind or an error. A literal that the scanner has reported is
// not reported again.
#pragma once
#include "host/base/api.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "host/schema/schemaload.h"
#include "nkrovel20/tcimvalue.h"

namespace velhost {

/// What a value is to fit.
struct TValueSlot {
  TCIMValue::TCIMType::ECIMType type;
  bool isArray;
  std::uint32_t size;          ///< the most elements that an array may have; 0: any number
  std::string_view qualifier;  ///< whose value it is; empty for one of a property
};

/// "uint8", "array of uint8"
std::string NameOf(const TValueSlot& slot);

/// Whether a qualifier's value is true, also as a text.
bool IsTrue(const TCIMValue& value);

/// A null value of the slot's type.
TCIMValue NullOf(const TValueSlot& slot);

/// An alias that stands in a value: it can be checked once all instances are known.
struct TAliasUse {
  TSchemaPlace place;
  std::string name;  ///< a copy: an embedded text is gone by then
  std::string_view referenceClass;
};

class TValueReader {
 public:
  explicit TValueReader(TSchemaLog& log) : log_(log) {}

  /// Reports what does not fit and gives false; `value` then is null.
  bool Read(const TSchemaUnit& unit, const Mof::TInitializer& initializer, const TValueSlot& slot, TCIMValue& value);
  /// The same without making the value where that takes time: for strings.
  bool Check(const TSchemaUnit& unit, const Mof::TInitializer& initializer, const TValueSlot& slot);

  /// The aliases met since the last call.
  std::vector<Mof::TSpan> TakeAliases();

 private:
  bool Fits(const TSchemaUnit& unit, const Mof::TInitializer& initializer, const TValueSlot& slot);
  bool Scalar(const TSchemaUnit& unit, const Mof::TLiteral& literal, const TValueSlot& slot, TCIMValue& value);
  bool Integer(const TSchemaUnit& unit, const Mof::TLiteral& literal, const TValueSlot& slot, TCIMValue& value);
  bool Real(const TSchemaUnit& unit, const Mof::TLiteral& literal, const TValueSlot& slot, TCIMValue& value);
  bool DateTime(const TSchemaUnit& unit, const Mof::TLiteral& literal, const TValueSlot& slot, TCIMValue& value);
  bool Character(const TSchemaUnit& unit, const Mof::TLiteral& literal, const TValueSlot& slot, TCIMValue& value);
  /// "found FOUND, expected ..."; false.
  bool Mismatch(const TSchemaUnit& unit, Mof::TSpan span, const TValueSlot& slot, const std::string& found,
                const std::string& expected);
  bool Mismatch(const TSchemaUnit& unit, Mof::TSpan span, const TValueSlot& slot, const std::string& expected);

  TSchemaLog& log_;
  std::vector<Mof::TSpan> aliases_;
};

}  // namespace velhost
