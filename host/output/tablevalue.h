// Values as the table shows them.
#pragma once

#include <string>

#include "host/model/cimclass.h"
#include "host/profile/collectorprofile.h"

namespace velhost {

/// The path that collects the class, as far as it decides how a register value is laid out: kJfr for
/// a class below one of the JFR base classes, kR8 for one of the R8 classes, else kNone.
CollectorProfile::EPath RegisterPathOf(const TCIMClass& cimClass);

/// Safe text for people: a register as "0xABCDEF  0x0807060504030201" where the value is one on that
/// path, datetimes in ISO 8601, other arrays as their elements between commas with strings quoted,
/// "(null)" and "(empty)" for what has no text.
std::string TableText(const TCIMValue& value, CollectorProfile::EPath path);

}  // namespace velhost
