// Opens service processors on the network, through the LAN module.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "host/base/api.h"
#include "host/bmc/iserviceprocessor.h"
#include "host/bmc/lan/lanserviceprocessor.h"
#include "host/bmc/lan/lanspec.h"

namespace velhost {

/// The file name of the LAN module.
inline constexpr const char* kLanModuleFile = "velhost-lan.so";

/// Opens one node per entry, in order; at least one. The module is taken from the first of `folders`
/// that has it, and stays loaded. Throws THostError as TLanServiceProcessor does, and kUnavailable
/// when the module is not there, cannot be loaded, or is of another version.
VELHOST_API std::unique_ptr<IServiceProcessor> OpenLan(const std::vector<TLanOptions>& options, const TStopSignal& stop,
                                                       const std::vector<std::string>& folders,
                                                       TLanNotice notice = nullptr);

}  // namespace velhost
