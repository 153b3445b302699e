// What the robustness programs collect: a schema and a server with every kind of instance, and the
// instances as text.
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

// Of an undisturbed collection of all classes.
constexpr std::size_t kExchanges = 48;  ///< two of them dot commands
constexpr std::size_t kInstances = 13;  ///< 4 of register blocks, 2 and 1 of registers, 6 capture files
constexpr std::size_t kKeys = 10;       ///< those of register blocks have one together

/// The four classes, in the order in which they are asked for.
std::vector<std::string> AllClasses();

boost::shared_ptr<velhost::TNamespace> MakeSchema(const std::string& machineType);
/// Two service processors with register blocks, two BMC nodes with three storage areas each.
velhost::TServerFile MakeServer(const std::string& machineType);

/// All properties that are set but a capture file's number, which depends on how many there were
/// before it.
std::string TextOf(const velhost::TInstance& instance);
/// Class and instance of the R8 path, class of the JFR path, file and node of the FFDC path.
std::string KeyOf(const velhost::TInstance& instance);
/// Empty where it is not set.
std::string PropertyText(const velhost::TInstance& instance, const char* name);

}  // namespace sweep
