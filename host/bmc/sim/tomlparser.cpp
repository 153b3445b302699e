// The structure of TOML: statements, keys, tables, arrays.
#include <algorithm>
#include <cstddef>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/base/digits.h"
#include "host/base/text.h"
#include "host/bmc/sim/tomlcursor.h"
#include "host/bmc/sim/tomlscalar.h"

namespace velhost {

namespace {

using EKind = TTomlValue::EKind;
using EOrigin = TTomlTableContent::EOrigin;

struct TKeyPart {
  std::string_view name;
  TTomlPlace place;
};
using TKey = std::vector<TKeyPart>;

bool IsBareKeyCharacter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || IsDigit(c) || c == '_' || c == '-';
}

bool EndsWord(char c) {
  constexpr std::string_view kEnds = " \t\r\n,]}#";
  return kEnds.find(c) != std::string_view::npos;
}

class TTomlParser {
 public:
  explicit TTomlParser(TTomlDocument& document) : document_(document), at_(document) {}
  void Parse();

 private:
  void ParseHeader();
  void ParseKeyAndValue(TTomlTableContent& table, int depth);
  TKey ParseKey(const char* expected);
  std::string_view ParseKeyPart(const char* expected);
  TTomlValue ParseValue(int depth);
  void ParseWord(TTomlValue& value);
  void ParseArray(TTomlValue& value, int depth);
  void ParseInlineTable(TTomlValue& value, int depth);

  TTomlTableContent& EnterForHeader(const TKey& key, const TTomlPlace& place);
  void AddTable(TTomlTableContent& parent, const TKeyPart& part, const TTomlPlace& place);
  void AddElement(TTomlTableContent& parent, const TKeyPart& part, const TTomlPlace& place);
  TTomlTableContent& EnterForDottedKey(TTomlTableContent& table, const TKey& key);

  TTomlMember& AddMember(TTomlTableContent& table, const TKeyPart& part, TTomlValue value);
  TTomlValue NewTable(const TTomlPlace& place, EOrigin origin);
  void Count(const TTomlPlace& place);
  [[noreturn]] void FailSecond(const TKeyPart& part, const TTomlMember& first) const;

