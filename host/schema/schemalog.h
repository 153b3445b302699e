// The limits on a schema, and its errors and warnings, collected over all of its texts.
//
// A schema that exceeds a limit is refused with a message that names the limit. What a collection may take is limited
// in host/profile/collectionsize.h.
//
// While a schema is read, a place is a byte offset. Lines and columns are only computed for places that are shown or
// kept.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/base/hosterror.h"
#include "host/base/names.h"
#include "host/base/textdiagnostic.h"
#include "host/schema/mofsyntax.h"

namespace velhost {

/// The defaults are several times what the complete public CIM schema takes (about 1,600 classes, 10 MB), and bound
/// the time and memory that a hostile schema can take.
struct TSchemaLimits {
  std::size_t fileSize = 16U << 20U;   ///< bytes of one file
  std::size_t totalSize = 32U << 20U;  ///< bytes of all files together
  std::size_t files = 8192;            ///< files read, including included ones
  std::size_t includeDepth = 16;       ///< files that include each other in a chain
  std::size_t tokenSize = 1U << 20U;   ///< bytes of a literal
  std::size_t nameSize = 1024;         ///< bytes of a name or alias
  std::size_t nesting = 32;            ///< brackets within brackets
  std::size_t classes = 20000;
  std::size_t inheritanceDepth = 64;       ///< classes from the root class down
  std::size_t qualifiersPerElement = 64;   ///< those of a class, property, method or parameter itself
  std::size_t propertiesPerClass = 4096;   ///< including inherited ones
  std::size_t modelEntries = 4U << 20U;    ///< properties and qualifiers of all classes, inherited ones in each
  std::size_t instanceValues = 1U << 20U;  ///< properties of all instances, set or not
  std::size_t memory = 192U << 20U;        ///< bytes for what all texts declare, by the estimates below
  std::size_t diagnostics = 100;           ///< errors shown, and the same number of warnings; the others are counted
  /// Called repeatedly while a schema is read, so that it can end the reading by throwing; empty: no time limit.
  std::function<void()> checkStop = {};

  void CheckStop() const {
    if (checkStop) checkStop();
  }
};

}  // namespace velhost

// The memory that the parts of a schema take, from their syntax to the object model. Measured as the growth of peak
// memory with schemas that consist mostly of one kind of part, and rounded up.
namespace velhost::Mof {

inline constexpr std::size_t kCostOfClass = 1200;
inline constexpr std::size_t kCostOfProperty = 700;
inline constexpr std::size_t kCostOfMethod = 450;
inline constexpr std::size_t kCostOfParameter = 200;
inline constexpr std::size_t kCostOfQualifierDeclaration = 400;
inline constexpr std::size_t kCostOfQualifier = 350;
inline constexpr std::size_t kCostOfInstance = 400;
inline constexpr std::size_t kCostOfAssignment = 80;
inline constexpr std::size_t kCostOfLiteral = 200;
inline constexpr std::size_t kCostOfPiece = 32;  // of a string
inline constexpr std::size_t kCostOfName = 100;  // after a word that declares one
inline constexpr std::size_t kCostOfPragma = 100;

}  // namespace velhost::Mof

namespace velhost {

/// One text of a schema and its lines.
class TSchemaSource {
 public:
  /// `name` is shown in messages. A byte order mark at the start and the last line end are dropped.
  TSchemaSource(std::string name, std::string text);

  const std::string& Name() const { return name_; }
  /// Two NUL bytes follow the text, as the scanner requires.
  std::string_view Text() const { return {text_.data(), size_}; }
  std::string_view Text(Mof::TSpan span) const { return Text().substr(span.begin, span.end - span.begin); }
  char* Data() { return text_.data(); }
  std::span<char> Characters() { return {text_.data(), size_}; }

  /// The line and column of a byte; `offset` may be one past the end of the text.
  TSourceLocation Locate(std::uint32_t offset) const;
  /// The opposite: the byte at a location that Locate has returned.
  std::uint32_t OffsetOf(const TSourceLocation& location) const;
  /// Line `number`, from 1, without its line end; empty past the last line, and for a hidden text.
  std::string_view Line(std::uint32_t number) const;

