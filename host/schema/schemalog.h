// What is wrong with a schema, collected over all of its texts.
//
// While a schema is read, a place is a byte offset. Lines and columns are worked out for the places
// that are shown or kept, and only then.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "host/core/textdiagnostic.h"
#include "host/schema/mofsyntax.h"

namespace NKROVEL20 {

/// One text of a schema and its lines.
class TSchemaSource {
 public:
  /// `name` is shown to people. A byte order mark at the start and a line end at the end are dropped.
  TSchemaSource(std::string name, std::string text);

  const std::string& Name() const { return name_; }
  /// Two NUL bytes stand behind the text, as the scanner needs them.
  std::string_view Text() const { return {text_.data(), size_}; }
  std::string_view Text(Mof::TSpan span) const { return Text().substr(span.begin, span.end - span.begin); }
  char* Data() { return text_.data(); }

  /// The place of a byte; the first one past the text is a place too.
  TSourceLocation Locate(std::uint32_t offset) const;
  /// Line `number`, from 1, without its end; empty past the last one.
  std::string_view Line(std::uint32_t number) const;

 private:
  void FindLines() const;

  std::string name_;
  std::string text_;
  std::size_t size_;
  mutable std::vector<std::uint32_t> starts_;  // of the lines; empty until someone asks
  mutable std::size_t hint_ = 0;               // the line last asked for: the next is seldom far
};

/// All texts of a schema, in the order in which they were begun.
using TSchemaSources = std::vector<std::unique_ptr<TSchemaSource>>;

/// A place in one of them; kWholeFile where none is meant in particular.
struct TSchemaPlace {
  std::uint32_t unit = 0;
  std::uint32_t offset = 0;
};
inline constexpr std::uint32_t kWholeFile = 0xFFFFFFFF;

class TSchemaLog {
 public:
  /// At most `limit` errors and as many warnings are kept; the others are counted.
  explicit TSchemaLog(std::size_t limit) : errors_{limit, 0, {}}, warnings_{limit, 0, {}} {}

  void Error(TSchemaPlace place, std::string message) {
    errors_.Add(place, EDiagnosticSeverity::kError, std::move(message));
  }
  void Warning(TSchemaPlace place, std::string message) {
    warnings_.Add(place, EDiagnosticSeverity::kWarning, std::move(message));
  }
  /// All of them, kept or not.
  std::size_t Errors() const { return errors_.count; }
  std::size_t Warnings() const { return warnings_.count; }
  /// Whether another error would be shown: a message that costs time to make is not made otherwise.
  bool Shows() const { return errors_.kept.size() < errors_.limit; }

  /// In order of file and place. What was counted only is said at the end: "and N more errors".
  std::vector<TTextDiagnostic> Finish(const TSchemaSources& sources) const;

 private:
  struct TEntry {
    TSchemaPlace place;
    EDiagnosticSeverity severity;
    std::string message;
  };
  struct TList {
    std::size_t limit;
    std::size_t count;
    std::vector<TEntry> kept;
    void Add(TSchemaPlace place, EDiagnosticSeverity severity, std::string message);
    void AppendRest(std::vector<TTextDiagnostic>& diagnostics, EDiagnosticSeverity severity) const;
  };
  TList errors_;
  TList warnings_;
};

}  // namespace NKROVEL20
