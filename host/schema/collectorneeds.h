// What the collector needs of a schema beyond its being well-formed.
//
// The collector looks up what it needs without checking that it is there: a missing class, qualifier
// or superclass ends a request in an assertion, and a record number that is too large would be read
// past the end of a register block. This finds all of it beforehand.
#pragma once

#include <string>
#include <vector>

#include "host/base/textdiagnostic.h"
#include "host/model/cimnamespace.h"
#include "host/schema/schemalog.h"

namespace velhost {

/// Findings about classes that are not there come first, under `schemaName` and without a line. The
/// others follow in the order of the classes, each at the class or property it is about; their source
/// lines are taken from `sources` where that is given.
///
/// Errors: a base class or the capture class that is missing; a class on a path without one of its
/// qualifiers, with a value of it that cannot be used, or without a superclass; a register without
/// its qualifiers or outside the register block; a property of the capture class that is missing or
/// of another type; past a thousand findings, the number of those that are not given. Warnings: a register that is no
/// array of uint8; an overriding property that looks like a register and is not read because of its origin.
std::vector<TTextDiagnostic> CheckCollectorNeeds(const TNamespace& cimNamespace, const std::string& schemaName,
                                                 const TSchemaSources* sources = nullptr);

}  // namespace velhost
