// JSON text, piece by piece, and what is known of instances and exchanges, wherever a document says it.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "host/output/valuetext.h"
#include "host/result/instancefacts.h"

namespace velhost {

/// Appends pieces of JSON; the caller puts the commas. No piece allocates memory once the scratch text has grown.
class TJsonText {
 public:
  explicit TJsonText(ITextSink& sink) : out_(sink) {}

  /// Text that is JSON already.
  void Raw(std::string_view text) { out_.Append(text); }
  void Raw(char c) { out_.Append(c); }
  /// Any bytes: what is not UTF-8 becomes U+FFFD, unsafe characters (see IsUnsafe) are escaped.
  void String(std::string_view text);
  /// `"name":`
  void Name(std::string_view name);
  /// `"name":"text"`
  void Member(std::string_view name, std::string_view text);
  void Unsigned(std::uint64_t number) { out_.Append(numbers_.Unsigned(number)); }
  void Signed(std::int64_t number) { out_.Append(numbers_.Signed(number)); }
  /// `"0x0001ABCD"`: the low bytes of a number.
  void Hex(std::uint64_t number, int bytes);
  /// A value of the object model. Integers are numbers, including those of 64 bits; reals that are not finite are
  /// null; datetimes are CIM datetime strings; a char16 is a string of one character; a reference is its object path.
  void Value(const TCIMValue& value);
  void Flush() { out_.Flush(); }

 private:
  void Scalar(const TCIMValue& value);

  TTextBuffer out_;
  TNumberText numbers_;
  std::string scratch_;
};

/// Calls `write` for each item, with a comma between two.
template <typename TItems, typename TWrite>
void AppendSeparated(TJsonText& json, const TItems& items, const TWrite& write) {
  bool first = true;
  for (const auto& item : items) {
    if (!first) json.Raw(',');
    first = false;
    write(item);
  }
}

/// "0xABCDEF", in quotes.
void AppendAddress(TJsonText& json, std::uint32_t address);
/// `"origin":{...}`
void AppendOrigin(TJsonText& json, const TOrigin& origin);
/// `"file":{...}`
void AppendFile(TJsonText& json, const TFileFacts& file);
/// `"completion_code":203`, `"lost":true`, ...
void AppendHow(TJsonText& json, THow how);
/// {"property":...}
void AppendMissing(TJsonText& json, const TMissing& missing);
/// {"address":...} or {"index":...}
void AppendRegister(TJsonText& json, const TRegisterFacts& facts);
/// {"key":...}
void AppendFinding(TJsonText& json, const TFinding& finding);

}  // namespace velhost
