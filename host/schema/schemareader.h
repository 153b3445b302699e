// Reads a schema: MOF (DSP0004, CIM 2.x) from files, folders or memory, into the host's object model.
#pragma once

#include <boost/shared_ptr.hpp>
#include <cstddef>
#include <string>
#include <vector>

#include "host/base/sourcereader.h"
#include "host/base/textdiagnostic.h"
#include "host/model/cimnamespace.h"
#include "host/schema/schemalimits.h"
#include "host/schema/schemalog.h"

namespace velhost {

struct TSchemaResult {
  /// The classes that could be resolved; never null.
  boost::shared_ptr<TNamespace> cimNamespace;
  /// Errors and warnings in order of file and place. Past the limit one more says how many there are.
  std::vector<TTextDiagnostic> diagnostics;
  /// How many there are, shown or not.
  std::size_t errors = 0;
  std::size_t warnings = 0;
  /// If there are errors: what an unreadable file failed of if nothing else is wrong, else kMalformed.
  EFailure failure = EFailure::kMalformed;
  /// What "instance of" declares, in order, typed against the classes. A reference given by an alias
  /// holds the alias ("$Name").
  std::vector<boost::shared_ptr<TInstance>> instances;
  /// The texts that were read, for diagnostics of what is found later; never null.
  boost::shared_ptr<const TSchemaSources> sources;

  bool HasErrors() const { return errors > 0; }
};

/// Reads the schema. Each path is a MOF file or a folder of them (its files that end in ".mof", by
/// name, not its folders), read in the order given. A file is read once, however often it is named
/// or included. The classes may refer to each other across all files.
///
/// Whatever the texts hold ends in diagnostics. A path that cannot be opened throws THostError
/// (kAbsent or kDenied); an included file that cannot is an error of the including one.
TSchemaResult ReadSchema(const std::vector<std::string>& paths, ISourceReader& reader);
TSchemaResult ReadSchema(const std::vector<std::string>& paths, ISourceReader& reader, const TSchemaLimits& limits);

}  // namespace velhost
