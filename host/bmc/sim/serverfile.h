// A simulated server as described by its file (TOML): plain data between the file's reader and the simulator.
// man/velhost-server-file.5 documents the format.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "host/base/api.h"
#include "host/base/sourcereader.h"
#include "host/base/storedbytes.h"
#include "host/bmc/sim/datafolder.h"
#include "host/bmc/sim/faults.h"
#include "nkrovel20/tcimdatetime.h"
#include "wire/registerread.h"

namespace velhost {

// Limits of one server file.
inline constexpr std::size_t kLargestServerFile = std::size_t{64} << 20U;
inline constexpr std::size_t kLargestDataFile = std::size_t{256} << 20U;     ///< of a storage area
inline constexpr std::size_t kLargestBlockFile = std::size_t{1} << 20U;      ///< of a register block
inline constexpr std::size_t kLargestServerInAll = std::size_t{512} << 20U;  ///< the file and its data files
inline constexpr std::size_t kMostDataFiles = 512;                           ///< each takes a descriptor
inline constexpr std::size_t kMostNodes = 256;
inline constexpr std::size_t kMostAreas = 256;  ///< of a node
inline constexpr std::size_t kMostServiceProcessors = 256;

struct TSimulatedRegister {
  std::array<std::uint8_t, wire::RegisterRead::kHeaderSize> header{};
  std::array<std::uint8_t, wire::RegisterRead::kValueSize> value{};  ///< least significant byte first
};

struct TStorageArea {
  std::string name;
  TStoredBytes data;
  std::int32_t size = 0;  ///< as reported; that of the data unless the file says otherwise
};

struct TSimulatedNode {
  std::optional<std::array<std::uint8_t, wire::RegisterRead::kTimestampSize>> timestamp;
  std::map<std::uint32_t, TSimulatedRegister> registers;  ///< by RegisterKey()
  std::vector<TStorageArea> areas;

  /// Only the low 24 bits of the address count, since a request carries no more.
  static constexpr std::uint32_t RegisterKey(std::uint8_t chip, std::uint32_t address) {
    return std::uint32_t{chip} << 24U | (address & wire::RegisterRead::kAddressMask);
  }
};

struct TSimulatedDot {
  bool communication = true;
  std::vector<TStoredBytes> blocks;  ///< one for each service processor
};

struct TServerFile {
  std::string machineType;
  std::optional<TCIMDateTime> localTime;
  bool patternRegisters = false;  ///< whether unlisted registers answer with a made-up value
  bool driverPresent = true;
  std::optional<TSimulatedDot> dot;
  std::vector<TSimulatedNode> nodes;
  std::vector<TFault> faults;
  std::vector<std::string> dataFiles;  ///< paths of the files it names, as they were opened
};

/// Reads a server file and opens the data files that it names, whose content is read as requests ask for it. Throws
/// THostError: kMalformed for anything invalid, with file, line, column, what was found and what was expected;
/// kTooLarge for a file over its limit; kAbsent or kDenied for one that cannot be read.
VELHOST_API TServerFile ReadServerFile(const std::string& path, ISourceReader& reader, IDataFolder& folder);

/// As above, with data files from the file system: they must be in the server file's folder or below it, and no link
/// may lead out. A server file that comes from a pipe cannot name any.
VELHOST_API TServerFile ReadServerFile(const std::string& path, ISourceReader& reader);

}  // namespace velhost
