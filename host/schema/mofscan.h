// The scanner's and the parser's common state over one MOF text, and what their actions do.
//
// The generated scanner and parser hold as little code as they can; it is here. Numbers stay text
// until their type is known. A bad literal is reported once, here, and then stands for any value, so
// that the statement around it is read.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "host/schema/mofsyntax.h"
#include "host/schema/schemalimits.h"
#include "host/schema/schemalog.h"
#include "host/schema/schemaunit.h"

namespace velhost::Mof {

/// The values of tokens, and of what the grammar makes of them.
union TSemantic {
  TSpan span;
  TRange range;
  TLiteral literal;
  TInitializer initializer;
  TArraySuffix array;
  TTypeName type;
  std::uint32_t bits;
};

class TScan {
 public:
  TScan(TSchemaSource& source, const TSchemaUnit& unit, const TSchemaLimits& limits, TSchemaLog& log)
      : source_(source), unit_(unit), limits_(limits), log_(log) {}

  TMofFile& File() { return file_; }
  char* Base() { return source_.Data(); }
  std::size_t Size() const { return source_.Text().size(); }
  std::string_view Text(TSpan span) const { return source_.Text(span); }
  /// Before each token: throws once the run that reads was stopped.
  void CheckStop() {
    constexpr std::size_t kTokensBetween = 1024;
    if (++tokens_ % kTokensBetween == 0) limits_.CheckStop();
  }
  /// Set once a limit is exceeded: nothing more is read, nor reported.
  bool Stopped() const { return stopped_; }
  void Error(std::uint32_t offset, std::string message) { log_.Error(unit_.Place(offset), std::move(message)); }
  /// The same of the grammar.
  void SyntaxError(std::uint32_t offset, std::string message) {
    log_.SyntaxError(unit_.Place(offset), std::move(message));
  }
  bool Shows() const { return log_.Shows(); }
  /// "; the '{' in line 2 is not closed" for the innermost bracket that is open, or empty. Of files only.
  std::string OpenBracket() const;
  /// "the end of the file"
  std::string NameOfEnd() const { return unit_.embedding ? "the end of the embedded text" : "the end of the file"; }
  /// The latest word without a meaning of its own that ends before `offset`.
  TSpan WordBefore(std::uint32_t offset) const { return words_[1].end <= offset ? words_[1] : words_[0]; }

  // The scanner's actions. Those that return an int return the token.
  /// A keyword in any case, or a name.
  int Word(TSpan span, TSemantic& value);
  /// A number or alias.
  int Plain(TSpan span, TSemantic& value, int token);
  /// The span of a string is its opening quote's and becomes the whole string's, up to the end of the
  /// line where it is not closed. Checks the escapes.
  int String(TSpan& span, TSemantic& value);
  /// The bytes of a comment up to the end of the line.
  std::uint32_t LineComment(TSpan span) const;
  /// One character in single quotes; checked, and read once its value is needed.
  int Character(TSpan span, TSemantic& value);
  int OpenCharacter(TSpan span, TSemantic& value);
  int BadNumber(TSpan span, TSemantic& value);
  /// Brackets: deeper nesting than the limit ends the reading.
  int Open(TSpan span, int token);
  int Close(int token);
  int End(TSpan& span) const;
  /// Whether a word behind '#' is "pragma"; any other one is an error.
  bool IsPragma(TSpan span);
  void BadCharacter(TSpan span);

  // The parser's actions.
  /// The N of "[N]"; a bad one is reported and gives "[]".
  TArraySuffix ArraySize(TSpan number);
  /// The flavors with one more. One that excludes an earlier one is reported and left out.
  std::uint32_t JoinFlavors(std::uint32_t flavors, std::uint32_t flavor, TSpan word);
  /// Keeps the literal. The elements of an array are kept in the same way, one after the other.
  TInitializer Scalar(const TLiteral& literal);
  void AddFeature(TRange qualifiers, TTypeName type, TSpan name, TArraySuffix array, TInitializer value);
  void AddMethod(TRange qualifiers, TTypeName type, TSpan name, TRange parameters);
  void AddParameter(TRange qualifiers, TTypeName type, TSpan name, TArraySuffix array);
  void AddQualifier(TSpan name, TTypeName type, TArraySuffix array, TInitializer value, std::uint32_t scope,
                    std::uint32_t flavors);
  void AddClass(TRange qualifiers, TSpan name, TSpan superClass, TRange features);
  void AddInstance(TRange qualifiers, TSpan className, TSpan alias, TRange assignments);
  void AddPragma(TSpan name, const TLiteral& parameter);
  void AddUse(TSpan name, TInitializer value, std::uint32_t flavors);
  void AddAssignment(TRange qualifiers, TSpan name, TInitializer value);

 private:
  /// Whether the token exceeds the limit, which ends the reading.
  bool TooLong(TSpan span) { return TooLong(span, limits_.tokenSize); }
  bool TooLong(TSpan span, std::size_t limit);
  TRange OnePiece(TSpan content, bool escaped);
  std::uint32_t Escape(std::uint32_t offset);
  void BadEscape(std::uint32_t offset, std::string_view escape);
  void Stop(std::uint32_t offset, std::string message);
  /// Counts what is read in memory; too much of it in all texts ends the reading.
  void Charge(std::uint32_t offset, std::size_t bytes);
  /// Remembers a name behind "class" or "qualifier".
  void Note(TSpan name);

  TSchemaSource& source_;
  const TSchemaUnit& unit_;
  const TSchemaLimits& limits_;
  TSchemaLog& log_;
  TMofFile file_;
  std::size_t tokens_ = 0;
  std::size_t depth_ = 0;
  std::vector<std::uint32_t> open_;    // where the brackets around this place stand; depth_ of them count
  TSpan words_[2] = {{0, 0}, {0, 0}};  // the latest two identifiers
  int previousWord_ = 0;               // a token that declares the next name, or 0
  bool stopped_ = false;
};

inline constexpr std::size_t kShown = 40;  ///< bytes of a token in a message

/// The text of a token for a message, in single quotes; what is long or goes on in another line is cut.
std::string Quoted(std::string_view text);

/// Runs the scanner and the grammar over a text. What could be read is in the result whatever the
/// log says of the rest. Neither throws for anything that the text holds. `unit` says where the text stands; its file
/// is not looked at.
TMofFile ParseMof(TSchemaSource& source, const TSchemaUnit& unit, const TSchemaLimits& limits, TSchemaLog& log);

}  // namespace velhost::Mof
