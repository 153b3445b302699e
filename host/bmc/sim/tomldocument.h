// A TOML text as a tree of plain values, each with its place.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/base/hosterror.h"

namespace velhost {

// Limits of one text, which bound time and memory; no server file comes near them.
inline constexpr std::size_t kMostTomlValues = 1'000'000;  ///< including tables and arrays
inline constexpr std::size_t kMostTomlKeys = 100;          ///< of one table
inline constexpr std::size_t kMostTomlKeyParts = 16;       ///< of one dotted key
inline constexpr int kDeepestTomlValue = 16;               ///< nested arrays and inline tables

/// Line and column count from 1; columns count characters, as editors do.
struct TTomlPlace {
  std::uint32_t line = 1;
  std::uint32_t column = 1;
};

struct TTomlMember;
struct TTomlTableContent;
struct TTomlArrayContent;

struct TTomlValue {
  enum class EKind : std::uint8_t { kString, kInteger, kFloat, kBoolean, kDate, kTime, kDateTime, kTable, kArray };

  TTomlValue();
  TTomlValue(TTomlValue&&) noexcept;
  TTomlValue& operator=(TTomlValue&&) noexcept;
  ~TTomlValue();

  EKind kind = EKind::kTable;
  TTomlPlace place;
  std::int64_t integer = 0;  ///< of an integer; 1 for true
  std::string_view text;     ///< a string, or the CIM text of a date-time with an offset; a view into the document
  std::unique_ptr<TTomlTableContent> table;  ///< of a table
  std::unique_ptr<TTomlArrayContent> array;  ///< of an array
};

struct TTomlMember {
  std::string_view name;  ///< a view into the document
  TTomlPlace place;       ///< of the name
  TTomlValue value;
};

struct TTomlTableContent {
  /// What created the table, which determines what may still be added to it.
  enum class EOrigin : std::uint8_t { kHeader, kLongerHeader, kDottedKey, kInline };

  std::vector<TTomlMember> members;  ///< in order of their places
  EOrigin origin = EOrigin::kHeader;
};

struct TTomlArrayContent {
  std::vector<TTomlValue> elements;
  bool isOfHeaders = false;  ///< created by [[name]], which appends a table
};

struct TTomlDocument {
  TTomlDocument(std::string fileName, std::string content) : file(std::move(fileName)), text(std::move(content)) {}
  TTomlDocument(const TTomlDocument&) = delete;
  TTomlDocument& operator=(const TTomlDocument&) = delete;

  const std::string file;  ///< display name
  const std::string text;
  std::deque<std::string> decoded;  ///< strings that do not occur literally in `text`
  TTomlValue root;

  /// Throws TDiagnosedError at the place.
  [[noreturn]] void Fail(const TTomlPlace& place, const std::string& message,
                         EFailure kind = EFailure::kMalformed) const;
};

/// "a string", "an integer", ... for messages.
const char* NameOfTomlKind(TTomlValue::EKind kind);

/// Reads TOML 1.0, in time proportional to the text's length. Throws THostError (kMalformed) at the place of anything
/// that is not TOML, is a duplicate key, or exceeds a limit.
std::unique_ptr<const TTomlDocument> ParseTomlDocument(std::string file, std::string text);

}  // namespace velhost
