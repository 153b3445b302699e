#include "host/bmc/sim/tomltable.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "host/base/cimdatetime.h"
#include "host/base/digits.h"
#include "host/base/names.h"
#include "host/base/text.h"
#include "host/base/textdiagnostic.h"

namespace velhost {

namespace {

using EKind = TTomlValue::EKind;

std::string RangeText(std::int64_t low, std::int64_t high) {
  return "an integer from " + std::to_string(low) + " to " + std::to_string(high);
}

// The place of a character of a string; that of the string itself if the file does not contain the text literally.
TTomlPlace PlaceWithin(const TTomlDocument& document, const TTomlValue& string, std::size_t at) {
  const std::string_view line = LineOf(document.text, string.place.line);
  const std::size_t start = string.place.column;  // after the quote
  if (start > line.size() || line.substr(start, at) != string.text.substr(0, at)) return string.place;
  return {string.place.line, static_cast<std::uint32_t>(start + at + 1)};
}

}  // namespace

TTomlTable::TTomlTable(const TTomlDocument& document, const TTomlValue& value, const std::string& what)
    : document_(&document), value_(&value) {
  if (value.kind != EKind::kTable) {
    Fail(value.place, std::string("found ") + NameOfTomlKind(value.kind) + ", expected " + what);
  }
}

void TTomlTable::AllowOnly(std::initializer_list<std::string_view> names) const {
  for (const TTomlMember& member : value_->table->members) {
    if (std::find(names.begin(), names.end(), member.name) != names.end()) continue;
    const std::string_view nearest = NearestName(member.name, {names.begin(), names.size()});
    Fail(member.place, "found the unknown key " + Quoted(member.name) + ", expected one of " + Listed(names, ", ") +
                           Suggestion(nearest, "\""));
  }
}

const TTomlMember* TTomlTable::Find(std::string_view name) const {
  for (const TTomlMember& member : value_->table->members) {
    if (member.name == name) return &member;
  }
  return nullptr;
}

const TTomlMember& TTomlTable::Require(std::string_view name, const std::string& expected) const {
  if (const TTomlMember* member = Find(name)) return *member;
  Fail(Place(), "found no " + Quoted(name) + ", expected " + expected);
}

const TTomlMember* TTomlTable::FindKind(std::string_view name, EKind kind, const std::string& expected) const {
  const TTomlMember* member = Find(name);
  if (member != nullptr && member->value.kind != kind) {
    Fail(member->value.place, std::string("found ") + NameOfTomlKind(member->value.kind) + " for " + Quoted(name) +
                                  ", expected " + expected);
  }
  return member;
}

std::optional<std::string> TTomlTable::String(std::string_view name) const {
  const TTomlMember* member = FindKind(name, EKind::kString, "a string");
  return member == nullptr ? std::nullopt : std::optional(std::string(member->value.text));
}

std::optional<bool> TTomlTable::Boolean(std::string_view name) const {
  const TTomlMember* member = FindKind(name, EKind::kBoolean, "true or false");
  return member == nullptr ? std::nullopt : std::optional(member->value.integer != 0);
}

std::optional<std::int64_t> TTomlTable::Integer(std::string_view name, std::int64_t low, std::int64_t high) const {
  const TTomlMember* member = FindKind(name, EKind::kInteger, RangeText(low, high));
  if (member == nullptr) return std::nullopt;
  const std::int64_t value = member->value.integer;
  if (value < low || value > high) {
    Fail(member->value.place,
         "found " + std::to_string(value) + " for " + Quoted(name) + ", expected " + RangeText(low, high));
  }
  return value;
}

std::optional<std::string> TTomlTable::Moment(std::string_view name) const {
  static const std::string kExpected = "a date-time with its offset from UTC, such as 2026-01-31T12:34:56+01:00";
  const TTomlMember* member = FindKind(name, EKind::kDateTime, kExpected);
  if (member == nullptr) return std::nullopt;
  const std::string_view text = member->value.text;
  if (text.size() != kCimDateTimeSize) {
    const std::string found = text.empty() ? "a date-time without an offset"
                                           : "an offset of more than 999 minutes, which a CIM datetime cannot hold,";
    Fail(member->value.place, "found " + found + " for " + Quoted(name) + ", expected " + kExpected);
  }
  return std::string(text);
}

std::optional<std::vector<std::uint8_t>> TTomlTable::Bytes(std::string_view name,
                                                           std::optional<std::size_t> size) const {
  const TTomlMember* member = FindKind(name, EKind::kString, "a string of hex pairs");
  if (member == nullptr) return std::nullopt;
  THexPairs pairs = ParseHexPairs(member->value.text);
  if (pairs.errorAt != std::string_view::npos) FailHex(*member, pairs.errorAt);
  if (size && pairs.bytes.size() != *size) {
    Fail(member->value.place, "found " + Counted(pairs.bytes.size(), "byte") + " in " + Quoted(name) + ", expected " +
                                  std::to_string(*size));
  }
  return std::move(pairs.bytes);
}

void TTomlTable::FailHex(const TTomlMember& member, std::size_t at) const {
  const std::string_view text = member.value.text;
  const std::string found = at < text.size() ? Quoted(text.substr(at, 1)) : "the end of the text";
  Fail(PlaceWithin(*document_, member.value, at),
       "found " + found + " in " + Quoted(member.name) + ", expected pairs of hexadecimal digits");
}

void TTomlTable::ForEach(std::string_view name, std::size_t most,
                         const std::function<void(const TTomlTable&)>& read) const {
  const std::string what = "a [[" + std::string(name) + "]] table";
  const TTomlMember* member = FindKind(name, EKind::kArray, "an array of tables");
  if (member == nullptr) return;
  const std::vector<TTomlValue>& elements = member->value.array->elements;
  if (elements.size() > most) {
    Fail(elements[most].place, "found more than " + std::to_string(most) + " [[" + std::string(name) +
                                   "]] tables, expected at most " + std::to_string(most));
  }
  for (const TTomlValue& element : elements) read(TTomlTable(*document_, element, what));
}

std::optional<TTomlTable> TTomlTable::Table(std::string_view name) const {
  const TTomlMember* member = Find(name);
  if (member == nullptr) return std::nullopt;
  return TTomlTable(*document_, member->value, "a [" + std::string(name) + "] table");
}

}  // namespace velhost
