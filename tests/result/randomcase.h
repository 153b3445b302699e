// Random schemas and requests for the collector.
#pragma once

#include <string>
#include <vector>

#include "host/bmc/iserviceprocessor.h"
#include "host/model/cimnamespace.h"
#include "host/profile/plan.h"
#include "tests/result/numberingprocessor.h"

namespace tests {

struct TRandomCase {
  boost::shared_ptr<TNamespace> schema;
  std::string machineType;
  TDiscovery discovery;
  std::vector<std::vector<TAskedClass>> requests;
};

/// Classes of all three ways, served or not, with several addresses, narrow registers, registers of another type,
/// missing qualifiers, and some that end in an exception at their first commit; asked for singly or in one request,
/// some of them twice. No two registers have an address in common.
TRandomCase MakeRandomCase(TDice& dice);

}  // namespace tests
