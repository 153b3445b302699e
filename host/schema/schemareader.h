// Reads a schema: MOF (DSP0004, CIM 2.x) from files, folders or memory, into the host's object model.
#pragma once

#include <boost/shared_ptr.hpp>
#include <cstddef>
#include <string>
#include <vector>

#include "host/base/sourcereader.h"
#include "host/base/textdiagnostic.h"
#include "host/model/cimnamespace.h"
#include "host/schema/schemalog.h"

namespace velhost {

struct TSchemaResult {
  /// The classes that could be resolved; never null.
  boost::shared_ptr<TNamespace> cimNamespace;
  /// Errors and warnings in order of file and place. If the limit is exceeded, a last one gives the number omitted.
  std::vector<TTextDiagnostic> diagnostics;
  /// The number of errors, shown or not.
  std::size_t errors = 0;
  std::size_t warnings = 0;
  /// If there are errors: the failure of an unreadable file if nothing else is wrong, otherwise kMalformed.
  EFailure failure = EFailure::kMalformed;
  /// The "instance of" declarations in order, checked against the classes. A reference that is given by an alias
  /// holds the alias ("$Name").
  std::vector<boost::shared_ptr<TInstance>> instances;
  /// The texts that were read, for diagnostics of later checks; never null.
  boost::shared_ptr<const TSchemaSources> sources;

  bool HasErrors() const { return errors > 0; }
};

/// Reads the schema. Each path is a MOF file, or a folder of which all files ending in ".mof" are read in order of
/// their names, but not its subfolders. Paths are read in the given order. A file is read once, however often it is
/// named or included. Classes may refer to each other across all files.
///
/// All defects of the texts are reported as diagnostics. A path that cannot be opened throws THostError (kAbsent or
/// kDenied); an included file that cannot be opened is an error at its pragma.
TSchemaResult ReadSchema(const std::vector<std::string>& paths, ISourceReader& reader);
TSchemaResult ReadSchema(const std::vector<std::string>& paths, ISourceReader& reader, const TSchemaLimits& limits);

}  // namespace velhost
