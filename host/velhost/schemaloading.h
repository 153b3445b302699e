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

/// Reads the schema of the command line, or the installed one, and prints its warnings and errors to standard error.
/// Throws THostError if there are errors: kMalformed, or kAbsent or kDenied if all of them are includes that cannot
/// be opened. A path that cannot be opened throws kAbsent or kDenied. Throws TEndedReading (kStopped) if the run is
/// stopped.
boost::shared_ptr<TNamespace> LoadSchema(const TCommonOptions& options, const TInstallation& installation,
                                         TInputs& inputs);

/// The paths that LoadSchema reads.
std::vector<std::string> SchemaPaths(const TCommonOptions& options, const TInstallation& installation);

}  // namespace velhost
