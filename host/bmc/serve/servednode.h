// One BMC node that answers requests that come over a wire.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "host/base/api.h"
#include "host/base/hosterror.h"
#include "host/bmc/exchange.h"

namespace velhost {

/// One exchange at a time.
class VELHOST_API TServedNode {
 public:
  virtual ~TServedNode();
  TServedNode(const TServedNode&) = delete;
  TServedNode& operator=(const TServedNode&) = delete;

  /// Returns the completion code, then the answer's data: at least one byte and at most `capacity` in all. Request data
  /// beyond the size of a command buffer is ignored.
  std::vector<std::uint8_t> Answer(std::uint8_t networkFunction, std::uint8_t lun, std::uint8_t command,
                                   std::span<const std::uint8_t> data, std::size_t capacity);

 protected:
  explicit TServedNode(int node) : node_(node) {}
  /// The answer, with at most `capacity` bytes of data. Without one, the request is answered as an unspecified error.
  virtual std::optional<TIpmiAnswer> Send(const TIpmiRequest& request, std::size_t capacity) = 0;

 private:
  int node_;
};

/// Why a node cannot be served, and where its file says so.
struct TNotServed {
  std::string reason;      ///< empty if it can be served
  std::uint32_t line = 0;  ///< 0 if no single place is to blame
  std::uint32_t column = 0;
  EFailure kind = EFailure::kMalformed;
};

/// That the server does not have the node, as kInvalidArgument; no reason if it has it.
TNotServed ReasonOfNode(int node, std::size_t nodes);

/// Throws THostError "FILE:LINE:COLUMN: error: REASON", or "FILE: REASON" without a place, if there is a reason.
VELHOST_API void RefuseNotServed(const TNotServed& refusal, const std::string& file);

}  // namespace velhost
