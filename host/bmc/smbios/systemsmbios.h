// The SMBIOS of the machine that the host runs on, as the Linux kernel exposes it under /sys.
#pragma once

#include <string>

#include "host/base/api.h"
#include "host/base/sourcereader.h"
#include "host/bmc/smbios/smbios.h"

namespace velhost {

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
