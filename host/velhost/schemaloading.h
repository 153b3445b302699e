// The schema that a command works with.
#pragma once

#include <string>
#include <vector>

#include <boost/shared_ptr.hpp>

#include "host/model/cimnamespace.h"
#include "host/velhost/commandline.h"
#include "host/velhost/inputs.h"
#include "host/velhost/installation.h"

namespace velhost {

/// Reads the schema of the command line, or the installed one. Its warnings go to standard error.
/// Errors go there too, and throw THostError (kMalformed, or kAbsent and kDenied where all of
/// them are includes that cannot be opened); a path that cannot be opened kAbsent. A stop ends it with
/// TEndedReading (kStopped).
boost::shared_ptr<TNamespace> LoadSchema(const TCommonOptions& options, const TInstallation& installation,
                                         TInputs& inputs);

/// The paths that LoadSchema reads.
std::vector<std::string> SchemaPaths(const TCommonOptions& options, const TInstallation& installation);

}  // namespace velhost
