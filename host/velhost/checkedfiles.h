// The files that "velhost check" is given.
#pragma once

#include <string>
#include <vector>

#include "host/schema/schemacheck.h"
#include "host/velhost/inputs.h"

namespace velhost {

/// Reads each server file and each recording by itself, as a collection would, and all MOF files and folders together
/// as one schema, in the place of the first of them. What the readers report are the findings; so is a file of
/// another kind. The content determines the kind, then the suffix .toml; anything else is MOF. Throws THostError if a
/// path cannot be read.
TCheckFindings CheckFiles(const std::vector<std::string>& paths, TInputs& inputs);

}  // namespace velhost
