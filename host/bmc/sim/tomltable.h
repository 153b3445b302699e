// Reads one table of a TOML document key by key. Anything unexpected throws THostError (kMalformed) with a diagnostic
// of what was found and what was expected.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/bmc/sim/tomldocument.h"

namespace velhost {

class TTomlTable {
 public:
  /// Neither is owned. Throws if the value is not a table; the message says that `what` was expected ("a [[fault]]
  /// table").
  TTomlTable(const TTomlDocument& document, const TTomlValue& value, const std::string& what);

  /// Throws if there is any other key, suggesting the nearest of these names.
  void AllowOnly(std::initializer_list<std::string_view> names) const;

  /// Null if the table has no such key.
  const TTomlMember* Find(std::string_view name) const;
  const TTomlMember& Require(std::string_view name, const std::string& expected) const;

  /// Each of the following is empty if the table has no such key.
  std::optional<std::string> String(std::string_view name) const;
  std::optional<bool> Boolean(std::string_view name) const;
  std::optional<std::int64_t> Integer(std::string_view name, std::int64_t low, std::int64_t high) const;
  /// The 25 characters of a CIM datetime, from a date-time with an offset.
  std::optional<std::string> Moment(std::string_view name) const;
  /// The bytes of a string of hex pairs; exactly `size` of them if it is given.
  std::optional<std::vector<std::uint8_t>> Bytes(std::string_view name, std::optional<std::size_t> size) const;

  /// Calls `read` with each table of an array of tables; not at all if the table has no such key. Throws if there are
  /// more than `most`.
  void ForEach(std::string_view name, std::size_t most, const std::function<void(const TTomlTable&)>& read) const;
  /// The table of that key; empty if there is none.
  std::optional<TTomlTable> Table(std::string_view name) const;

  const TTomlDocument& Document() const { return *document_; }
  const TTomlPlace& Place() const { return value_->place; }
  [[noreturn]] void Fail(const TTomlPlace& place, const std::string& message) const { document_->Fail(place, message); }

 private:
  const TTomlMember* FindKind(std::string_view name, TTomlValue::EKind kind, const std::string& expected) const;
  [[noreturn]] void FailHex(const TTomlMember& member, std::size_t at) const;

  const TTomlDocument* document_;
  const TTomlValue* value_;
};

}  // namespace velhost
