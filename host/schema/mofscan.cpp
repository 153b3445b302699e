#include "host/schema/mofscan.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "host/base/text.h"
#include "host/schema/moftext.h"
#include "host/schema/mofwords.h"
#include "host/schema/schemalog.h"
#include "mofparser.hpp"

namespace velhost::Mof {

using TToken = TMofParser::token;

namespace {

TSpan Inner(TSpan span, std::uint32_t closing) { return {span.begin + 1, span.end - closing}; }

// What a character that begins no token may have been intended to begin.
const char* ExpectedFor(char c) {
  switch (c) {
    case '$': return "a name after it";
    case '+':
    case '-': return "a digit after it";
    case '/': return "a comment, // or /*";
    default: return "a name, a value, a comment or punctuation";
  }
}

}  // namespace

std::string Quoted(std::string_view text) { return SingleQuoted(text, kShown); }

void TScan::Stop(std::uint32_t offset, std::string message) {
  if (!stopped_) Error(offset, std::move(message));
  stopped_ = true;
}

void TScan::Charge(std::uint32_t offset, std::size_t bytes) {
  const std::size_t total = log_.AddMemory(bytes);
  if (total <= limits_.memory) return;
  const bool isFirst = total - bytes <= limits_.memory;
  if (isFirst) {
    Stop(offset, "the schema takes more than " + std::to_string(limits_.memory) +
                     " bytes of memory (estimated from its declarations)");
  }
  stopped_ = true;
}

bool TScan::TooLong(TSpan span, std::size_t limit) {
  if (span.end - span.begin <= limit) return false;
  Stop(span.begin, "found " + Quoted(Text(span)) + ", which is " + std::to_string(span.end - span.begin) +
                       " bytes long, expected at most " + std::to_string(limit));
  return true;
}

void TScan::Note(TSpan name) {
  Charge(name.begin, kCostOfName);
  if (previousWord_ == TToken::CLASS) file_.mentionedClasses.insert(Text(name));
  if (previousWord_ == TToken::QUALIFIER) file_.mentionedQualifiers.insert(Text(name));
}

int TScan::Word(TSpan span, TSemantic& value) {
  if (TooLong(span, std::min(limits_.nameSize, limits_.tokenSize))) return TToken::END;
  if (previousWord_ != 0) Note(span);
  const int token = TokenOf(Text(span), value);
  previousWord_ = token == TToken::CLASS || token == TToken::QUALIFIER ? token : 0;
  if (token == TToken::DATATYPE) {
    value.type.span = span;
  } else if (token == TToken::IDENT || token == TToken::BOOLEAN) {
    value.span = span;
    words_[0] = words_[1];
    words_[1] = span;
  }
  return token;
}

int TScan::String(TSpan& span, TSemantic& value) {
  const std::string_view text = source_.Text();
  bool escaped = false;
  std::uint32_t end = span.end;
  for (;;) {
    end = static_cast<std::uint32_t>(FindStringStop(text, end));
    if (end >= text.size() || text[end] != '\\') break;
    escaped = true;
    end = Escape(end);
  }
  const bool closed = end < text.size() && text[end] == '"';
  const TSpan content = {span.end, end};
  span.end = closed ? end + 1 : end;
  if (TooLong(span)) return TToken::END;
  if (!closed) Error(span.begin, "the string that starts here is not closed on its line, expected '\"'");
  value.literal = {ELiteral::kString, span, OnePiece(content, escaped)};
  return TToken::STRING;
}

std::uint32_t TScan::LineComment(TSpan span) const {
  const std::size_t end = std::min(source_.Text().find('\n', span.end), Size());
  return static_cast<std::uint32_t>(end) - span.begin;
}

TRange TScan::OnePiece(TSpan content, bool escaped) {
  Charge(content.begin, kCostOfPiece);
  file_.pieces.push_back({content, escaped});
  return {static_cast<std::uint32_t>(file_.pieces.size() - 1), 1};
}

int TScan::Plain(TSpan span, TSemantic& value, int token) {
  value.span = span;
  const std::size_t limit = token == TToken::ALIAS ? limits_.nameSize : limits_.tokenSize;
  return TooLong(span, std::min(limit, limits_.tokenSize)) ? int{TToken::END} : token;
}

// Returns the offset after the escape. A backslash at the end of a line is not an escape: the end of the line ends
// the string.
std::uint32_t TScan::Escape(std::uint32_t offset) {
  const std::string_view rest = source_.Text().substr(offset);
  const TCharacter taken = TakeCharacter(rest);
  const auto size = static_cast<std::uint32_t>(taken.size);
  if (taken.good) return offset + size;
  const bool atLineEnd = rest.size() < 2 || rest[1] == '\n' || rest[1] == '\r';
  if (!atLineEnd) BadEscape(offset, rest.substr(0, size));
  return offset + (atLineEnd ? 1 : size);
}

void TScan::BadEscape(std::uint32_t offset, std::string_view escape) {
  if (escape.size() == 2 && (escape[1] == 'x' || escape[1] == 'X')) {
    Error(offset, "found '" + std::string(escape) + "' without a digit, expected one to four hexadecimal digits");
  } else {
    Error(offset,
          "found '" + std::string(escape) +
              R"(', expected one of the escapes \b \t \n \f \r \" \' \\ \x with one to four hexadecimal digits)");
  }
}

int TScan::Character(TSpan span, TSemantic& value) {
  if (TooLong(span)) return TToken::END;
  value.literal = {ELiteral::kBad, span, {0, 0}};
  std::string_view content = Text(Inner(span, 1));
  if (content.empty()) {
    Error(span.begin, "found '' without a character, expected one character between the quotes");
    return TToken::CHARACTER;
  }
  const TCharacter taken = TakeCharacter(content);
  if (!taken.good) {
    BadEscape(span.begin + 1, content.substr(0, taken.size));
  } else if (taken.size < content.size()) {
    Error(span.begin,
          "found " + std::string(Text(span).substr(0, kShown)) + ", expected one character between the quotes");
  } else if (taken.code > 0xFFFF) {
    Error(span.begin, "found " + std::string(Text(span)) +
                          ", expected a character up to U+FFFF, the largest that a char16 can hold");
  } else {
    value.literal.kind = ELiteral::kChar;
  }
  return TToken::CHARACTER;
}

int TScan::OpenCharacter(TSpan span, TSemantic& value) {
  if (TooLong(span)) return TToken::END;
  Error(span.begin, "the character that starts here is not closed on its line, expected \"'\"");
  value.literal = {ELiteral::kBad, span, {0, 0}};
  return TToken::CHARACTER;
}

int TScan::BadNumber(TSpan span, TSemantic& value) {
  if (TooLong(span)) return TToken::END;
  Error(span.begin, "found " + Quoted(Text(span)) +
                        ", expected a binary (101b), octal (017), decimal, hexadecimal (0x1F) or real (1.5) number");
  value.literal = {ELiteral::kBad, span, {0, 0}};
  return TToken::BADLITERAL;
}

int TScan::Open(TSpan span, int token) {
  if (depth_ >= limits_.nesting) {
    Stop(span.begin, "found " + Quoted(Text(span)) + " within " + std::to_string(depth_) +
                         " open brackets, expected at most " + std::to_string(limits_.nesting));
    return TToken::END;
  }
  if (open_.size() == depth_) open_.push_back(0);
  open_[depth_++] = span.begin;
  return token;
}

// Excess closing brackets are reported by the parser.
int TScan::Close(int token) {
  if (depth_ > 0) --depth_;
  return token;
}

int TScan::End(TSpan& span) const {
  const bool carriageReturn = source_.Text().ends_with('\r');  // its newline is not part of the text
  span.begin = span.end = static_cast<std::uint32_t>(Size() - (carriageReturn ? 1U : 0U));
  return TToken::END;
}

bool TScan::IsPragma(TSpan span) {
  std::string_view word = Text(span).substr(1);
  while (!word.empty() && (word[0] == ' ' || word[0] == '\t')) word.remove_prefix(1);
  if (EqualNames(word, "pragma")) return true;
  Error(span.begin, "found " + Quoted(Text(span)) + ", expected '#pragma'");
  return false;
}

void TScan::BadCharacter(TSpan span) {
  const std::string_view text = Text(span);
  const auto code = static_cast<unsigned char>(text[0]);
  const bool isControl = code < 0x20 || code == 0x7F;
  const std::string found =
      isControl ? "a control character with code " + std::to_string(code) : "the stray character " + Quoted(text);
  Error(span.begin, "found " + found + ", expected " + ExpectedFor(text[0]));
}

std::string TScan::OpenBracket() const {
  if (depth_ == 0 || unit_.embedding != nullptr) return {};
  const std::uint32_t offset = open_[depth_ - 1];
  return "; the " + Quoted(source_.Text().substr(offset, 1)) + " in line " +
         std::to_string(source_.Locate(offset).line) + " is not closed";
}

// The parser's actions: what the rules of the grammar add to the result.

namespace {

template <typename T>
std::uint32_t Append(std::vector<T>& members, const T& member) {
  members.push_back(member);
  return static_cast<std::uint32_t>(members.size() - 1);
}

}  // namespace

TArraySuffix TScan::ArraySize(TSpan number) {
  const std::string_view text = Text(number);
  std::uint32_t size = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), size);
  if (error != std::errc() || end != text.data() + text.size() || text[0] == '0' || size > 0x7FFFFFFF) {
    Error(number.begin, "found " + Quoted(text) + ", expected an array size from 1 to 2147483647");
    size = 0;
  }
  return {true, size};
}

