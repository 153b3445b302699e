#include "host/bmc/sim/tomldocument.h"

#include "host/base/textdiagnostic.h"
#include "host/base/utf8.h"
#include "host/bmc/sim/tomlcursor.h"

namespace velhost {

namespace {

// Converts a column in characters to one in bytes, which is what diagnostics count.
std::uint32_t ByteColumn(std::string_view line, std::uint32_t column) {
  std::size_t byte = 0;
  for (std::uint32_t character = 1; character < column && byte < line.size(); ++character) {
    ++byte;
    while (byte < line.size() && IsUtf8Continuation(line[byte])) ++byte;
  }
  return static_cast<std::uint32_t>(byte + 1);
}

}  // namespace

TTomlValue::TTomlValue() = default;
TTomlValue::TTomlValue(TTomlValue&&) noexcept = default;
TTomlValue& TTomlValue::operator=(TTomlValue&&) noexcept = default;
TTomlValue::~TTomlValue() = default;

void TTomlDocument::Fail(const TTomlPlace& place, const std::string& message, EFailure kind) const {
  TTextDiagnostic diagnostic;
  const std::string_view line = LineOf(text, place.line);
  diagnostic.location = {file, place.line, ByteColumn(line, place.column)};
  SetSourceLine(diagnostic, line);
  diagnostic.message = message;
  throw TDiagnosedError(kind, diagnostic);
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

}  // namespace velhost
