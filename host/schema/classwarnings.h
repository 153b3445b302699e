// Warnings about classes and registers that can never be collected, or that are surely a slip.
#pragma once

#include <cstddef>
#include <set>
#include <string>

#include "host/base/names.h"
#include "host/model/cimclass.h"
#include "host/model/cimnamespace.h"
#include "host/profile/collectorprofile.h"
#include "host/schema/needfindings.h"

namespace velhost {

/// Warns of slips in the registers of a class on the R8 or JFR path, each at the qualifier: an address above 24 bits,
/// no address or several in one "Offset", a "MaxLen" that no register has, and an address (its low 24 bits) or "Index"
/// of an earlier register. What CheckCollectorNeeds reports as an error is left to it.
void WarnOfRegisters(const TCIMClass& cimClass, CollectorProfile::EPath path, TNeedFindings& findings);

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
