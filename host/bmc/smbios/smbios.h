// What the host takes from SMBIOS: the machine type, and whether there should be a BMC.
//
// The parser takes bytes and trusts none of them; systemsmbios.h reads those of this machine.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "host/base/api.h"

namespace velhost {

/// What a structure table says. After a malformed structure the facts are those that stand before it.
struct TSmbiosFacts {
  /// The system product name (type 1) as it stands, of the first such structure; empty where there
  /// is none.
  std::string productName;
  /// Whether an IPMI device (type 38) is declared.
  bool declaresIpmiDevice = false;
  /// Empty for a well-formed table; else what is wrong and at which offset ("at offset 0x1b: ...").
  std::string defect;
};

/// Reads a structure table up to its end-of-table structure or its last byte. A structure counts
/// only if it is whole, its strings included. Never throws for what the bytes say.
VELHOST_API TSmbiosFacts ParseSmbiosTable(std::span<const std::uint8_t> table);

/// The table size, in bytes, that a 32-bit or 64-bit entry point gives; empty for anything else.
VELHOST_API std::optional<std::size_t> SmbiosTableSize(std::span<const std::uint8_t> entryPoint);

/// The first group of four digits in a product name: the first run of decimal digits that is
/// exactly four long, so that "Server 62035 -[6203AC1]-" gives "6203" and not a piece of a longer
/// number. Empty where there is none.
VELHOST_API std::string MachineTypeOf(std::string_view productName);

}  // namespace velhost
