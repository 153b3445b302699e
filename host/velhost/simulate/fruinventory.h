// The FRU inventory of a simulated BMC.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace velhost {

/// An inventory with a product area alone, whose part number is the machine type (its first 63 bytes). Manufacturer and
/// product name have no digits, so that no client takes them for a machine type.
std::vector<std::uint8_t> FruInventory(const std::string& machineType);

}  // namespace velhost
