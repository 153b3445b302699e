// Faults: as a server file describes them, and as any service processor can be made to have them. Completion codes,
// lost and truncated answers, delays.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <utility>
#include <vector>

#include "host/base/api.h"
#include "host/bmc/iserviceprocessor.h"

namespace velhost {

class TTomlTable;

inline constexpr std::int64_t kLongestDelayMs = 86'400'000;  ///< a day

/// At most one of completionCode, lost and truncate is set; if none is, there is a delay.
struct TFault {
  std::optional<EExchangeKind> on;  ///< empty: any IPMI exchange
  std::optional<int> node;          ///< BMC node, or service processor for kDot; empty: any
  std::optional<std::int64_t> nth;  ///< from 1; empty: each
  std::optional<std::uint8_t> completionCode;
  bool lost = false;
  std::optional<std::size_t> truncate;  ///< bytes of the command buffer (9 or more), or of the block
  std::chrono::milliseconds delay{0};
  std::uint32_t line = 0;  ///< where the file sets its effect, or the fault; 0 if not from a file
  std::uint32_t column = 0;
};

/// Reads a [[fault]] table. Throws THostError (kMalformed), at its place, for a fault that cannot be carried out as
/// written.
TFault ReadFault(const TTomlTable& table);

/// Every fault counts each exchange that its `on` and `node` match; the first one that is due is applied. An exchange
/// that cannot take place is not counted: one without a driver, or with a BMC node or service processor that does not
/// exist.
///
/// A delay comes before the answer; if the run is stopped during it, the exchange has no answer. A lost exchange, or
/// one answered with a completion code, does not reach the service processor.
class VELHOST_API TFaultInjector : public TForwardingServiceProcessor {
 public:
  /// `inner` is not owned.
  TFaultInjector(IServiceProcessor& inner, std::vector<TFault> faults);

  std::optional<TIpmiAnswer> SendIpmi(const TIpmiRequest& request, const TStopSignal& stop) override;
  std::optional<TDotAnswer> SendDot(const TDotRequest& request, const TStopSignal& stop) override;

 private:
  /// Faults with the same `on` and `node`. They match the same exchanges, so they share one count, and an exchange
  /// takes the same time however many there are.
  struct TGroup {
    std::int64_t count = 0;                       // of exchanges that matched
    std::size_t first = kNone;                    // index of the first fault without nth
    std::map<std::int64_t, std::size_t> firstOf;  // index of the first fault with each nth
  };
  using TGroupKey = std::pair<std::optional<EExchangeKind>, std::optional<int>>;
  static constexpr std::size_t kNone = static_cast<std::size_t>(-1);

  const TFault* CountAndChoose(EExchangeKind kind, int node);

  std::vector<TFault> faults_;
  std::map<TGroupKey, TGroup> groups_;
};

}  // namespace velhost
