// Warnings about the machine types of a class on a path: missing, empty, or served by another class.
//
// For each JFR base class, the collector reads the first class below it that serves the machine type. A later class
// that serves the same machine type is hidden: it is never read there.
#pragma once

#include <cstddef>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "host/base/names.h"
#include "host/model/cimclass.h"
#include "host/model/cimnamespace.h"
#include "host/schema/needfindings.h"

namespace velhost {

/// For each machine type that is named below one base class, the class that the collector reads.
class TDelegates {
 public:
  /// Takes no more than `steps`, from which those used are subtracted. With too few of them, not all are found.
  TDelegates(const TNamespace& cimNamespace, const TCIMClass& base, std::size_t& steps);
  TDelegates(TDelegates&&) = default;

  const TCIMClass& Base() const { return *base_; }
  /// Null if none was found.
  const TCIMClass* Of(const std::string& machineType) const;

 private:
  void AddElement(const TCIMClass& cimClass, std::string_view text, std::size_t& steps);

  const TCIMClass* base_;
  std::set<std::string> machineTypes_;
  std::set<std::size_t> lengths_;  // of the machine types
  std::unordered_map<std::string_view, const TCIMClass*, TNameHash> delegates_;
};

class TMachineTypeWarnings {
 public:
  /// Only the findings are kept; they are not owned.
  TMachineTypeWarnings(const TNamespace& cimNamespace, const TClassPaths& paths, TNeedFindings& findings);

  /// Warns, at the qualifier, of an empty list and of the first empty element; and of each machine type for which
  /// another class hides this one. The machine types of a class are, in each element, the groups of exactly four
  /// digits, or the whole element if it has none.
  void Warn(const TCIMClass& cimClass);
  /// Warns, `nowhere`, if there were too many machine types to compare them all.
  void Finish(const TSourceLocation& nowhere);

 private:
  void WarnOfEmptyOnes(const TCIMClass& cimClass, const TQualifier& qualifier);
  void WarnOfHidingClasses(const TCIMClass& cimClass, const TQualifier& qualifier);
  const TDelegates* HidingDelegates(const TCIMClass& cimClass, const std::string& machineType) const;

  TNeedFindings& findings_;
  std::vector<TDelegates> bases_;
  std::size_t steps_;
};

}  // namespace velhost
