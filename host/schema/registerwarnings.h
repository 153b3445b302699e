// Warnings about single registers.
#pragma once

#include "host/model/cimclass.h"
#include "host/profile/collectorprofile.h"
#include "host/schema/needfindings.h"

namespace velhost {

/// Warns of slips in the registers of a class on the R8 or JFR path, each at the qualifier: an address above 24 bits,
/// no address or several in one "Offset", a "MaxLen" that no register has, and an address (its low 24 bits) or "Index"
/// of an earlier register. What CheckCollectorNeeds reports as an error is left to it.
void WarnOfRegisters(const TCIMClass& cimClass, CollectorProfile::EPath path, TNeedFindings& findings);

}  // namespace velhost