  TTomlDocument& document_;
  TTomlCursor at_;
  TTomlTableContent* current_ = nullptr;  // receives key-value pairs
  std::size_t values_ = 0;
};

TTomlMember* FindMember(TTomlTableContent& table, std::string_view name) {
  const auto found = std::find_if(table.members.begin(), table.members.end(),
                                  [name](const TTomlMember& member) { return member.name == name; });
  return found == table.members.end() ? nullptr : &*found;
}

void TTomlParser::Parse() {
  document_.root = NewTable({1, 1}, EOrigin::kHeader);
  current_ = document_.root.table.get();
  for (at_.SkipToNext(); !at_.AtEnd(); at_.SkipToNext()) {
    if (at_.Peek() == '[') {
      ParseHeader();
    } else {
      ParseKeyAndValue(*current_, 0);
    }
    at_.EndLine();
  }
}

void TTomlParser::Count(const TTomlPlace& place) {
  if (++values_ <= kMostTomlValues) return;
  at_.Fail(place, "found more than " + std::to_string(kMostTomlValues) + " values in one file, expected at most " +
                      std::to_string(kMostTomlValues));
}

TTomlValue TTomlParser::NewTable(const TTomlPlace& place, EOrigin origin) {
  Count(place);
  TTomlValue value;
  value.place = place;
  value.table = std::make_unique<TTomlTableContent>();
  value.table->origin = origin;
  return value;
}

TTomlMember& TTomlParser::AddMember(TTomlTableContent& table, const TKeyPart& part, TTomlValue value) {
  if (table.members.size() == kMostTomlKeys) {
    at_.Fail(part.place, "found more than " + std::to_string(kMostTomlKeys) + " keys in one table, expected at most " +
                             std::to_string(kMostTomlKeys));
  }
  table.members.push_back({part.name, part.place, std::move(value)});
  return table.members.back();
}

void TTomlParser::FailSecond(const TKeyPart& part, const TTomlMember& first) const {
  at_.Fail(part.place, "found a second " + Quoted(part.name) + ", expected it once; the first is in line " +
                           std::to_string(first.place.line));
}

// Keys

std::string_view TTomlParser::ParseKeyPart(const char* expected) {
  if (at_.Peek() == '"' || at_.Peek() == '\'') return ReadTomlString(at_, document_, true);
  const std::size_t start = at_.Position();
  while (IsBareKeyCharacter(at_.Peek())) at_.Next();
  if (at_.Position() == start) at_.FailExpecting(expected);
  return at_.TextFrom(start);
}

TKey TTomlParser::ParseKey(const char* expected) {
  TKey key;
  while (true) {
    const TTomlPlace place = at_.Place();
    if (key.size() == kMostTomlKeyParts) {
      at_.Fail(place, "found a key of more than " + std::to_string(kMostTomlKeyParts) + " parts, expected at most " +
                          std::to_string(kMostTomlKeyParts));
    }
    key.push_back({ParseKeyPart(key.empty() ? expected : "a key after the full stop"), place});
    at_.SkipBlanks();
    if (at_.Peek() != '.') return key;
    at_.Next();
    at_.SkipBlanks();
  }
}

// Tables by headers

void TTomlParser::ParseHeader() {
  const TTomlPlace place = at_.Place();
  at_.Next();
  const bool isOfArray = at_.Peek() == '[';
  if (isOfArray) at_.Next();
  at_.SkipBlanks();
  const TKey key = ParseKey("the table's name");
  if (at_.Peek() != ']' || (isOfArray && at_.Peek(1) != ']')) at_.FailExpecting(isOfArray ? "\"]]\"" : "\"]\"");
  at_.Next(isOfArray ? 2 : 1);
  TTomlTableContent& parent = EnterForHeader(key, place);
  isOfArray ? AddElement(parent, key.back(), place) : AddTable(parent, key.back(), place);
}

TTomlTableContent& TTomlParser::EnterForHeader(const TKey& key, const TTomlPlace& place) {
  TTomlTableContent* table = document_.root.table.get();
  for (std::size_t i = 0; i + 1 < key.size(); ++i) {
    TTomlMember* member = FindMember(*table, key[i].name);
    if (member == nullptr) member = &AddMember(*table, key[i], NewTable(place, EOrigin::kLongerHeader));
    TTomlValue* value = &member->value;
    if (value->array && value->array->isOfHeaders) value = &value->array->elements.back();
    if (!value->table || value->table->origin == EOrigin::kInline) FailSecond(key[i], *member);
    table = value->table.get();
  }
  return *table;
}

void TTomlParser::AddTable(TTomlTableContent& parent, const TKeyPart& part, const TTomlPlace& place) {
  TTomlMember* member = FindMember(parent, part.name);
  if (member == nullptr) {
    member = &AddMember(parent, part, NewTable(place, EOrigin::kHeader));
  } else if (member->value.table && member->value.table->origin == EOrigin::kLongerHeader) {
    member->value.place = place;
    member->value.table->origin = EOrigin::kHeader;
  } else {
    FailSecond(part, *member);
  }
  current_ = member->value.table.get();
}

void TTomlParser::AddElement(TTomlTableContent& parent, const TKeyPart& part, const TTomlPlace& place) {
  TTomlMember* member = FindMember(parent, part.name);
  if (member == nullptr) {
    Count(place);
    TTomlValue array;
    array.kind = EKind::kArray;
    array.place = place;
    array.array = std::make_unique<TTomlArrayContent>();
    array.array->isOfHeaders = true;
    member = &AddMember(parent, part, std::move(array));
  }
  if (!member->value.array || !member->value.array->isOfHeaders) FailSecond(part, *member);
  auto& elements = member->value.array->elements;
  elements.push_back(NewTable(place, EOrigin::kHeader));
  current_ = elements.back().table.get();
}

// Key-value pairs

TTomlTableContent& TTomlParser::EnterForDottedKey(TTomlTableContent& table, const TKey& key) {
  TTomlTableContent* entered = &table;
  for (std::size_t i = 0; i + 1 < key.size(); ++i) {
    TTomlMember* member = FindMember(*entered, key[i].name);
    if (member == nullptr) member = &AddMember(*entered, key[i], NewTable(key[i].place, EOrigin::kDottedKey));
    TTomlTableContent* const next = member->value.table.get();
    const bool isOpen = next != nullptr && next->origin != EOrigin::kHeader && next->origin != EOrigin::kInline;
    if (!isOpen) FailSecond(key[i], *member);
    next->origin = EOrigin::kDottedKey;
    entered = next;
  }
  return *entered;
}

void TTomlParser::ParseKeyAndValue(TTomlTableContent& table, int depth) {
  const TKey key = ParseKey(depth == 0 ? "a key or a [table]" : "a key or the closing \"}\"");
  if (at_.Peek() != '=') at_.FailExpecting("\"=\" after the key");
  at_.Next();
  at_.SkipBlanks();
  TTomlTableContent& target = EnterForDottedKey(table, key);
  if (const TTomlMember* first = FindMember(target, key.back().name)) FailSecond(key.back(), *first);
  AddMember(target, key.back(), ParseValue(depth));
}

TTomlValue TTomlParser::ParseValue(int depth) {
  if (depth == kDeepestTomlValue) {
    at_.Fail(at_.Place(), "found values nested more than " + std::to_string(kDeepestTomlValue) +
                              " levels deep, expected at most " + std::to_string(kDeepestTomlValue));
  }
  if (at_.Peek() == '{') {
    TTomlValue value = NewTable(at_.Place(), EOrigin::kInline);
    ParseInlineTable(value, depth + 1);
    return value;
  }
  Count(at_.Place());
  TTomlValue value;
  value.place = at_.Place();
  if (at_.Peek() == '"' || at_.Peek() == '\'') {
    value.kind = EKind::kString;
    value.text = ReadTomlString(at_, document_, false);
  } else if (at_.Peek() == '[') {
    ParseArray(value, depth + 1);
  } else {
    ParseWord(value);
  }
  return value;
}

void TTomlParser::ParseWord(TTomlValue& value) {
  const std::size_t start = at_.Position();
  const auto takeWord = [this] {
    while (!at_.AtEnd() && !EndsWord(at_.Peek())) at_.Next();
  };
  takeWord();
  // A blank may separate a date from its time.
  const bool goesOn = at_.Peek() == ' ' && IsDigit(at_.Peek(1));
  if (goesOn && IsTomlDate(at_.TextFrom(start))) {
    at_.Next();
    takeWord();
  }
  const std::string_view word = at_.TextFrom(start);
  if (word.empty()) at_.FailExpecting("a value");
  const auto scalar = ReadTomlScalar(word);
  if (!scalar) at_.Fail(value.place, "found " + Quoted(word) + ", expected a value; a string needs quotes");
  if (scalar->isTooLarge) {
    at_.Fail(value.place,
             "found " + Quoted(word) + ", expected an integer from -9223372036854775808 to 9223372036854775807");
  }
  value.kind = scalar->kind;
  value.integer = scalar->integer;
  if (!scalar->moment.empty()) value.text = document_.decoded.emplace_back(scalar->moment);
}

void TTomlParser::ParseArray(TTomlValue& value, int depth) {
  value.kind = EKind::kArray;
  value.array = std::make_unique<TTomlArrayContent>();
  at_.Next();
  for (at_.SkipToNext(); at_.Peek() != ']'; at_.SkipToNext()) {
    value.array->elements.push_back(ParseValue(depth));
    at_.SkipToNext();
    if (at_.Peek() != ',' && at_.Peek() != ']') at_.FailExpecting("a comma or the closing \"]\"");
    if (at_.Peek() == ',') at_.Next();
  }
  at_.Next();
}

void TTomlParser::ParseInlineTable(TTomlValue& value, int depth) {
  at_.Next();
  at_.SkipBlanks();
  while (at_.Peek() != '}') {
    ParseKeyAndValue(*value.table, depth);
    at_.SkipBlanks();
    if (at_.Peek() == '}') break;
    if (at_.Peek() != ',') at_.FailExpecting("a comma or the closing \"}\"");
    at_.Next();
    at_.SkipBlanks();
    if (at_.Peek() == '}') at_.FailExpecting("a key after the comma");
  }
  at_.Next();
}

}  // namespace

std::unique_ptr<const TTomlDocument> ParseTomlDocument(std::string file, std::string text) {
  auto document = std::make_unique<TTomlDocument>(std::move(file), std::move(text));
  TTomlParser(*document).Parse();
  return document;
}

}  // namespace velhost
