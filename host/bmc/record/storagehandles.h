// Handles of storage areas. A service processor may give the same handle for one area after another, so what a handle
// stands for depends on what was opened last.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>

#include "host/base/api.h"
#include "host/bmc/exchange.h"

namespace velhost {

class VELHOST_API TStorageHandles {
 public:
  /// Notes the handle that an open was answered with, if the exchange is a successful open.
  void OnAnswer(const TIpmiRequest& request, const TIpmiAnswer& answer);
  /// The name of the area that the handle in a read was last given for by its node; empty if the request is not a read,
  /// or its handle was never given.
  std::optional<std::string> AreaRead(const TIpmiRequest& request) const;
  /// The number of different handles that were given.
  std::size_t Count() const { return areas_.size(); }

 private:
  using THandle = std::pair<int, std::uint32_t>;  // node, handle
  std::map<THandle, std::string> areas_;
};

}  // namespace velhost
