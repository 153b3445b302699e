// velhost classes: what the schema offers, and what this machine serves of it.
#pragma once

#include <string>
#include <vector>

#include "host/profile/collectorprofile.h"

namespace velhost {

/// A table of at least 80 columns: class, path, whether the machine type is served and by which
/// element of "SupportedMachineTypes", instances, registers; below it, for each JFR base class, the
/// subclass chosen for the machine type.
std::string FormatClasses(const TNamespace& cimNamespace, const std::string& machineType);

}  // namespace velhost
