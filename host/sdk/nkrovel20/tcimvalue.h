// The host's value variant: one CIM value, scalar or array, possibly null.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "nkrovel20/api.h"
#include "nkrovel20/tcimdatetime.h"

namespace NKROVEL20 {

/// One CIM value. Copies are independent. Conversions and setters that cannot be done
/// throw TVELException with TVELStatusCode::kTypeMismatch; nothing else is thrown but bad_alloc.
class NKROVEL20_API TCIMValue {
 public:
  /// A CIM type. Scalars and arrays of a type share it; whether a value is an array is the value's.
  class NKROVEL20_API TCIMType {
   public:
    enum ECIMType : std::uint8_t {
      kNone = 0,  ///< the type of an untyped null value
      kBoolean = 1,
      kUint8 = 2,
      kSint8 = 3,
      kUint16 = 4,
      kSint16 = 5,
      kUint32 = 6,
      kSint32 = 7,
      kUint64 = 8,
      kSint64 = 9,
      kReal32 = 10,
      kReal64 = 11,
      kChar16 = 12,
      kString = 13,
      kDateTime = 14,
      kReference = 15,
    };

    /// From a CIM type name, in any case ("uint8"); "ref" is a reference. Another name throws
    /// TVELException with TVELStatusCode::kInvalidParameter.
    explicit TCIMType(const std::string& name);
    TCIMType(ECIMType code) noexcept : code_(code) {}

    /// The CIM type name in lower case; empty for kNone.
    std::string ToString() const;
    ECIMType GetCode() const noexcept { return code_; }

    friend bool operator==(TCIMType a, TCIMType b) noexcept { return a.code_ == b.code_; }
    friend bool operator!=(TCIMType a, TCIMType b) noexcept { return a.code_ != b.code_; }

   private:
    ECIMType code_;
  };

  /// An untyped null value.
  TCIMValue() noexcept = default;
  /// A string; a null pointer gives the null string value.
  TCIMValue(const char* text);
  TCIMValue(const std::string& text);
  TCIMValue(const TCIMDateTime& dateTime);
  /// An unsigned 8-bit value.
  TCIMValue(unsigned char number) noexcept : type_(TCIMType::kUint8), null_(false), bits_(number) {}
  /// A signed 32-bit value.
  TCIMValue(int number) noexcept : type_(TCIMType::kSint32), null_(false), bits_(static_cast<std::uint64_t>(number)) {}
  /// An array: see Set.
  TCIMValue(TCIMType type, unsigned int count, const std::vector<TCIMValue>& elements);
  TCIMValue(const TCIMValue& other)
      : type_(other.type_),
        array_(other.array_),
        null_(other.null_),
        declaredSize_(other.declaredSize_),
        bits_(other.bits_),
        payload_(other.payload_ ? Shared(other.payload_) : nullptr) {}
  TCIMValue(TCIMValue&& other) noexcept
      : type_(other.type_),
        array_(other.array_),
        null_(other.null_),
        declaredSize_(other.declaredSize_),
        bits_(other.bits_),
        payload_(std::move(other.payload_)) {
    other.null_ = true;
  }
  TCIMValue& operator=(const TCIMValue& other);
  TCIMValue& operator=(TCIMValue&& other) noexcept;
  ~TCIMValue() = default;

  /// Scalars of the types that have no constructor of their own. `FromInteger` keeps the low bits
  /// that the integer, boolean or char16 type holds; `FromReal` takes a real type.
  static TCIMValue FromInteger(TCIMType type, std::uint64_t bits);
  static TCIMValue FromReal(TCIMType type, double number);
  /// A string or reference (an object path as text).
  static TCIMValue FromText(TCIMType type, const std::string& text);

  /// Becomes the datetime.
  void Set(const TCIMDateTime& dateTime);

  /// Becomes an array of `type`. Every element of `elements` is kept, converted to `type` (integers
  /// as C++ converts them; null elements stay null). An array is no element. `count` is the declared
  /// size of the array and never cuts or pads the elements.
  void Set(TCIMType type, unsigned int count, const std::vector<TCIMValue>& elements);

  /// Becomes the null array of the type with the declared size `count`; a count of 0 is a scalar.
  void SetNullValue(TCIMType::ECIMType type, unsigned int count);

  bool IsNull() const noexcept { return null_; }
  bool IsArray() const noexcept { return array_; }
  TCIMType GetType() const noexcept { return type_; }
  /// The declared size given to Set or SetNullValue; 0 for scalars.
  unsigned int GetDeclaredSize() const noexcept { return declaredSize_; }

  /// The text of the value: strings as they are, datetimes as CIM datetimes, booleans as "true" or
  /// "false", integers in `radix` (2 to 36, lower-case digits; another radix counts as 10), arrays
  /// as "{a, b, c}", a null value as the empty string.
  std::string ToString(unsigned char radix) const;
  /// Appends that text, for callers that build a longer one.
  void AppendTo(std::string& text, unsigned char radix) const;

  /// The text in radix 10.
  operator std::string() const;
  /// The number; texts in decimal or with 0x are read. Null is 0. Wider numbers keep their low bits.
  operator unsigned int() const;
  operator unsigned short() const;
  /// The elements of an array value (none for a null array), as long as the value is not assigned to.
  /// A scalar throws.
  operator std::vector<TCIMValue>&();
  operator const std::vector<TCIMValue>&() const;

  /// The number as 64 bits (sign extended); the same rules as the narrower conversions.
  std::uint64_t ToInteger() const;
  /// The number as a double; decimal texts are read.
  double ToReal() const;
  /// The datetime; any other value throws.
  const TCIMDateTime& ToDateTime() const;

  /// This value as a scalar or, element by element, an array of `type`.
  TCIMValue ConvertedTo(TCIMType type) const;

  /// Same type, same nullness, same content; the declared size does not count.
  friend NKROVEL20_API bool operator==(const TCIMValue& a, const TCIMValue& b);
  friend bool operator!=(const TCIMValue& a, const TCIMValue& b) { return !(a == b); }

 private:
  struct TPayload;  // what does not fit into 64 bits: text, datetime, elements
  using TPayloadPointer = std::shared_ptr<TPayload>;

  // What a copy holds: the same payload, or one of its own where somebody may still change that one.
  static TPayloadPointer Shared(const TPayloadPointer& payload);
  void AppendElements(std::string& text, unsigned char radix) const;

  TCIMType type_ = TCIMType::kNone;
  bool array_ = false;
  bool null_ = true;
  unsigned int declaredSize_ = 0;
  std::uint64_t bits_ = 0;   // integers sign extended, reals as their bit pattern
  TPayloadPointer payload_;  // copies share it until one of them hands out its elements to be changed
};

/// Property name to value, in ascending order of names: one instance to be built, and the context
/// argument of host look-ups.
using TPropertyMap = std::map<std::string, TCIMValue>;

}  // namespace NKROVEL20
