// The schema that a command works with.
#pragma once

#include <string>
#include <vector>

#include <boost/shared_ptr.hpp>

#include "host/model/cimnamespace.h"
#include "host/profile/plan.h"
#include "host/result/resultfacts.h"
#include "host/schema/schemalog.h"
#include "host/velhost/commandline.h"
#include "host/velhost/inputs.h"
#include "host/velhost/installation.h"

namespace velhost {

struct TLoadedSchema {
  boost::shared_ptr<TNamespace> cimNamespace;
  TSchemaFacts facts;
  /// The texts, for what is said of them later. May be dropped after that.
  boost::shared_ptr<const TSchemaSources> sources;
};

/// Reads the schema of the command line, or the installed example, and prints its warnings and errors to standard
/// error. Throws THostError if there are errors: kMalformed, or kAbsent or kDenied if all of them are includes that
/// cannot be opened. A path that cannot be opened throws kAbsent or kDenied. Throws TEndedReading (kStopped) if the
/// run is stopped.
///
/// The example has made-up addresses. Before anything is opened, throws THostError (kInvalidArgument) if it would be
/// used with hardware, in-band or over the network, without having been asked for by its name.
TLoadedSchema LoadSchema(const TCommonOptions& options, const TInstallation& installation, TInputs& inputs);

/// Prints what is wrong in the meaning of the planned registers, at most a hundred warnings, and drops the texts.
void SayMeaningWarnings(const TPlan& plan, TLoadedSchema& schema);

/// The paths that LoadSchema reads, in order: those of --schema without the '+', and the folder of the installed
/// example for the word "example", or before the others if all of them only add to the default.
std::vector<std::string> SchemaPaths(const TCommonOptions& options, const TInstallation& installation);

}  // namespace velhost
