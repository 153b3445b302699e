// The state shared by scanner and parser over one MOF text, the actions of both, and the interface of the generated
// scanner.
//
// The generated scanner and parser contain as little code as possible; the rest is here. Numbers remain text until
// their type is known. A bad literal is reported once, here, and then fits any type, so that the enclosing statement
// can still be read.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/schema/mofsyntax.h"
#include "host/schema/schemalog.h"
#include "host/schema/schemaunit.h"

namespace velhost::Mof {

/// The semantic values of tokens and of nonterminals.
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
  /// Called before each token: throws if the run has been stopped.
  void CheckStop() {
    constexpr std::size_t kTokensBetween = 1024;
    if (++tokens_ % kTokensBetween == 0) limits_.CheckStop();
  }
  /// True once a limit has been exceeded: nothing more is read or reported.
  bool Stopped() const { return stopped_; }
  void Error(std::uint32_t offset, std::string message) { log_.Error(unit_.Place(offset), std::move(message)); }
  /// Reports an error of the grammar.
  void SyntaxError(std::uint32_t offset, std::string message) {
    log_.SyntaxError(unit_.Place(offset), std::move(message));
  }
  bool Shows() const { return log_.Shows(); }
  /// "; the '{' in line 2 is not closed" for the innermost open bracket. Empty if there is none, and for embedded
  /// texts.
  std::string OpenBracket() const;
  /// "the end of the file"
  std::string NameOfEnd() const { return unit_.embedding ? "the end of the embedded string" : "the end of the file"; }
  /// The latest identifier that ends before `offset`.
  TSpan WordBefore(std::uint32_t offset) const { return words_[1].end <= offset ? words_[1] : words_[0]; }

  // The scanner's actions. Those that return an int return the token.
  /// A keyword in any case, or a name.
  int Word(TSpan span, TSemantic& value);
  /// A number or alias.
  int Plain(TSpan span, TSemantic& value, int token);
  /// On entry the span is that of the opening quote; on return it is that of the whole string, which ends with its
  /// line if it is not closed. Checks the escapes.
  int String(TSpan& span, TSemantic& value);
  /// The number of bytes from the start of the comment to the end of the line.
  std::uint32_t LineComment(TSpan span) const;
  /// One character in single quotes. It is checked here and decoded when its value is needed.
  int Character(TSpan span, TSemantic& value);
  int OpenCharacter(TSpan span, TSemantic& value);
  int BadNumber(TSpan span, TSemantic& value);
  /// Brackets: nesting deeper than the limit ends the reading.
  int Open(TSpan span, int token);
  int Close(int token);
  int End(TSpan& span) const;
  /// Whether the word after '#' is "pragma"; any other word is an error.
  bool IsPragma(TSpan span);
  void BadCharacter(TSpan span);

  // The parser's actions.
  /// The N of "[N]"; a bad one is reported and treated as "[]".
  TArraySuffix ArraySize(TSpan number);
  /// Adds a flavor. One that contradicts an earlier one is reported and left out.
  std::uint32_t JoinFlavors(std::uint32_t flavors, std::uint32_t flavor, TSpan word);
  /// Stores the literal. The elements of an array are stored in the same way, one after the other.
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
  /// Whether the token exceeds the limit; if so, reports it and ends the reading.
  bool TooLong(TSpan span) { return TooLong(span, limits_.tokenSize); }
  bool TooLong(TSpan span, std::size_t limit);
  TRange OnePiece(TSpan content, bool escaped);
  std::uint32_t Escape(std::uint32_t offset);
  void BadEscape(std::uint32_t offset, std::string_view escape);
  void Stop(std::uint32_t offset, std::string message);
  /// Adds to the memory estimate of all texts; exceeding the limit ends the reading.
  void Charge(std::uint32_t offset, std::size_t bytes);
  /// Records a name that follows "class" or "qualifier".
  void Note(TSpan name);

  TSchemaSource& source_;
  const TSchemaUnit& unit_;
  const TSchemaLimits& limits_;
  TSchemaLog& log_;
  TMofFile file_;
  std::size_t tokens_ = 0;
  std::size_t depth_ = 0;
  std::vector<std::uint32_t> open_;    // offsets of the enclosing brackets; only the first depth_ are valid
  TSpan words_[2] = {{0, 0}, {0, 0}};  // the latest two identifiers
  int previousWord_ = 0;               // the token that declares the next name, or 0
  bool stopped_ = false;
};

inline constexpr std::size_t kShown = 40;  ///< the most bytes of a token that a message shows

/// The text of a token in single quotes, for a message; it is cut if it is long or continues on another line.
std::string Quoted(std::string_view text);

/// Runs the scanner and the grammar over a text. Returns whatever could be read, even if errors were logged. No text
/// makes this throw. `unit` gives the place of the text; its file is not used.
TMofFile ParseMof(TSchemaSource& source, const TSchemaUnit& unit, const TSchemaLimits& limits, TSchemaLog& log);

class TScanner {
 public:
  /// Scans `scan`'s text in place; the text is restored when the scanner is destroyed.
  explicit TScanner(TScan& scan);
  ~TScanner();
  TScanner(const TScanner&) = delete;
  TScanner& operator=(const TScanner&) = delete;

  /// The next token; at the end of the text always END. Adjacent string literals form one token.
  int Next(TSemantic& value, TSpan& span);

 private:
  struct TAhead {
    int token;  // -1: nothing has been read ahead
    TSemantic value;
    TSpan span;
  };

  int Scan(TSemantic& value, TSpan& span);

  TScan& scan_;
  void* handle_ = nullptr;
  TAhead ahead_;
};

}  // namespace velhost::Mof