std::uint32_t TScan::JoinFlavors(std::uint32_t flavors, std::uint32_t flavor, TSpan word) {
  constexpr std::uint32_t kOverride = kEnableOverride | kDisableOverride;
  constexpr std::uint32_t kPropagation = kToSubclass | kRestricted;
  const std::uint32_t both = flavors | flavor;
  const bool override = (both & kOverride) == kOverride;
  if (!override && (both & kPropagation) != kPropagation) return both;
  Error(word.begin, "found " + Quoted(Text(word)) + " together with its opposite, expected " +
                        (override ? "EnableOverride or DisableOverride" : "ToSubclass or Restricted"));
  return flavors;
}

TInitializer TScan::Scalar(const TLiteral& literal) {
  Charge(literal.span.begin, kCostOfLiteral);
  return {true, false, {Append(file_.literals, literal), 1}, literal.span};
}

void TScan::AddFeature(TRange qualifiers, TTypeName type, TSpan name, TArraySuffix array, TInitializer value) {
  Charge(name.begin, kCostOfProperty);
  file_.features.push_back({false, qualifiers, type, name, array, value, {0, 0}});
}

void TScan::AddMethod(TRange qualifiers, TTypeName type, TSpan name, TRange parameters) {
  Charge(name.begin, kCostOfMethod);
  file_.features.push_back({true, qualifiers, type, name, {false, 0}, {false, false, {0, 0}, {0, 0}}, parameters});
}

