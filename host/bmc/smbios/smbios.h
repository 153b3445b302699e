// What the host reads from SMBIOS: the machine type, which server this is, and whether there should be a BMC.
//
// The parser takes bytes and trusts none of them; ReadSystemSmbios reads this machine's, as the Linux kernel exposes
// it under /sys.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "host/base/api.h"
#include "host/base/sourcereader.h"

namespace velhost {

/// The 16 bytes of a UUID as SMBIOS stores it.
using TSmbiosUuid = std::array<std::uint8_t, 16>;

/// The contents of a structure table. If a structure is malformed, only those before it count.
struct TSmbiosFacts {
  /// The system product name (type 1), verbatim, from the first such structure; empty if there is none.
  std::string productName;
  /// Of the same structure, verbatim; empty if there is none.
  std::string serialNumber;
  /// Of the same structure; empty if it is not set.
  std::optional<TSmbiosUuid> uuid;
  /// Whether an IPMI device (type 38) is declared.
  bool declaresIpmiDevice = false;
  /// Empty for a well-formed table; otherwise what is wrong, and at which offset ("at offset 0x1b: ...").
  std::string defect;
};

/// Reads a structure table up to its end-of-table structure or its last byte. A structure counts only if it is whole,
/// including its strings. Never throws because of the bytes' content.
VELHOST_API TSmbiosFacts ParseSmbiosTable(std::span<const std::uint8_t> table);

/// The table size, in bytes, stated by a 32-bit or 64-bit entry point; empty for anything else.
VELHOST_API std::optional<std::size_t> SmbiosTableSize(std::span<const std::uint8_t> entryPoint);

/// "01234567-89ab-cdef-0123-456789abcdef". From SMBIOS 2.6 on the first three fields are little-endian; `entryPoint`
/// tells the version, and anything else counts as a later one.
VELHOST_API std::string UuidText(TSmbiosUuid uuid, std::span<const std::uint8_t> entryPoint);

/// The first group of four digits in a product name: the first run of decimal digits that is exactly four long, so
/// that "Server 62035 -[6203AC1]-" gives "6203" rather than part of a longer number. Empty if there is none.
VELHOST_API std::string MachineTypeOf(std::string_view productName);

/// Absent, denied and malformed are distinct: a virtual machine may have no SMBIOS at all, and only root may read the
/// table.
enum class ESmbiosStatus { kRead, kAbsent, kDenied, kMalformed };

struct TSystemSmbios {
  ESmbiosStatus status = ESmbiosStatus::kAbsent;
  /// Whatever could be read, see TSmbiosFacts. If the table is denied, the product name comes from a file that
  /// everyone may read, and declaresIpmiDevice is false because it is unknown.
  TSmbiosFacts facts;
  /// MachineTypeOf(facts.productName).
  std::string machineType;
  /// UuidText of facts.uuid; empty if there is none.
  std::string uuid;
};

/// Reads `root`/firmware/dmi/tables and, if that is denied, `root`/class/dmi/id/product_name. Does not throw: what
/// cannot be read is a status.
VELHOST_API TSystemSmbios ReadSystemSmbios(ISourceReader& reader, const std::string& root = "/sys");

}  // namespace velhost
