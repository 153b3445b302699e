// A TOML text as a tree of plain values that know their places.
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

// What one text may hold; no server file comes near. They bound time and memory.
inline constexpr std::size_t kMostTomlValues = 1'000'000;  ///< tables and arrays among them
inline constexpr std::size_t kMostTomlKeys = 100;          ///< of one table
inline constexpr std::size_t kMostTomlKeyParts = 16;       ///< of one dotted key
inline constexpr int kDeepestTomlValue = 16;               ///< arrays and inline tables in each other

/// Counts from 1; columns count characters, as editors do.
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
  std::string_view text;     ///< of a string; of a date-time with an offset its CIM text, of one without none. The
                             ///< document's
  std::unique_ptr<TTomlTableContent> table;  ///< of a table
  std::unique_ptr<TTomlArrayContent> array;  ///< of an array
};

struct TTomlMember {
  std::string_view name;  ///< the document's
  TTomlPlace place;       ///< of the name
  TTomlValue value;
};

struct TTomlTableContent {
  /// What made the table, which says what may still be put into it.
  enum class EOrigin : std::uint8_t { kHeader, kLongerHeader, kDottedKey, kInline };

  std::vector<TTomlMember> members;  ///< in the order of their places
  EOrigin origin = EOrigin::kHeader;
};

struct TTomlArrayContent {
  std::vector<TTomlValue> elements;
  bool isOfHeaders = false;  ///< [[name]] adds one
};

struct TTomlDocument {
  TTomlDocument(std::string fileName, std::string content) : file(std::move(fileName)), text(std::move(content)) {}
  TTomlDocument(const TTomlDocument&) = delete;
  TTomlDocument& operator=(const TTomlDocument&) = delete;

  const std::string file;  ///< display name
  const std::string text;
  std::deque<std::string> decoded;  ///< texts that are not in `text` as they are
  TTomlValue root;

  /// Throws THostError with a diagnostic at the place.
  [[noreturn]] void Fail(const TTomlPlace& place, const std::string& message,
                         EFailure kind = EFailure::kMalformed) const;
};

/// "a string", "an integer", ... for messages.
const char* NameOfTomlKind(TTomlValue::EKind kind);

/// Reads TOML 1.0, in time that grows with the text's length alone. Throws THostError (kMalformed) at the place of what
/// is not TOML, of a key that is given twice, and of what is beyond a limit.
std::unique_ptr<const TTomlDocument> ParseTomlDocument(std::string file, std::string text);

}  // namespace velhost
