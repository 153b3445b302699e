// Keeps a collection's memory bounded, whatever size a storage area reports.
#pragma once
#include "host/base/api.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/bmc/iserviceprocessor.h"

namespace velhost {

// The collector makes a buffer of the reported size, then a text of three characters for each byte, which passes
// through trace, instance and output: 7 to 14 bytes of memory for each byte, by the options. Instances, with three
// bytes for each, live until their request has ended.
inline constexpr std::int64_t kLargestArea = std::int64_t{32} << 20U;
inline constexpr std::int64_t kLargestAreasOfRequest = std::int64_t{40} << 20U;

/// Stands in front of everything that observes exchanges, so that these see the true answer. To the
/// collector the answer to a size query is lost if the size is over a limit, so that it leaves the area
/// and goes on. Everything else passes through.
class VELHOST_API TSizeLimit : public TForwardingServiceProcessor {
 public:
  using TForwardingServiceProcessor::TForwardingServiceProcessor;

  /// The sizes of the requests before count no more.
  void BeginRequest() { accepted_ = 0; }
  /// What was refused since the last call, one sentence each: "node 0, storage area cpu_err reports
  /// 2147483647 bytes, over the limit of 32 MiB: not read".
  std::vector<std::string> TakeRefusals();

  std::optional<TIpmiAnswer> SendIpmi(const TIpmiRequest& request, const TStopSignal& stop) override;

 private:
  bool Accept(const TIpmiRequest& request, std::int64_t size);

  std::int64_t accepted_ = 0;
  std::vector<std::string> refusals_;
};

}  // namespace velhost
