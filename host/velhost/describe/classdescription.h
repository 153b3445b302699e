// What "velhost describe" says of a class, as text for people and as JSON.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "host/base/text.h"
#include "host/output/writers.h"
#include "host/profile/plan.h"

namespace velhost {

struct TClassDescription {
  std::string machineType;              ///< empty if it is not known
  std::string baseClass;                ///< the class that was named, if `planned` was chosen in its place
  TPlannedClass planned;                ///< with its registers even if this machine does not serve the class
  std::string servedBy;                 ///< the machine type in the class's list that decided it
  std::vector<std::string> subclasses;  ///< of a class that is not collected itself: those that are
  /// The only property to describe, as an index into TCIMClass::Properties().
  std::optional<std::size_t> property;
};

void WriteDescriptionAsText(const TClassDescription& description, ITextSink& sink, const TTableOptions& options);

/// One object on one line.
std::string DescriptionAsJson(const TClassDescription& description);

// For both forms:

/// Empty if there is none.
std::string DescriptionOf(const TQualifierSet& qualifiers);
/// "uint8[]", "string".
std::string TypeTextOf(const TPropertyDefinition& property);
/// The elements of "SupportedMachineTypes".
std::vector<std::string> MachineTypesOf(const TCIMClass& cimClass);
/// Index into `planned.registers` of the property; empty if it is not a register.
std::optional<std::size_t> RegisterOf(const TPlannedClass& planned, std::size_t property);

}  // namespace velhost
