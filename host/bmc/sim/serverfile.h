// A simulated server as its file (TOML) describes it: plain data between the reader of that file and
// the simulator. man/velhost-server-file.5 has the file in prose.
#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "host/base/api.h"
#include "host/base/sourcereader.h"
#include "host/base/storedbytes.h"
#include "host/bmc/exchange.h"
#include "host/bmc/sim/datafolder.h"
#include "nkrovel20/tcimdatetime.h"
#include "wire/registerread.h"

namespace velhost {

// What one server file may hold.
inline constexpr std::size_t kLargestServerFile = std::size_t{64} << 20U;
inline constexpr std::size_t kLargestDataFile = std::size_t{256} << 20U;     ///< of a storage area
inline constexpr std::size_t kLargestBlockFile = std::size_t{1} << 20U;      ///< of a register block
inline constexpr std::size_t kLargestServerInAll = std::size_t{512} << 20U;  ///< the file and its data files
inline constexpr std::size_t kMostDataFiles = 512;                           ///< each has a descriptor
inline constexpr std::size_t kMostNodes = 256;
inline constexpr std::size_t kMostAreas = 256;  ///< of a node
inline constexpr std::size_t kMostServiceProcessors = 256;
inline constexpr std::int64_t kLongestDelayMs = 86'400'000;  ///< of a fault: a day

struct TSimulatedRegister {
  std::array<std::uint8_t, wire::RegisterRead::kHeaderSize> header{};
  std::array<std::uint8_t, wire::RegisterRead::kValueSize> value{};  ///< least significant byte first
};

struct TStorageArea {
  std::string name;
  TStoredBytes data;
  std::int32_t size = 0;  ///< as reported; the data's unless the file says otherwise
};

struct TSimulatedNode {
  std::optional<std::array<std::uint8_t, wire::RegisterRead::kTimestampSize>> timestamp;
  std::map<std::uint32_t, TSimulatedRegister> registers;  ///< by RegisterKey()
  std::vector<TStorageArea> areas;

  /// Of the address only the low 24 bits count, since a request has no more.
  static constexpr std::uint32_t RegisterKey(std::uint8_t chip, std::uint32_t address) {
    return std::uint32_t{chip} << 24U | (address & wire::RegisterRead::kAddressMask);
  }
};

struct TSimulatedDot {
  bool communication = true;
  std::vector<TStoredBytes> blocks;  ///< one for each service processor
};

/// At most one of completionCode, lost and truncate is given; with none of them, a delay is.
struct TFault {
  std::optional<EExchangeKind> on;  ///< empty: any IPMI exchange
  std::optional<int> node;          ///< BMC node, service processor for kDot; empty: any
  std::optional<std::int64_t> nth;  ///< from 1; empty: each
  std::optional<std::uint8_t> completionCode;
  bool lost = false;
  std::optional<std::size_t> truncate;  ///< bytes of the command buffer (9 or more), or of the block
  std::chrono::milliseconds delay{0};
  std::uint32_t line = 0;  ///< where the file has what it does, or the fault; 0 for one of no file
  std::uint32_t column = 0;
};

struct TServerFile {
  std::string machineType;
  std::optional<TCIMDateTime> localTime;
  bool patternRegisters = false;  ///< whether an unlisted register answers with a made-up value
  bool driverPresent = true;
  std::optional<TSimulatedDot> dot;
  std::vector<TSimulatedNode> nodes;
  std::vector<TFault> faults;
  std::vector<std::string> dataFiles;  ///< paths of the files that it names, as they were read
};

/// Reads a server file and opens the data files that it names, which are read as requests ask for them.
/// Whatever is not as it should be throws THostError: kMalformed with file, line, column, what was found
/// and what was expected; kAbsent or kDenied for a file that cannot be read.
VELHOST_API TServerFile ReadServerFile(const std::string& path, ISourceReader& reader, IDataFolder& folder);

/// The same with data files of the file system: they are in the file's folder or below, and no link
/// leads out. A server file that comes from a pipe can name none.
VELHOST_API TServerFile ReadServerFile(const std::string& path, ISourceReader& reader);

}  // namespace velhost
