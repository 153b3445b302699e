// What the checks of a schema for the collector share: the classes that the collector reads registers of, by their
// names and superclasses, the list of findings, and the words of the findings.
#pragma once

#include <boost/shared_ptr.hpp>
#include <cstddef>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "host/base/textdiagnostic.h"
#include "host/model/cimclass.h"
#include "host/model/cimnamespace.h"
#include "host/schema/schemalog.h"

namespace velhost {

/// Whatever the machine type: a class on a path may still be served on no machine at all.
class TClassPaths {
 public:
  using TClasses = std::vector<boost::shared_ptr<TCIMClass>>;

  explicit TClassPaths(const TNamespace& cimNamespace);

  /// The base classes of the JFR path, as far as they are declared.
  const TClasses& Bases() const { return bases_; }
  /// Those of them that the class descends from.
  TClasses BasesOf(const TCIMClass& cimClass) const;
  bool IsBase(const TCIMClass& cimClass) const;
  bool IsJfr(const TCIMClass& cimClass) const { return !BasesOf(cimClass).empty(); }
  /// The collector compares the names of these classes case-sensitively.
  static bool IsR8(const TCIMClass& cimClass);

 private:
  TClasses bases_;
};

/// Keeps a thousand findings, or another number, since a hostile schema could have millions, and counts the others.
class TNeedFindings {
 public:
  static constexpr std::size_t kMost = 1000;

  /// `sources` supplies the source lines; not owned, and may be null.
  explicit TNeedFindings(const TSchemaSources* sources, std::size_t most = kMost);

  /// The findings that follow are about this class. If its text is hidden, they quote nothing.
  void Begin(const TCIMClass& cimClass) { class_ = &cimClass; }
  void Error(const TSourceLocation& location, std::string message) {
    Add(EDiagnosticSeverity::kError, location, std::move(message));
  }
  void Warning(const TSourceLocation& location, std::string message) {
    Add(EDiagnosticSeverity::kWarning, location, std::move(message));
  }
  void Add(EDiagnosticSeverity severity, const TSourceLocation& location, std::string message);
  /// Whether there was an error, kept or not.
  bool HasError() const { return hasError_; }
  /// Whether another finding would be kept. If not, callers can skip composing expensive messages.
  bool Keeps() const;
  /// The text that the location is in; null if it is not known.
  const TSchemaSource* SourceOf(const TSourceLocation& location) const;
  /// Whether all texts may be quoted.
  bool HidesNothing() const { return hiddenFiles_.empty(); }
  /// Whether what is declared there may be quoted in a finding about another place; not if the text is hidden.
  bool MayQuote(const TSourceLocation& location) const { return hiddenFiles_.count(location.file) == 0; }
  /// The findings in order, and if some were not kept, a last one with their number, under `schemaName`.
  std::vector<TTextDiagnostic> Finish(const std::string& schemaName);

 private:
  const TSchemaSources* sources_;
  std::size_t most_;
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
