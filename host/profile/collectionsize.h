// How much the collector would hold in memory of one class at a time, and how much of it is allowed.
//
// The collector reads all registers of all instances of a class before it hands over the first one. A schema of a few
// lines can ask for gigabytes so.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "host/profile/collectorprofile.h"

namespace velhost::CollectorProfile {

/// A collection of that size takes less than 512 MiB, however long its names are.
inline constexpr std::uint64_t kMostRegisterReads = 131072;
inline constexpr std::uint64_t kMostInstances = 65535;
inline constexpr std::uint64_t kMostInstanceProperties = 2097152;  ///< of all instances, set or not
/// Each address of a register makes the collector's log entry about the next one longer.
inline constexpr std::size_t kMostAddresses = 256;
/// Of the elements of "SupportedMachineTypes" of all classes, inherited ones too: each request searches all of them. An
/// element counts 16 bytes besides its text.
inline constexpr std::size_t kMostMachineTypeBytes = 4U << 20U;

struct TCollectionSize {
  std::uint64_t instances = 0;   ///< "MaxInstanceCount" as the collector reads it: 16 bits of it
  std::uint64_t reads = 0;       ///< of all instances: an R8 register has one or more addresses
  std::uint64_t properties = 0;  ///< of all instances
  TCollectionSize& operator+=(const TCollectionSize& other);
};

/// What a request for the class takes. The JFR path makes the instances once for each service processor.
TCollectionSize SizeOf(const TCIMClass& cimClass, EPath path, std::uint64_t serviceProcessors = 1);

/// "takes 655350 register reads, expected at most 131072", or empty where it is not too much.
std::string ProblemOf(const TCollectionSize& size);

/// "has 300 addresses in its qualifier 'Offset', expected at most 256", or empty.
std::string AddressProblemOf(const TPropertyDecl& property);

/// "the classes have 5000000 bytes in ...", or empty.
std::string MachineTypesProblemOf(const TNamespace& cimNamespace);

}  // namespace velhost::CollectorProfile
