// Warnings about classes and registers that can never be collected, or that are surely a slip.
#pragma once

#include <cstddef>
#include <set>
#include <string>

#include "host/base/nearestname.h"
#include "host/model/cimclass.h"
#include "host/model/cimnamespace.h"
#include "host/schema/classpaths.h"
#include "host/schema/needfindings.h"

namespace velhost {

/// Warns, at the class, of one that declares registers and is neither on a path, nor a base class, nor the direct
/// superclass of a class on a path. Warns of a class on a path, at the qualifier, if it has no instances, and of the
/// registers that it has (see WarnOfRegisters).
class TClassWarnings {
 public:
  /// Nothing is owned.
  TClassWarnings(const TNamespace& cimNamespace, const TClassPaths& paths, TNeedFindings& findings);
  void Warn(const TCIMClass& cimClass);

 private:
  void WarnOfUnreadRegisters(const TCIMClass& cimClass);
  void WarnOfNoInstances(const TCIMClass& cimClass);
  std::string HintFor(const std::string& name);

  const TClassPaths& paths_;
  TNeedFindings& findings_;
  std::set<const TCIMClass*> superClasses_;  // the direct ones of the classes on a path
  std::size_t nameSearchSteps_ = kNameSearchSteps;
};

}  // namespace velhost
