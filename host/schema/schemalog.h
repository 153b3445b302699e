// What is wrong with a schema, collected over all of its texts.
//
// While a schema is read, a place is a byte offset. Lines and columns are worked out for the places
// that are shown or kept, and only then.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/base/hosterror.h"
#include "host/base/nearestname.h"
#include "host/base/textdiagnostic.h"
#include "host/schema/mofsyntax.h"

namespace velhost {

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
  /// Line `number`, from 1, without its end; empty past the last one, and of a hidden text.
  std::string_view Line(std::uint32_t number) const;

  /// A hidden text is read like any other, but nothing of it is shown to people: it may be a file that the author of
  /// the schema could not read himself.
  void Hide() { hidden_ = true; }
  bool IsHidden() const { return hidden_; }

 private:
  void FindLines() const;

  std::string name_;
  std::string text_;
  std::size_t size_;
  bool hidden_ = false;
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

/// The message about a place in a hidden text that stands for one about a text that is shown. What the grammar expects
/// is the same everywhere and stays.
std::string HiddenSyntaxMessage(const std::string& message);
inline constexpr const char* kHiddenMessage =
    "something is wrong here that is not shown, because the file is outside the folders of the schema";

/// A message is cut there: names and texts in it may be long.
inline constexpr std::size_t kLongestMessage = 2000;

class TSchemaLog {
 public:
  /// At most `limit` errors and as many warnings are kept; the others are counted.
  explicit TSchemaLog(std::size_t limit) : errors_{limit, 0, {}}, warnings_{limit, 0, {}} {}

  void Error(TSchemaPlace place, std::string message) {
    failure_ = EFailure::kMalformed;
    Add(errors_, {place, EDiagnosticSeverity::kError, ESource::kOther, std::move(message)});
  }
  /// A file cannot be read, with what the read failed of.
  void ReadError(TSchemaPlace place, std::string message, EFailure failure) {
    if (!failure_) failure_ = failure;
    Add(errors_, {place, EDiagnosticSeverity::kError, ESource::kOther, std::move(message)});
  }
  /// The same of the grammar: what it expects tells nothing of the text.
  void SyntaxError(TSchemaPlace place, std::string message) {
    failure_ = EFailure::kMalformed;
    Add(errors_, {place, EDiagnosticSeverity::kError, ESource::kGrammar, std::move(message)});
  }
  void Warning(TSchemaPlace place, std::string message) {
    Add(warnings_, {place, EDiagnosticSeverity::kWarning, ESource::kOther, std::move(message)});
  }
  /// What is wrong with a schema that has errors: what its first unreadable file failed of, if no text has an error.
  EFailure Failure() const { return failure_.value_or(EFailure::kMalformed); }
  /// All of them, kept or not.
  std::size_t Errors() const { return errors_.count; }
  std::size_t Warnings() const { return warnings_.count; }
  /// Whether another error would be shown: a message that costs time to make is not made otherwise.
  bool Shows() const { return errors_.kept.size() < errors_.limit; }
  /// Hides a file; see TSchemaSource::Hide. Of its errors the first one is kept, and so of its warnings: the places of
  /// all of them would show how the text is made.
  void HideFile(std::uint32_t unit, const std::string& name) {
    unsaid_[unit] = {true, true};
    hiddenFiles_.insert(name);
  }
  /// Whether nothing that this file declares may be quoted.
  bool Hides(const std::string& file) const { return !hiddenFiles_.empty() && hiddenFiles_.count(file) != 0; }
  /// Bytes that the texts are estimated to take so far, with these; see TSchemaLimits::memory.
  std::size_t AddMemory(std::size_t bytes) { return memory_ += bytes; }
  /// What all searches for the nearest name may still take together; see NearestName.
  std::size_t& NameSearchSteps() { return nameSearchSteps_; }

  /// In order of file and place. What was counted only is said at the end: "and N more errors".
  std::vector<TTextDiagnostic> Finish(const TSchemaSources& sources) const;

 private:
  enum class ESource { kGrammar, kOther };
  struct TEntry {
    TSchemaPlace place;
    EDiagnosticSeverity severity;
    ESource source;
    std::string message;
  };
  struct TList {
    std::size_t limit;
    std::size_t count;
    std::vector<TEntry> kept;
    void AppendRest(std::vector<TTextDiagnostic>& diagnostics, EDiagnosticSeverity severity) const;
  };
  struct TUnsaid {
    bool error;
    bool warning;
  };
  void Add(TList& list, TEntry entry);

  TList errors_;
  std::optional<EFailure> failure_;
  TList warnings_;
  std::map<std::uint32_t, TUnsaid> unsaid_;  // of the hidden files
  std::set<std::string> hiddenFiles_;
  std::size_t memory_ = 0;
  std::size_t nameSearchSteps_ = kNameSearchSteps;
};

}  // namespace velhost
