// Checks what the collector requires of a schema besides that it is well-formed.
//
// The collector looks things up without checking that they exist: a missing class, qualifier or superclass ends a
// request in an assertion, and a record number that is too large would be read past the end of a register block. This
// check finds all such cases beforehand.
#pragma once

#include <string>
#include <vector>

#include "host/base/textdiagnostic.h"
#include "host/model/cimnamespace.h"
#include "host/schema/schemalog.h"

namespace velhost {

/// Findings about missing classes come first, under `schemaName` and without a line. The others follow in class
/// order, each at the class or property that it concerns, with source lines taken from `sources` if that is given.
///
/// Errors: a base class or the capture class is missing; a class on a path lacks one of its qualifiers or a
/// superclass, or has an unusable qualifier value; a register lacks its qualifiers or is outside the register block;
/// a property of the capture class is missing or has another type; a slip in what registers mean, at the byte of the
/// string (see TMeaningSlip).
///
/// Warnings, of what can never be collected or is surely a slip: a register is not an array of uint8; an overriding
/// property looks like a register but is not read because of its origin; "Severity" with "FatalBy"; and those of
/// TClassWarnings, TMachineTypeWarnings and WarnOfRegisters.
///
/// After a thousand findings, a last one gives the number of those omitted.
std::vector<TTextDiagnostic> CheckCollectorNeeds(const TNamespace& cimNamespace, const std::string& schemaName,
                                                 const TSchemaSources* sources = nullptr);

/// Whether there is no error about this class or its properties that would end a request. Warnings, errors about the
/// schema as a whole, and slips in what registers mean do not count.
bool MeetsCollectorNeeds(const TNamespace& cimNamespace, const TCIMClass& cimClass);

}  // namespace velhost
