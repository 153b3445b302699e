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

/// One CIM value. Copies are independent. A conversion or setter that is not possible throws TVELException
/// with TVELStatusCode::kTypeMismatch; the only other exception is std::bad_alloc.
class NKROVEL20_API TCIMValue {
 public:
  /// A CIM type. Scalars and arrays have the same type; only the value knows which it is.
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

    /// From a CIM type name such as "uint8", ignoring case; "ref" means reference. Throws TVELException with
    /// TVELStatusCode::kInvalidParameter for any other name.
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
  /// An array; see Set.
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

  /// Scalars of types that have no constructor of their own. `FromInteger` keeps as many low bits as the
  /// integer, boolean or char16 type has; `FromReal` takes a real type.
  static TCIMValue FromInteger(TCIMType type, std::uint64_t bits);
  static TCIMValue FromReal(TCIMType type, double number);
  /// A string or reference (an object path as text).
  static TCIMValue FromText(TCIMType type, const std::string& text);

  /// Makes this value a datetime.
  void Set(const TCIMDateTime& dateTime);

  /// Makes this value an array of `type` with all elements, each converted to `type` (integers as in C++;
  /// null elements stay null). An element must not be an array. `count` is the declared size of the array; it
  /// never truncates or pads the elements.
  void Set(TCIMType type, unsigned int count, const std::vector<TCIMValue>& elements);

  /// Makes this value a null array of the type with the declared size `count`; with a count of 0, a null
  /// scalar.
  void SetNullValue(TCIMType::ECIMType type, unsigned int count);

  bool IsNull() const noexcept { return null_; }
  bool IsArray() const noexcept { return array_; }
  TCIMType GetType() const noexcept { return type_; }
  /// The declared size given to Set or SetNullValue; 0 for scalars.
  unsigned int GetDeclaredSize() const noexcept { return declaredSize_; }

  /// The value as text: strings as they are, datetimes in CIM format, booleans as "true" or "false", integers
  /// in `radix` (2 to 36, lower-case digits; 10 if out of range), arrays as "{a, b, c}", null as the empty
  /// string.
  std::string ToString(unsigned char radix) const;
  /// Appends that text to `text`.
  void AppendTo(std::string& text, unsigned char radix) const;

  /// The text in radix 10.
  operator std::string() const;
  /// The number; strings are parsed as decimal or, after 0x, hexadecimal. Null is 0. Wider numbers keep their
  /// low bits.
  operator unsigned int() const;
  operator unsigned short() const;
  /// The elements of an array (none if it is null); valid until the value is assigned to. Throws for a
  /// scalar.
  operator std::vector<TCIMValue>&();
  operator const std::vector<TCIMValue>&() const;

  /// The number as 64 bits, sign-extended; otherwise like the narrower conversions.
  std::uint64_t ToInteger() const;
  /// The number as a double; strings are parsed as decimal.
  double ToReal() const;
  /// The datetime; throws for any other value.
  const TCIMDateTime& ToDateTime() const;

  /// This value converted to `type`; arrays are converted element by element.
  TCIMValue ConvertedTo(TCIMType type) const;

  /// Equal type, nullness and content; the declared size is ignored.
  friend NKROVEL20_API bool operator==(const TCIMValue& a, const TCIMValue& b);
  friend bool operator!=(const TCIMValue& a, const TCIMValue& b) { return !(a == b); }

 private:
  struct TPayload;  // what does not fit into 64 bits: text, datetime, elements
  using TPayloadPointer = std::shared_ptr<TPayload>;

  // The payload for a copy: the same one, or a clone if someone may still modify it.
  static TPayloadPointer Shared(const TPayloadPointer& payload);
  void AppendElements(std::string& text, unsigned char radix) const;

  TCIMType type_ = TCIMType::kNone;
  bool array_ = false;
  bool null_ = true;
  unsigned int declaredSize_ = 0;
  std::uint64_t bits_ = 0;   // integers sign-extended, reals as their bit pattern
  TPayloadPointer payload_;  // shared by copies until one of them hands out its elements for modification
};

/// Property name to value, in ascending order of names. Used for the instance to be built, and as the context
/// argument of host look-ups.
using TPropertyMap = std::map<std::string, TCIMValue>;

}  // namespace NKROVEL20
