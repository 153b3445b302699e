// A server as the text of a server file, to be read by another process: nodes with their registers and storage areas,
// and nothing else.
#pragma once

#include <sstream>
#include <string>

#include "host/bmc/sim/serverfile.h"
#include "tests/support/namespaces.h"

namespace tests {

template <typename TBytesOf>
std::string HexPairs(const TBytesOf& bytes) {
  std::string text;
  for (const std::uint8_t byte : bytes) {
    constexpr const char* kDigits = "0123456789abcdef";
    text += text.empty() ? "" : " ";
    text += {kDigits[byte >> 4U], kDigits[byte & 0xFU]};
  }
  return "\"" + text + "\"";
}

inline std::string ServerText(const TServerFile& server) {
  std::ostringstream text;
  text << "machine_type = \"" << server.machineType << "\"\n";
  for (const TSimulatedNode& node : server.nodes) {
    text << "[[bmc_node]]\n";
    if (node.timestamp) text << "timestamp = " << HexPairs(*node.timestamp) << "\n";
    for (const auto& [key, entry] : node.registers) {
      text << "[[bmc_node.register]]\nchip = " << (key >> 24U) << "\naddress = " << (key & 0xFFFFFFU)
           << "\nvalue = " << HexPairs(entry.value) << "\nheader = " << HexPairs(entry.header) << "\n";
    }
    for (const TStorageArea& area : node.areas) {
      text << "[[bmc_node.storage_area]]\nname = \"" << area.name << "\"\nsize = " << area.size
           << "\ndata = " << HexPairs(area.data.Read(0, area.data.Size())) << "\n";
    }
  }
  return text.str();
}

}  // namespace tests
