// A simulated server: answers as its server file says.
#pragma once
#include "host/base/api.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "host/bmc/iserviceprocessor.h"
#include "host/bmc/sim/serverfile.h"
#include "host/model/hostservices.h"

namespace velhost {

/// The answer of a BMC node; empty if there is no such node or no driver. A request that is too short is read as if
/// zeros followed. The name in an open or size request is read from its entire field, whatever byte 5 says, because
/// byte 5 counts modulo 256. An answer has at most `capacity` data bytes, and at most the 247 of a command buffer: a
/// read of a storage area returns fewer bytes then, and counts what it returns.
///
/// An answer to an OEM/Group request (network function 0x2E) starts with the manufacturer id. A request for another
/// manufacturer's commands is answered with that manufacturer's id and completion code 0xC1, as IPMI requires.
VELHOST_API std::optional<TIpmiAnswer> AnswerIpmi(const TServerFile& server, const TIpmiRequest& request,
                                                  std::size_t capacity = wire::TCommandBuffer::kMaxData);

/// The data of an answer that only has a completion code: empty, or the manufacturer id for an OEM/Group request.
VELHOST_API std::vector<std::uint8_t> DataOfBareAnswer(const TIpmiRequest& request);

class VELHOST_API TSimulatedServer : public IServiceProcessor {
 public:
  explicit TSimulatedServer(TServerFile server) : server_(std::move(server)) {}

  TDiscovery Discover() override;

  std::optional<TIpmiAnswer> SendIpmi(const TIpmiRequest& request, const TStopSignal& stop) override;

  /// The register block, cut to the size in the command's parameters and to the capacity. Empty for a service
  /// processor that does not exist, and for any other command.
  std::optional<TDotAnswer> SendDot(const TDotRequest& request, const TStopSignal& stop) override;

  const TServerFile& Server() const { return server_; }

 private:
  TServerFile server_;
};

/// The server file's machine type and clock; the real clock if the file sets none.
class VELHOST_API TSimulatedEnvironment : public TSystemEnvironment {
 public:
  /// `server` is not owned.
  explicit TSimulatedEnvironment(const TServerFile& server) : server_(server) {}
  std::string MachineType() override { return server_.machineType; }
  TCIMDateTime LocalTime() override { return server_.localTime ? *server_.localTime : TSystemEnvironment::LocalTime(); }

 private:
  const TServerFile& server_;
};

}  // namespace velhost
