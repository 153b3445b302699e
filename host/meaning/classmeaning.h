// What the registers of a class mean: the qualifiers of meaning, checked and compiled.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace velhost {

/// What a register is for. kErrors: each set field is something that went wrong.
enum class ERole {
  kErrors,
  kMask,
  kSeverity,
  kFirstError,
  kCounter,
  kAddress,
  kSyndrome,
  kLog,
  kState,  ///< the default
  kIdentity
};

/// From the mildest.
enum class ESeverity { kCorrected, kError, kFatal };

/// A range of bits. 0 is the least significant, whatever the register's numbering.
struct TBits {
  unsigned high = 0;
  unsigned low = 0;
  bool operator==(const TBits&) const = default;
};

/// The text of a range of values.
struct TValueText {
  std::uint64_t first = 0;
  std::uint64_t last = 0;
  std::string text;
};

struct TFieldMeaning {
  TBits bits;
  bool isHex = false;  ///< people read its value in hex
  std::string name;
  std::vector<TValueText> texts;  ///< the ranges share no value
};

/// Where the number of the bit that was set first is to be found. The number counts as the errors register does.
struct TFirstErrorPlace {
  std::size_t registerIndex = 0;  ///< index into TClassMeaning::registers
  TBits bits;
};

struct TRegisterMeaning {
  std::size_t property = 0;  ///< index into TCIMClass::Properties()
  unsigned width = 64;       ///< bits: 32 or 64
  ERole role = ERole::kState;
  bool isMsb0 = false;                ///< bit 0 is the most significant one, in everything people see
  std::string unit;                   ///< of a counter; empty without one
  std::vector<TFieldMeaning> fields;  ///< from the least significant; they share no bit

  // For the role kErrors. Indexes into TClassMeaning::registers, all of the same width as this register.
  std::optional<std::size_t> maskedBy;
  std::optional<std::size_t> enabledBy;
  std::optional<std::size_t> fatalBy;
  ESeverity severity = ESeverity::kError;      ///< without fatalBy
  std::optional<TFirstErrorPlace> firstError;  ///< its register may have another width
  std::vector<std::size_t> evidence;           ///< these may have another width
};

/// Parallel to the registers of the class, as in TPlannedClass::registers. Never changed once made.
struct TClassMeaning {
  std::vector<TRegisterMeaning> registers;
};

}  // namespace velhost
