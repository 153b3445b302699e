// What a schema lacks for the collector: the list of findings, and the words that they share.
#pragma once

#include <cstddef>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "host/base/textdiagnostic.h"
#include "host/model/cimclass.h"
#include "host/schema/schemalog.h"

namespace velhost {

/// Keeps a thousand findings, since a hostile schema could have millions, and counts the others.
class TNeedFindings {
 public:
  /// `sources` supplies the source lines; not owned, and may be null.
  explicit TNeedFindings(const TSchemaSources* sources);

  /// The findings that follow are about this class. If its text is hidden, they quote nothing.
  void Begin(const TCIMClass& cimClass) { class_ = &cimClass; }
  void Error(const TSourceLocation& location, std::string message) {
    Add(EDiagnosticSeverity::kError, location, std::move(message));
  }
  void Warning(const TSourceLocation& location, std::string message) {
    Add(EDiagnosticSeverity::kWarning, location, std::move(message));
  }
  /// Whether there was an error, kept or not.
  bool HasError() const { return hasError_; }
  /// Whether another finding would be kept. If not, callers can skip composing expensive messages.
  bool Keeps() const;
  /// Whether what is declared there may be quoted in a finding about another place; not if the text is hidden.
  bool MayQuote(const TSourceLocation& location) const { return hiddenFiles_.count(location.file) == 0; }
  /// The findings in order, and if some were not kept, a last one with their number, under `schemaName`.
  std::vector<TTextDiagnostic> Finish(const std::string& schemaName);

 private:
  void Add(EDiagnosticSeverity severity, const TSourceLocation& location, std::string message);
  const TSchemaSource* SourceOf(const TSourceLocation& location) const;

  const TSchemaSources* sources_;
  std::set<std::string> hiddenFiles_;
  const TCIMClass* class_ = nullptr;
  std::vector<TTextDiagnostic> findings_;
  std::size_t dropped_ = 0;
  EDiagnosticSeverity worstDropped_ = EDiagnosticSeverity::kWarning;
  bool hasError_ = false;
};

/// "the class 'A'".
std::string Named(const TCIMClass& cimClass);
/// "the register 'R' of the class 'A'".
std::string Named(const TCIMClass& cimClass, const TPropertyDecl& property);
/// Whether the type is an integer one.
bool IsInteger(const TCIMValue& value);

}  // namespace velhost
