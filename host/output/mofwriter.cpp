// The format `mof`: instances as MOF (DSP0004) that compiles against the schema they were collected with.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "host/base/cimdatetime.h"
#include "host/base/digits.h"
#include "host/base/text.h"
#include "host/base/utf8.h"
#include "host/output/resulttext.h"
#include "host/output/valuetext.h"
#include "host/output/writers.h"

namespace velhost {

namespace {

/// What the result says besides its instances is in comments. Long strings are written as several adjacent literals.
/// Values that MOF cannot express (reals that are not finite, datetimes that do not exist) are written as NULL with a
/// comment that shows them.
class TMofWriter : public IResultWriter {
 public:
  explicit TMofWriter(ITextSink& sink) : out_(sink) {}
  void Begin(const TResultHeader& header) override;
  void Instance(const TInstance& instance, const TInstanceFacts& facts) override;
  void End(const TResultSummary& summary) override;

 private:
  /// Writes a comment line. The text must be safe, so that it cannot leave its line.
  void Comment(std::string_view safeText);
  void Value(const TCIMValue& value);
  void Scalar(const TCIMValue& value);
  void Real(const TCIMValue& value);
  void DateTime(const TCIMValue& value);
  void Character(char32_t character);
  void String(std::string_view text);
  void Literal(std::string_view part);
  void Escape(char32_t character);

  TTextBuffer out_;
  TNumberText numbers_;
  std::string scratch_;
};

using TType = TCIMValue::TCIMType;

constexpr TListSigns kSigns = {"NULL", '{', ", ", '}'};
constexpr TPlainCharacters kPlain = PlainBut("\"\\\x7f");
constexpr std::size_t kLiteralSize = 96;  // bytes of a string in one literal: 32 bytes of a capture file

// Where to end a literal without splitting a character.
std::size_t LiteralSize(std::string_view text) {
  std::size_t size = std::min(kLiteralSize, text.size());
  while (size < text.size() && size < kLiteralSize + 3 && IsUtf8Continuation(text[size])) ++size;
  return size;
}

}  // namespace

void TMofWriter::Comment(std::string_view safeText) {
  out_.Append("// ");
  out_.Append(safeText);
  out_.Append('\n');
}

void TMofWriter::Begin(const TResultHeader& header) {
  for (const std::string& line : HeaderComments(header, ELabels::kShown)) Comment(line);
  out_.Append('\n');
}

void TMofWriter::Instance(const TInstance& instance, const TInstanceFacts& facts) {
  for (const std::string& line : InstanceComments(facts)) Comment(line);
  out_.Append("instance of ");
  out_.Append(instance.Class().Name());
  out_.Append(" {\n");
  const auto& properties = instance.Class().Properties();
  for (std::size_t i = 0; i < properties.size(); ++i) {
    if (!instance.IsSet(i)) continue;
    out_.Append("  ");
    out_.Append(properties[i]->Definition().name);
    out_.Append(" = ");
    Value(instance.Value(i));
    out_.Append(";\n");
  }
  out_.Append("};\n\n");
}

void TMofWriter::End(const TResultSummary& summary) {
  for (const std::string& line : SummaryComments(summary)) Comment(line);
  out_.Flush();
}

void TMofWriter::Value(const TCIMValue& value) {
  AppendValue(out_, value, kSigns, [this](const TCIMValue& one) { Scalar(one); });
}

void TMofWriter::Scalar(const TCIMValue& value) {
  switch (value.GetType().GetCode()) {
    case TType::kNone: return out_.Append("NULL");
    case TType::kBoolean: return out_.Append(value.ToInteger() != 0 ? "TRUE" : "FALSE");
    case TType::kReal32:
    case TType::kReal64: return Real(value);
    case TType::kChar16: return Character(static_cast<char32_t>(value.ToInteger()));
    case TType::kDateTime: return DateTime(value);
    case TType::kString:
    case TType::kReference:
      scratch_.clear();
      value.AppendTo(scratch_, 10);
      return String(scratch_);
    default: return out_.Append(numbers_.Integer(value));
  }
}

void TMofWriter::Real(const TCIMValue& value) {
  const std::string_view text = numbers_.Real(value);
  if (!text.empty()) return out_.Append(text);
  out_.Append("NULL /* ");
  out_.Append(value.ToString(10));
  out_.Append(" */");
}

void TMofWriter::DateTime(const TCIMValue& value) {
  scratch_.clear();
  value.AppendTo(scratch_, 10);
  const bool valid = IsCimDateTime(scratch_);
  out_.Append(valid ? "\"" : "NULL /* not a valid datetime: ");
  out_.Append(scratch_);
  out_.Append(valid ? "\"" : " */");
}

void TMofWriter::Character(char32_t character) {
  out_.Append('\'');
  if (character >= 0x20 && character < 0x7F && character != '\'' && character != '\\') {
    out_.Append(static_cast<char>(character));
  } else if (character == '\'') {
    out_.Append("\\'");
  } else {
    Escape(character);
  }
  out_.Append('\'');
}

void TMofWriter::String(std::string_view text) {
  for (;;) {
    const std::size_t size = LiteralSize(text);
    Literal(text.substr(0, size));
    text.remove_prefix(size);
    if (text.empty()) return;
    out_.Append("\n    ");
  }
}

void TMofWriter::Literal(std::string_view part) {
  out_.Append('"');
  const auto plain = [this](std::string_view run) { out_.Append(run); };
  SplitText(part, kPlain, plain, [this](char32_t character, std::string_view bytes) {
    if (character >= 0x80 && !IsUnsafe(character)) return out_.Append(bytes);
    Escape(character);
  });
  out_.Append('"');
}

void TMofWriter::Escape(char32_t character) {
  out_.Append('\\');
  if (const char escape = ShortEscape(character)) return out_.Append(escape);
  // Always four digits: with fewer, a hexadecimal digit that follows would become part of the escape.
  out_.Append('x');
  out_.Append(HexPair(static_cast<std::uint8_t>(character >> 8)));
  out_.Append(HexPair(static_cast<std::uint8_t>(character)));
}

std::unique_ptr<IResultWriter> MakeMofWriter(ITextSink& sink) { return std::make_unique<TMofWriter>(sink); }

}  // namespace velhost
