// The test that decides whether a schema element serves a machine type.
#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "nkrovel20/tcimvalue.h"

namespace torgareg {

/// Whether the element's text contains the machine type anywhere. Deliberately a plain substring test: one
/// element may list several types, and the empty machine type matches every element.
struct isSubString {
  using first_argument_type = NKROVEL20::TCIMValue;
  using second_argument_type = std::string;
  using result_type = bool;

  result_type operator()(const first_argument_type& element, const second_argument_type& machineType) const {
    return static_cast<std::string>(element).find(machineType) != std::string::npos;
  }
};

/// Whether any of the elements matches.
inline bool supportsMachineType(const std::vector<NKROVEL20::TCIMValue>& elements, const std::string& machineType) {
  return std::find_if(elements.begin(), elements.end(), [&machineType](const NKROVEL20::TCIMValue& element) {
           return isSubString()(element, machineType);
         }) != elements.end();
}

}  // namespace torgareg
