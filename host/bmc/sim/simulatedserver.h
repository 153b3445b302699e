// A simulated server: answers as its server file says.
#pragma once
#include "host/base/api.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "host/bmc/iserviceprocessor.h"
#include "host/bmc/sim/serverfile.h"
#include "host/model/hostservices.h"

namespace velhost {

// Completion codes of IPMI that the simulator gives beside success.
inline constexpr std::uint8_t kInvalidCommand = 0xC1;
inline constexpr std::uint8_t kNotPresent = 0xCB;

struct TIpmiAnswer {
  std::uint8_t completionCode = wire::TCommandBuffer::kSuccess;
  std::vector<std::uint8_t> data;
};

/// What a BMC node (from 0) answers to a request of `data` bytes; a request that breaks off early is
/// read as if zeros followed. Never more than `capacity` data bytes: a read of a storage area returns
/// less then, and counts what it returns. Empty where there is no such node or no driver.
///
/// An answer to an OEM/Group request (network function 0x2E) starts with the manufacturer id. A
/// request for another manufacturer's commands is answered with that manufacturer's id and
/// completion code 0xC1, as IPMI has it.
VELHOST_API std::optional<TIpmiAnswer> AnswerIpmi(const TServerFile& server, int node, std::uint8_t networkFunction,
                                                  std::uint8_t command, std::span<const std::uint8_t> data,
                                                  std::size_t capacity = wire::TCommandBuffer::kMaxData);

/// The data of an answer that has a completion code only: none, or the manufacturer id for an
/// OEM/Group request.
VELHOST_API std::vector<std::uint8_t> DataOfBareAnswer(std::uint8_t networkFunction,
                                                       std::span<const std::uint8_t> requestData);

class VELHOST_API TSimulatedServer : public IServiceProcessor {
 public:
  explicit TSimulatedServer(TServerFile server) : server_(std::move(server)) {}

  int BmcNodeCount() override { return static_cast<int>(server_.nodes.size()); }
  bool IpmiDriverPresent() override { return server_.driverPresent; }
  bool TakesDotCommands() override { return server_.dot.has_value(); }
  bool CheckCommunication() override { return server_.dot && server_.dot->communication; }
  int DiscoverServiceProcessors() override { return server_.dot ? static_cast<int>(server_.dot->blocks.size()) : 0; }

  /// AnswerIpmi() with the data that are sent. The name in an open or size request is read from its
  /// whole field, whatever byte 5 says, since that counts modulo 256.
  bool SendIpmi(int node, wire::TCommandBuffer& buffer, int& length, const TStopSignal& stop) override;

  /// The register block, cut to the size in the command's parameters and to `response`. False for a
  /// service processor that does not exist and for any other command.
  bool SendDot(int serviceProcessor, const dotCmd& command, std::span<std::uint8_t> response, int& length,
               const TStopSignal& stop) override;

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
