// How much memory the collector would need at a time for one class, and how much is allowed.
//
// The collector reads all registers of all instances of a class before it delivers the first instance, so a
// schema of a few lines can ask for gigabytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "host/profile/collectorprofile.h"

namespace velhost::CollectorProfile {

/// A collection of this size takes less than 512 MiB, however long its names are.
inline constexpr std::uint64_t kMostRegisterReads = 131072;
inline constexpr std::uint64_t kMostInstances = 65535;
inline constexpr std::uint64_t kMostInstanceProperties = 2097152;  ///< over all instances, set or not
/// Each address of a register makes the collector's log entry for the next one longer.
inline constexpr std::size_t kMostAddresses = 256;
/// Total size of the "SupportedMachineTypes" elements of all classes, inherited ones included: each request
/// searches all of them. An element counts as its text plus 16 bytes.
inline constexpr std::size_t kMostMachineTypeBytes = 4U << 20U;

struct TCollectionSize {
  std::uint64_t instances = 0;   ///< the low 16 bits of "MaxInstanceCount", as the collector reads it
  std::uint64_t reads = 0;       ///< over all instances; an R8 register has one or more addresses
  std::uint64_t properties = 0;  ///< over all instances
  TCollectionSize& operator+=(const TCollectionSize& other);
};

/// The size of a request for the class. The JFR path creates the instances once per service processor.
TCollectionSize SizeOf(const TCIMClass& cimClass, EPath path, std::uint64_t serviceProcessors = 1);

/// "takes 655350 register reads, expected at most 131072", or empty if the size is acceptable.
std::string ProblemOf(const TCollectionSize& size);

/// "has 300 addresses in its qualifier 'Offset', expected at most 256", or empty.
std::string AddressProblemOf(const TPropertyDecl& property);

/// "the classes have 5000000 bytes in ...", or empty.
std::string MachineTypesProblemOf(const TNamespace& cimNamespace);

}  // namespace velhost::CollectorProfile
