// Capture files as instances carry them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/model/ciminstance.h"

namespace velhost {

/// The property that holds a capture file's bytes.
inline constexpr std::string_view kCaptureDataProperty = "ErrRawData";

struct TCaptureFile {
  std::string fileName;    ///< the storage area
  std::string sourceNode;  ///< decimal, from 1
  std::string recordId;    ///< decimal, from 0
  std::string localTime;   ///< ISO 8601
  std::vector<std::uint8_t> data;
};

/// The bytes of "0a ff 00 ": two digits of either case and a blank for each, the last blank optional.
/// Empty for any other text.
std::optional<std::vector<std::uint8_t>> DecodeHexPairs(std::string_view text);

/// The capture file that the instance is: empty for an instance of another class, or one whose data
/// are not set, null or no hex pairs. Properties that are not set give empty texts.
std::optional<TCaptureFile> CaptureFileOf(const TInstance& instance);

}  // namespace velhost
