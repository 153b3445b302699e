// What the registers of a class mean, from its qualifiers. What a schema has wrong there is noted and then ignored: a
// bad qualifier or element is as if it were not there.
#pragma once

#include <cstddef>
#include <vector>

#include "host/meaning/classmeaning.h"
#include "host/meaning/qualifierreader.h"
#include "host/model/cimclass.h"

namespace velhost {

/// A register of a class, as its collector reads it.
struct TRegisterShape {
  std::size_t property = 0;  ///< index into TCIMClass::Properties()
  bool isNarrow = false;     ///< 32 bits, not 64
};

/// `registers` are in the order of their properties, and the result is parallel to them. Slips are added to `slips`
/// unless it is null, at most kMostMeaningSlips and one more with the number of the others: errors, and a warning for
/// "FatalBy" beside "Severity".
TClassMeaning CompileMeaning(const TCIMClass& cimClass, const std::vector<TRegisterShape>& registers,
                             std::vector<TMeaningSlip>* slips);

}  // namespace velhost
