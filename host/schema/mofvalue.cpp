#include "host/schema/mofvalue.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <memory>

#include "host/base/cimdatetime.h"
#include "host/base/names.h"
#include "host/schema/mofscan.h"
#include "host/schema/moftext.h"

namespace velhost {

using TType = TCIMValue::TCIMType;
using Mof::ELiteral;

namespace {

// Halfway between the largest real32 and the next step: everything below rounds to a finite value.
constexpr double kReal32End = 3.4028235677973366e38;

struct TIntegerRange {
  std::uint64_t below;  // the magnitude of the lowest value
  std::uint64_t high;
};

constexpr TIntegerRange RangeOf(TType::ECIMType type) {
  switch (type) {
    case TType::kUint8: return {0, 0xFF};
    case TType::kSint8: return {0x80, 0x7F};
    case TType::kUint16:
    case TType::kChar16: return {0, 0xFFFF};
    case TType::kSint16: return {0x8000, 0x7FFF};
    case TType::kUint32: return {0, 0xFFFFFFFF};
    case TType::kSint32: return {0x80000000, 0x7FFFFFFF};
    case TType::kSint64: return {0x8000000000000000, 0x7FFFFFFFFFFFFFFF};
    default: return {0, 0xFFFFFFFFFFFFFFFF};
  }
}

bool IsInteger(TType::ECIMType type) { return type >= TType::kUint8 && type <= TType::kSint64; }

struct TNumber {
  bool negative = false;
  bool tooBig = false;
  std::uint64_t magnitude = 0;
};

// The scanner has already checked the digits.
TNumber NumberOf(std::string_view text) {
  TNumber number;
  number.negative = text[0] == '-';
  if (text[0] == '-' || text[0] == '+') text.remove_prefix(1);
  int radix = 10;
  if (text.size() > 2 && (text[1] == 'x' || text[1] == 'X')) {
    radix = 16;
    text.remove_prefix(2);
  } else if (text.back() == 'b' || text.back() == 'B') {
    radix = 2;
    text.remove_suffix(1);
  } else if (text.size() > 1 && text[0] == '0') {
    radix = 8;
  }
  const auto result = std::from_chars(text.data(), text.data() + text.size(), number.magnitude, radix);
  number.tooBig = result.ec != std::errc();
  return number;
}

std::string Range(TType::ECIMType type) {
  const TIntegerRange range = RangeOf(type);
  return "from " + std::string(range.below != 0 ? "-" : "") + std::to_string(range.below) + " to " +
         std::to_string(range.high);
}

// "a uint8", "an array"
std::string WithArticle(const std::string& noun) {
  const bool vowel = noun[0] == 'a' || noun[0] == 'e' || noun[0] == 'i' || noun[0] == 'o';
  return (vowel ? "an " : "a ") + noun;
}

const char* Example(TType::ECIMType type) {
  switch (type) {
    case TType::kBoolean: return "true or false";
    case TType::kString: return "a string";
    case TType::kChar16: return "a character in single quotes";
    case TType::kReference: return "an object path in double quotes or an alias";
    default: return nullptr;
  }
}

std::string Expected(TType::ECIMType type) {
  const char* example = Example(type);
  return example ? example : WithArticle(TType(type).ToString());
}

std::string QualifierOf(const TValueSlot& slot) {
  return slot.qualifier.empty() ? std::string() : " for the qualifier " + Mof::Quoted(slot.qualifier);
}

}  // namespace

std::string NameOf(const TValueSlot& slot) {
  const std::string type = slot.type == TType::kReference ? "reference" : TType(slot.type).ToString();
  return slot.isArray ? "array of " + type : type;
}

// Compared without formatting it, because it may be a long list.
bool IsTrue(const TCIMValue& value) {
  return value == TCIMValue::FromInteger(TType::kBoolean, 1) || value == TCIMValue("true");
}

TCIMValue NullOf(const TValueSlot& slot) {
  TCIMValue value;
  value.SetNullValue(slot.type, slot.isArray ? std::max(slot.size, 1U) : 0);
  return value;
}

bool TValueReader::Mismatch(const TSchemaUnit& unit, Mof::TSpan span, const TValueSlot& slot, const std::string& found,
                            const std::string& expected) {
  log_.Error(unit.Place(span), "found " + found + ", expected " + expected + QualifierOf(slot));
  return false;
}

bool TValueReader::Mismatch(const TSchemaUnit& unit, Mof::TSpan span, const TValueSlot& slot,
                            const std::string& expected) {
  return Mismatch(unit, span, slot, unit.Quoted(span), expected);
}

std::vector<Mof::TSpan> TValueReader::TakeAliases() {
  std::vector<Mof::TSpan> aliases;
  aliases.swap(aliases_);
  return aliases;
}

// Checks scalar against array and the number of elements; null always fits. The elements are checked separately.
bool TValueReader::Fits(const TSchemaUnit& unit, const Mof::TInitializer& initializer, const TValueSlot& slot) {
  if (initializer.isArray && !slot.isArray) {
    return Mismatch(unit, initializer.span, slot, "an array", Expected(slot.type));
  }
  if (!initializer.isArray && slot.isArray) {
    const Mof::TLiteral& literal = unit.file->literals[initializer.literals.first];
    if (literal.kind == ELiteral::kNull || literal.kind == ELiteral::kBad) return true;
    return Mismatch(unit, initializer.span, slot, "an " + NameOf(slot) + " in braces");
  }
  if (slot.isArray && slot.size != 0 && initializer.literals.count > slot.size) {
    return Mismatch(unit, initializer.span, slot, std::to_string(initializer.literals.count) + " elements",
                    "at most " + std::to_string(slot.size));
  }
  return true;
}

bool TValueReader::Read(const TSchemaUnit& unit, const Mof::TInitializer& initializer, const TValueSlot& slot,
                        TCIMValue& value) {
  value = NullOf(slot);
  if (!Fits(unit, initializer, slot)) return false;
  const Mof::TLiteral* literals = unit.file->literals.data() + initializer.literals.first;
  if (!initializer.isArray) {
    return slot.isArray ? literals->kind == ELiteral::kNull : Scalar(unit, *literals, slot, value);
  }
  std::vector<TCIMValue> elements(initializer.literals.count);
  bool good = true;
  for (std::size_t i = 0; i < elements.size(); ++i) {
    elements[i].SetNullValue(slot.type, 0);
    good = Scalar(unit, literals[i], slot, elements[i]) && good;
  }
  if (good) value.Set(slot.type, slot.size, elements);
  return good;
}

bool TValueReader::Check(const TSchemaUnit& unit, const Mof::TInitializer& initializer, const TValueSlot& slot) {
  const bool plainString = !initializer.isArray && !slot.isArray && slot.type == TType::kString &&
                           unit.file->literals[initializer.literals.first].kind == ELiteral::kString;
  TCIMValue ignored;
  return plainString || Read(unit, initializer, slot, ignored);
}

bool TValueReader::Scalar(const TSchemaUnit& unit, const Mof::TLiteral& literal, const TValueSlot& slot,
                          TCIMValue& value) {
  if (literal.kind == ELiteral::kNull) return true;
  if (literal.kind == ELiteral::kBad) return false;
  const TType::ECIMType code = slot.type;
  const TType type(code);
  if (IsInteger(code)) return Integer(unit, literal, slot, value);
  if (code == TType::kReal32 || code == TType::kReal64) return Real(unit, literal, slot, value);
  if (code == TType::kDateTime) return DateTime(unit, literal, slot, value);
  if (code == TType::kChar16) return Character(unit, literal, slot, value);
  if (code == TType::kBoolean && literal.kind == ELiteral::kBoolean) {
    value = TCIMValue::FromInteger(type, EqualNames(unit.Text(literal.span), "true") ? 1 : 0);
  } else if ((code == TType::kString || code == TType::kReference) && literal.kind == ELiteral::kString) {
    value = TCIMValue::FromText(type, StringOf(unit, literal));
  } else if (code == TType::kReference && literal.kind == ELiteral::kAlias) {
    value = TCIMValue::FromText(type, std::string(unit.Text(literal.span)));
    aliases_.push_back(literal.span);
  } else {
    return Mismatch(unit, literal.span, slot, Expected(code));
  }
  return true;
}

// A character may also be given by its number.
bool TValueReader::Character(const TSchemaUnit& unit, const Mof::TLiteral& literal, const TValueSlot& slot,
                             TCIMValue& value) {
  if (literal.kind == ELiteral::kInteger) return Integer(unit, literal, slot, value);
  if (literal.kind != ELiteral::kChar) return Mismatch(unit, literal.span, slot, Expected(slot.type));
  const std::string_view content = unit.Text(literal.span);
  value = TCIMValue::FromInteger(slot.type, Mof::TakeCharacter(content.substr(1, content.size() - 2)).code);
  return true;
}

bool TValueReader::Integer(const TSchemaUnit& unit, const Mof::TLiteral& literal, const TValueSlot& slot,
                           TCIMValue& value) {
  const TType type(slot.type);
  const std::string name = type.ToString();
  if (literal.kind != ELiteral::kInteger) return Mismatch(unit, literal.span, slot, WithArticle(name));
  const TNumber number = NumberOf(unit.Text(literal.span));
  const TIntegerRange range = RangeOf(slot.type);
  if (number.tooBig || number.magnitude > (number.negative ? range.below : range.high)) {
    return Mismatch(unit, literal.span, slot, WithArticle(name) + " " + Range(slot.type));
  }
  value = TCIMValue::FromInteger(type, number.negative ? 0 - number.magnitude : number.magnitude);
  return true;
}

// Accepts an integer for a real type.
bool TValueReader::Real(const TSchemaUnit& unit, const Mof::TLiteral& literal, const TValueSlot& slot,
                        TCIMValue& value) {
  const TType type(slot.type);
  const std::string name = type.ToString();
  double real = 0;
  bool inRange = true;
  std::string_view text = unit.Text(literal.span);
  if (literal.kind == ELiteral::kInteger) {
    const TNumber number = NumberOf(text);
    inRange = !number.tooBig;
    real = number.negative ? -static_cast<double>(number.magnitude) : static_cast<double>(number.magnitude);
  } else if (literal.kind == ELiteral::kReal) {
    if (text[0] == '+') text.remove_prefix(1);
    inRange = std::from_chars(text.data(), text.data() + text.size(), real).ec == std::errc();
  } else {
    return Mismatch(unit, literal.span, slot, WithArticle(name));
  }
  if (!inRange || (type == TType::kReal32 && std::abs(real) >= kReal32End))
    return Mismatch(unit, literal.span, slot, "a number in the range of " + name);
  value = TCIMValue::FromReal(type, real);
  return true;
}

bool TValueReader::DateTime(const TSchemaUnit& unit, const Mof::TLiteral& literal, const TValueSlot& slot,
                            TCIMValue& value) {
  if (literal.kind != ELiteral::kString) return Mismatch(unit, literal.span, slot, "a datetime in double quotes");
  const std::string text = StringOf(unit, literal);
  const std::string problem = CimDateTimeProblem(text);
  if (problem.empty()) {
    value = TCIMValue(TCIMDateTime::FromString(text));
    return true;
  }
  value.SetNullValue(TType::kDateTime, 0);
  log_.Error(unit.Place(literal.span), problem + QualifierOf(slot));
  return false;
}

}  // namespace velhost
