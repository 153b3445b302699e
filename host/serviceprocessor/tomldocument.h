// A TOML text as a tree of plain values that know their places. The one place that knows the TOML
// library.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "host/core/hosterror.h"

namespace NKROVEL20 {

/// Counts from 1; columns count characters, as editors do.
struct TTomlPlace {
  std::uint32_t line = 1;
  std::uint32_t column = 1;
};

struct TTomlMember;

struct TTomlValue {
  enum class EKind { kString, kInteger, kFloat, kBoolean, kDate, kTime, kDateTime, kTable, kArray };

  EKind kind = EKind::kTable;
  TTomlPlace place;
  std::int64_t integer = 0;          ///< of an integer; 1 for true
  std::string text;                  ///< of a string; of a date-time with an offset its CIM text, of one without none
  std::vector<TTomlMember> members;  ///< of a table, in the order of their places
  std::vector<TTomlValue> elements;  ///< of an array
};

struct TTomlMember {
  std::string name;
  TTomlPlace place;  ///< of the name
  TTomlValue value;
};

struct TTomlDocument {
  std::string file;  ///< display name
  std::string text;
  TTomlValue root;

  /// Throws THostError with a diagnostic at the place.
  [[noreturn]] void Fail(const TTomlPlace& place, const std::string& message,
                         EExitStatus status = EExitStatus::kBadData) const;
};

/// "a string", "an integer", ... for messages.
const char* NameOfTomlKind(TTomlValue::EKind kind);

/// Throws THostError (kBadData) at the place of a syntax error, of a table nested too deeply for a
/// server file, and of a key that is given twice.
TTomlDocument ParseTomlDocument(std::string file, std::string text);

}  // namespace NKROVEL20