void TScan::AddParameter(TRange qualifiers, TTypeName type, TSpan name, TArraySuffix array) {
  Charge(name.begin, kCostOfParameter);
  file_.parameters.push_back({false, qualifiers, type, name, array, {false, false, {0, 0}, {0, 0}}, {0, 0}});
}

void TScan::AddQualifier(TSpan name, TTypeName type, TArraySuffix array, TInitializer value, std::uint32_t scope,
                         std::uint32_t flavors) {
  Charge(name.begin, kCostOfQualifierDeclaration);
  const TQualifierSyntax declaration = {name, type, array, value, scope, flavors};
  file_.productions.push_back({EProduction::kQualifier, Append(file_.qualifiers, declaration)});
}

void TScan::AddClass(TRange qualifiers, TSpan name, TSpan superClass, TRange features) {
  Charge(name.begin, kCostOfClass);
  const TClassSyntax declaration = {qualifiers, name, superClass, features};
  file_.productions.push_back({EProduction::kClass, Append(file_.classes, declaration)});
}

void TScan::AddInstance(TRange qualifiers, TSpan className, TSpan alias, TRange assignments) {
  Charge(className.begin, kCostOfInstance);
  const TInstanceSyntax declaration = {qualifiers, className, alias, assignments};
  file_.productions.push_back({EProduction::kInstance, Append(file_.instances, declaration)});
}

void TScan::AddPragma(TSpan name, const TLiteral& parameter) {
  Charge(name.begin, kCostOfPragma);
  file_.productions.push_back({EProduction::kPragma, Append(file_.pragmas, TPragmaSyntax{name, parameter})});
}

void TScan::AddUse(TSpan name, TInitializer value, std::uint32_t flavors) {
  Charge(name.begin, kCostOfQualifier);
  file_.uses.push_back({name, value, flavors});
}

void TScan::AddAssignment(TRange qualifiers, TSpan name, TInitializer value) {
  Charge(name.begin, kCostOfAssignment);
  file_.assignments.push_back({qualifiers, name, value});
}

}  // namespace velhost::Mof
