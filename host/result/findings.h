// What is wrong: the fields of error registers that are not zero, judged by the registers that mask them, that say how
// severe they are, and that say which of them was the first.
#pragma once

#include <vector>

#include "host/meaning/classmeaning.h"
#include "host/model/cimclass.h"
#include "host/result/instancefacts.h"

namespace velhost {

/// Decodes the registers of a delivered instance and adds its findings. Registers that are not in `facts.registers`
/// were not read: they count as zero, one that enables as all ones. The facts refer to the meaning afterwards.
void AddMeaning(const TClassMeaning& meaning, const TCIMClass& cimClass, TInstanceFacts& facts);

/// Puts unmasked findings before masked ones, and worse ones before milder ones. Otherwise they keep their order.
void SortFindings(std::vector<TFinding>& findings);

}  // namespace velhost
