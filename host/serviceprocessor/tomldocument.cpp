#include "host/serviceprocessor/tomldocument.h"

#include <algorithm>

// Texts exist that fail the TOML library's assertions rather than its checks, and without assertions
// it would tell the compiler that they hold. Here a failed one is an exception, in every build.
namespace {
struct TFailedAssertion {};
[[noreturn]] void FailAssertion() { throw TFailedAssertion(); }
}  // namespace
#undef NDEBUG
#define TOML_ASSERT(expression) static_cast<void>((expression) || (FailAssertion(), false))
// Nothing in a server file nests deeper; the library's recursion is bounded by this and kMostDots.
#define TOML_MAX_NESTED_VALUES 16
#include <toml++/toml.h>

#include "host/core/textdiagnostic.h"
#include "nkrovel20/tcimdatetime.h"

namespace NKROVEL20 {

namespace {

constexpr std::ptrdiff_t kMostDots = 100;  // in one line: a dotted key nests one table in another for each

bool IsUtf8Continuation(char c) { return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U; }

// Diagnostics count bytes.
std::uint32_t ByteColumn(std::string_view line, std::uint32_t column) {
  std::size_t byte = 0;
  for (std::uint32_t character = 1; character < column && byte < line.size(); ++character) {
    ++byte;
    while (byte < line.size() && IsUtf8Continuation(line[byte])) ++byte;
  }
  return static_cast<std::uint32_t>(byte + 1);
}

TTomlPlace PlaceOf(const toml::source_region& region) {
  return {std::max<std::uint32_t>(region.begin.line, 1), std::max<std::uint32_t>(region.begin.column, 1)};
}

std::string CimText(const toml::date_time& value) {
  if (!value.offset) return {};
  return TCIMDateTime(value.date.year, value.date.month, value.date.day, value.time.hour, value.time.minute,
                      value.time.second, value.time.nanosecond / 1000, value.offset->minutes)
      .ToString();
}

TTomlValue Convert(const toml::node& node);

void ConvertTable(const toml::table& table, TTomlValue& value) {
  value.kind = TTomlValue::EKind::kTable;
  value.members.reserve(table.size());
  for (const auto& [key, node] : table) {
    value.members.push_back({std::string(key.str()), PlaceOf(key.source()), Convert(node)});
  }
  std::sort(value.members.begin(), value.members.end(), [](const TTomlMember& a, const TTomlMember& b) {
    return std::pair(a.place.line, a.place.column) < std::pair(b.place.line, b.place.column);
  });
}

void ConvertArray(const toml::array& array, TTomlValue& value) {
  value.kind = TTomlValue::EKind::kArray;
  value.elements.reserve(array.size());
  for (const toml::node& element : array) value.elements.push_back(Convert(element));
}

void ConvertScalar(const toml::node& node, TTomlValue& value) {
  if (const auto* text = node.as_string()) {
    value.kind = TTomlValue::EKind::kString;
    value.text = text->get();
  } else if (const auto* integer = node.as_integer()) {
    value.kind = TTomlValue::EKind::kInteger;
    value.integer = integer->get();
  } else if (const auto* boolean = node.as_boolean()) {
    value.kind = TTomlValue::EKind::kBoolean;
    value.integer = boolean->get() ? 1 : 0;
  } else if (const auto* moment = node.as_date_time()) {
    value.kind = TTomlValue::EKind::kDateTime;
    value.text = CimText(moment->get());
  } else {
    value.kind = node.is_date()   ? TTomlValue::EKind::kDate
                 : node.is_time() ? TTomlValue::EKind::kTime
                                  : TTomlValue::EKind::kFloat;
  }
}

TTomlValue Convert(const toml::node& node) {
  TTomlValue value;
  value.place = PlaceOf(node.source());
  if (const auto* table = node.as_table()) {
    ConvertTable(*table, value);
  } else if (const auto* array = node.as_array()) {
    ConvertArray(*array, value);
  } else {
    ConvertScalar(node, value);
  }
  return value;
}

// "Error while parsing string: ..." would stand behind "error:".
std::string MessageOf(const toml::parse_error& error) {
  constexpr std::string_view kStart = "Error while parsing ";
  std::string text(error.description());
  if (text.starts_with(kStart)) text.replace(0, kStart.size(), "cannot read ");
  return text;
}

bool FailsAnAssertion(std::string_view text) {
  try {
    static_cast<void>(toml::parse(text));
  } catch (const TFailedAssertion&) {
    return true;
  } catch (const toml::parse_error&) {
  }
  return false;
}

// A failed assertion has no place: it is where the shortest beginning that fails it ends.
TTomlPlace PlaceOfFailedAssertion(std::string_view text) {
  std::size_t good = 0;
  std::size_t bad = text.size();
  while (bad - good > 1) {
    const std::size_t middle = good + (bad - good) / 2;
    (FailsAnAssertion(text.substr(0, middle)) ? bad : good) = middle;
  }
  const std::string_view before = text.substr(0, good);
  const std::string_view line = before.substr(before.rfind('\n') + 1);
  const auto isCharacter = [](char c) { return !IsUtf8Continuation(c); };
  return {static_cast<std::uint32_t>(std::count(before.begin(), before.end(), '\n') + 1),
          static_cast<std::uint32_t>(std::count_if(line.begin(), line.end(), isCharacter) + 1)};
}

// The library would nest the tables of a dotted key without end.
void RefuseManyDots(const TTomlDocument& document) {
  std::uint32_t number = 1;
  for (std::string_view rest = document.text; !rest.empty(); ++number) {
    const std::string_view line = rest.substr(0, rest.find('\n'));
    if (std::count(line.begin(), line.end(), '.') > kMostDots) {
      document.Fail({number, 1}, "found a line with more than " + std::to_string(kMostDots) + " full stops");
    }
    rest.remove_prefix(std::min(line.size() + 1, rest.size()));
  }
}

}  // namespace

void TTomlDocument::Fail(const TTomlPlace& place, const std::string& message, EExitStatus status) const {
  TTextDiagnostic diagnostic;
  diagnostic.sourceLine = LineOf(text, place.line);
  diagnostic.location = {file, place.line, ByteColumn(diagnostic.sourceLine, place.column)};
  diagnostic.message = message;
  throw THostError(status, FormatDiagnostic(diagnostic));
}

const char* NameOfTomlKind(TTomlValue::EKind kind) {
  using EKind = TTomlValue::EKind;
  switch (kind) {
    case EKind::kString: return "a string";
    case EKind::kInteger: return "an integer";
    case EKind::kFloat: return "a floating-point number";
    case EKind::kBoolean: return "a boolean";
    case EKind::kDate: return "a date";
    case EKind::kTime: return "a time";
    case EKind::kDateTime: return "a date-time";
    case EKind::kTable: return "a table";
    case EKind::kArray: return "an array";
  }
  return "a value";
}

TTomlDocument ParseTomlDocument(std::string file, std::string text) {
  TTomlDocument document = {std::move(file), std::move(text), {}};
  RefuseManyDots(document);
  try {
    ConvertTable(toml::parse(std::string_view(document.text)), document.root);
  } catch (const toml::parse_error& error) {
    document.Fail(PlaceOf(error.source()), MessageOf(error));
  } catch (const TFailedAssertion&) {
    document.Fail(PlaceOfFailedAssertion(document.text), "found what is not TOML, expected a key or a value");
  }
  return document;
}

}  // namespace NKROVEL20
