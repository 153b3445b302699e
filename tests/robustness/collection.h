// What the robustness programs collect: a schema and a server that give every kind of instance, and
// conversion of instances to text.
#pragma once

#include <boost/shared_ptr.hpp>
#include <string>
#include <vector>

#include "host/bmc/sim/serverfile.h"
#include "host/model/cimnamespace.h"

namespace sweep {

constexpr const char* kJfrClass = "KROSG_X_PCIIOBRIDGE_StatisticData";
constexpr const char* kBridgeClass = "KROSG_VO_PCIIOBRIDGE_StatisticData";
constexpr const char* kMemoryClass = "KROSG_T4_MEMCTL_StatisticData";
constexpr const char* kFileClass = "KROSG_DCAPFile";

// Totals of an undisturbed collection of all classes.
constexpr std::size_t kExchanges = 48;  ///< two of them dot commands
constexpr std::size_t kInstances = 13;  ///< 4 of register blocks, 2 and 1 of registers, 6 capture files
constexpr std::size_t kKeys = 10;       ///< those of register blocks share one key

/// The four classes, in the order in which they are requested.
std::vector<std::string> AllClasses();

boost::shared_ptr<velhost::TNamespace> MakeSchema(const std::string& machineType);
/// Two service processors with register blocks, and two BMC nodes with three storage areas each.
velhost::TServerFile MakeServer(const std::string& machineType);

/// All properties that are set, except the number of a capture file, which depends on how many preceded
/// it.
std::string TextOf(const velhost::TInstance& instance);
/// R8 path: class and instance; JFR path: class; FFDC path: file and node.
std::string KeyOf(const velhost::TInstance& instance);
/// Empty if not set.
std::string PropertyText(const velhost::TInstance& instance, const char* name);

}  // namespace sweep
