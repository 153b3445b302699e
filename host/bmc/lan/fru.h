// The FRU inventory of a BMC: its product area names the server that the BMC belongs to.
//
// The parser takes bytes and trusts none of them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "host/base/api.h"
#include "host/bmc/iserviceprocessor.h"

namespace velhost {

/// The product area as UTF-8, without blanks and NULs at the ends of texts. If a field is malformed, only those before
/// it count.
struct TFruProduct {
  std::string name;
  std::string partNumber;  ///< part or model number
  std::string serialNumber;
  std::string defect;   ///< empty, or why the rest is missing: "it has no product area"
  bool isLost = false;  ///< a request had no answer, so that there is a defect
};

/// The offset of the product area, from the inventory's first 8 bytes. Empty if they are malformed or name no product
/// area; `defect` then says which.
VELHOST_API std::optional<std::size_t> ProductAreaOffset(std::span<const std::uint8_t> header, std::string& defect);

/// Parses a product area, which may have further bytes after it. Texts are 8-bit (English) or 16-bit characters, 6-bit
/// ASCII or BCD plus; a binary field gives an empty text.
VELHOST_API TFruProduct ParseProductArea(std::span<const std::uint8_t> area);

/// Reads the product area of a node's FRU 0, 16 bytes at a time. Ends at the first request without a good answer.
VELHOST_API TFruProduct ReadFruProduct(IServiceProcessor& processor, int node, const TStopSignal& stop);

}  // namespace velhost