  /// A hidden text is read like any other, but nothing of it is shown: it may be a file that the schema's author has
  /// no permission to read.
  void Hide() { hidden_ = true; }
  bool IsHidden() const { return hidden_; }

 private:
  void FindLines() const;

  std::string name_;
  std::string text_;
  std::size_t size_;
  bool hidden_ = false;
  mutable std::vector<std::uint32_t> starts_;  // the starts of the lines; empty until first used
  mutable std::size_t hint_ = 0;               // the line found last: the next one is seldom far
};

/// All texts of a schema, in the order in which their reading began.
using TSchemaSources = std::vector<std::unique_ptr<TSchemaSource>>;

/// A place in one of them; kWholeFile if no particular byte is meant.
struct TSchemaPlace {
  std::uint32_t unit = 0;
  std::uint32_t offset = 0;
};
inline constexpr std::uint32_t kWholeFile = 0xFFFFFFFF;

/// Rewords a message about a hidden text so that it quotes nothing of the text. What the grammar expected does not
/// depend on the text, and stays.
std::string HiddenSyntaxMessage(const std::string& message);
inline constexpr const char* kHiddenMessage =
    "there is a problem here that is not shown, because the file is outside the folders of the schema";

/// Messages are cut to this length, because they may quote long names and texts.
inline constexpr std::size_t kLongestMessage = 2000;

class TSchemaLog {
 public:
  /// Keeps at most `limit` errors and as many warnings; the others are only counted.
  explicit TSchemaLog(std::size_t limit) : errors_{limit, 0, {}}, warnings_{limit, 0, {}} {}

  void Error(TSchemaPlace place, std::string message) {
    failure_ = EFailure::kMalformed;
    Add(errors_, {place, EDiagnosticSeverity::kError, ESource::kOther, std::move(message)});
  }
  /// Reports that a file cannot be read, and the kind of failure.
  void ReadError(TSchemaPlace place, std::string message, EFailure failure) {
    if (!failure_) failure_ = failure;
    Add(errors_, {place, EDiagnosticSeverity::kError, ESource::kOther, std::move(message)});
  }
  /// Reports an error of the grammar. What the grammar expects reveals nothing of a hidden text.
  void SyntaxError(TSchemaPlace place, std::string message) {
    failure_ = EFailure::kMalformed;
    Add(errors_, {place, EDiagnosticSeverity::kError, ESource::kGrammar, std::move(message)});
  }
  void Warning(TSchemaPlace place, std::string message) {
    Add(warnings_, {place, EDiagnosticSeverity::kWarning, ESource::kOther, std::move(message)});
  }
  /// If there are errors: the failure of the first unreadable file if no text has an error, otherwise kMalformed.
  EFailure Failure() const { return failure_.value_or(EFailure::kMalformed); }
  /// All of them, kept or not.
  std::size_t Errors() const { return errors_.count; }
  std::size_t Warnings() const { return warnings_.count; }
  /// Whether another error would be shown. If not, callers can skip composing expensive messages.
  bool Shows() const { return errors_.kept.size() < errors_.limit; }
  /// Hides a file; see TSchemaSource::Hide. Only its first error and its first warning are kept, because the places
  /// of all of them would reveal the structure of the text.
  void HideFile(std::uint32_t unit, const std::string& name) {
    unsaid_[unit] = {true, true};
    hiddenFiles_.insert(name);
  }
  /// Whether names and values declared in this file must not be quoted.
  bool Hides(const std::string& file) const { return !hiddenFiles_.empty() && hiddenFiles_.count(file) != 0; }
  /// Adds to the estimated memory of all texts and returns the sum; see TSchemaLimits::memory.
  std::size_t AddMemory(std::size_t bytes) { return memory_ += bytes; }
  /// The remaining steps of all searches for a nearest name together; see NearestName.
  std::size_t& NameSearchSteps() { return nameSearchSteps_; }

  /// The diagnostics in order of file and place. Those only counted are summarised at the end: "and N more
  /// errors".
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
