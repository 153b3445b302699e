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

// Completion codes of IPMI that the simulator gives beside success.
inline constexpr std::uint8_t kInvalidCommand = 0xC1;
inline constexpr std::uint8_t kNotPresent = 0xCB;

/// What a BMC node answers; a request that breaks off early is read as if zeros followed. The name in
/// an open or size request is read from its whole field, whatever byte 5 says, since that counts modulo
/// 256. Never more than `capacity` data bytes: a read of a storage area returns less then, and counts
/// what it returns. A command buffer's 247 bytes are the most. Empty where there is no such node or no driver.
///
/// An answer to an OEM/Group request (network function 0x2E) starts with the manufacturer id. A
/// request for another manufacturer's commands is answered with that manufacturer's id and
/// completion code 0xC1, as IPMI has it.
VELHOST_API std::optional<TIpmiAnswer> AnswerIpmi(const TServerFile& server, const TIpmiRequest& request,
                                                  std::size_t capacity = wire::TCommandBuffer::kMaxData);

/// The data of an answer that has a completion code only: none, or the manufacturer id for an
/// OEM/Group request.
VELHOST_API std::vector<std::uint8_t> DataOfBareAnswer(const TIpmiRequest& request);

class VELHOST_API TSimulatedServer : public IServiceProcessor {
 public:
  explicit TSimulatedServer(TServerFile server) : server_(std::move(server)) {}

  TDiscovery Discover() override;

  std::optional<TIpmiAnswer> SendIpmi(const TIpmiRequest& request, const TStopSignal& stop) override;

  /// The register block, cut to the size in the command's parameters and to the capacity. Empty for a
  /// service processor that does not exist and for any other command.
  std::optional<TDotAnswer> SendDot(const TDotRequest& request, const TStopSignal& stop) override;

  const TServerFile& Server() const { return server_; }

 private:
  TServerFile server_;
};

/// The server file's machine type and its clock; the real clock where the file sets none.
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
