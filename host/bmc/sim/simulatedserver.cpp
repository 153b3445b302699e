#include "host/bmc/sim/simulatedserver.h"

#include <algorithm>
#include <array>
#include <boost/endian/conversion.hpp>
#include <map>
#include <memory>
#include <span>

#include "wire/commandbuffer.h"
#include "wire/registerblock.h"
#include "wire/storagearea.h"

namespace velhost {

namespace {

using TData = std::vector<std::uint8_t>;
using boost::endian::load_big_u24;
using boost::endian::load_little_u16;
using boost::endian::load_little_u32;
using wire::kInvalidCommand;
using wire::kNotPresent;

constexpr std::uint8_t kOemGroup = wire::StorageArea::kNetworkFunction;
constexpr std::size_t kIdSize = wire::StorageArea::kManufacturerId.size();

void AppendLittleEndian(TData& data, std::uint32_t value, std::size_t size) {
  std::array<std::uint8_t, sizeof value> bytes{};
  boost::endian::store_little_u32(bytes.data(), value);
  data.insert(data.end(), bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size));
}

TIpmiAnswer AnswerRegister(const TSimulatedNode& node, bool pattern, const TCommandData& request) {
  const std::uint8_t chip = request[wire::RegisterRead::kChipSelector];
  const std::uint32_t address =
      load_big_u24(request.Bytes<wire::RegisterRead::kAddressSize>(wire::RegisterRead::kAddress).data());
  const auto found = node.registers.find(TSimulatedNode::RegisterKey(chip, address));
  if (found == node.registers.end() && !pattern) return {kNotPresent};
  TSimulatedRegister entry;
  if (found != node.registers.end()) {
    entry = found->second;
  } else {
    for (std::uint32_t k = 0; k < entry.value.size(); ++k) {
      entry.value.at(k) = static_cast<std::uint8_t>((address >> (8 * (k % 3)) & 0xFFU) ^ chip ^ (17 * k & 0xFFU));
    }
  }
  TIpmiAnswer answer;
  answer.data.assign(entry.header.begin(), entry.header.end());
  answer.data.insert(answer.data.end(), entry.value.begin(), entry.value.end());
  return answer;
}

TIpmiAnswer AnswerTimestamp(const TSimulatedNode& node) {
  if (!node.timestamp) return {kNotPresent};
  return {wire::TCommandBuffer::kSuccess, {node.timestamp->begin(), node.timestamp->end()}};
}

bool FieldHolds(const TCommandData& request, std::size_t field, const std::string& name) {
  for (std::size_t i = 0; i < wire::StorageArea::kNameSize; ++i) {
    if (request[field + i] != (i < name.size() ? static_cast<std::uint8_t>(name[i]) : 0)) return false;
  }
  return true;
}

/// The area's handle: its position among its node's areas, from 1. 0 if there is no area of that name.
std::uint32_t HandleOf(const TSimulatedNode& node, const TCommandData& request, std::size_t field) {
  for (std::size_t i = 0; i < node.areas.size(); ++i) {
    if (FieldHolds(request, field, node.areas[i].name)) return static_cast<std::uint32_t>(i + 1);
  }
  return 0;
}

// Answers to storage-area requests; the manufacturer id is added later.

TIpmiAnswer AnswerOpen(const TSimulatedNode& node, const TCommandData& request) {
  const std::uint32_t handle = HandleOf(node, request, wire::StorageArea::kOpenName);
  if (handle == 0) return {kNotPresent};
  TIpmiAnswer answer;
  AppendLittleEndian(answer.data, handle, wire::StorageArea::kHandleSize);
  return answer;
}

TIpmiAnswer AnswerSize(const TSimulatedNode& node, const TCommandData& request) {
  const std::uint32_t handle = HandleOf(node, request, wire::StorageArea::kQueryName);
  if (handle == 0) return {kNotPresent};
  TIpmiAnswer answer;
  AppendLittleEndian(answer.data, static_cast<std::uint32_t>(node.areas[handle - 1].size), 4);
  return answer;
}

TIpmiAnswer AnswerRead(const TSimulatedNode& node, const TCommandData& request, std::size_t capacity) {
  constexpr std::size_t kCountSize = wire::StorageArea::kResponseData - wire::StorageArea::kResponseCount;
  const std::uint32_t handle =
      load_little_u32(request.Bytes<wire::StorageArea::kHandleSize>(wire::StorageArea::kHandle).data());
  if (handle == 0 || handle > node.areas.size()) return {kNotPresent};
  const std::size_t start = load_little_u32(request.Bytes<4>(wire::StorageArea::kReadOffset).data());
  const std::size_t room = capacity > kIdSize + kCountSize ? capacity - kIdSize - kCountSize : 0;
  const std::size_t wanted = load_little_u16(request.Bytes<kCountSize>(wire::StorageArea::kReadCount).data());
  const TData data = node.areas[handle - 1].data.Read(start, std::min(wanted, room));
  TIpmiAnswer answer;
  AppendLittleEndian(answer.data, static_cast<std::uint32_t>(data.size()), kCountSize);
  answer.data.insert(answer.data.end(), data.begin(), data.end());
  return answer;
}

TIpmiAnswer AnswerStorageArea(const TSimulatedNode& node, const TCommandData& request, std::size_t capacity) {
  for (std::size_t i = 0; i < kIdSize; ++i) {
    const std::uint8_t expected = wire::StorageArea::kManufacturerId.at(i);
    if (request[wire::StorageArea::kManufacturer + i] != expected) return {kInvalidCommand};
  }
  switch (request[wire::StorageArea::kSubCommand]) {
    case wire::StorageArea::kOpen: return AnswerOpen(node, request);
    case wire::StorageArea::kQuerySize: return AnswerSize(node, request);
    case wire::StorageArea::kRead: return AnswerRead(node, request, capacity);
    case wire::StorageArea::kClose: return {};
    default: return {kInvalidCommand};
  }
}

// Byte 5 of an open or size request counts the name's whole length modulo 256, so it may be less than the size of the
// name's field.
std::span<const std::uint8_t> DataWithWholeName(const TIpmiRequest& request) {
  std::size_t size = request.Data().size();
  const EExchangeKind kind = KindOfRequest(request);
  const std::size_t name = kind == EExchangeKind::kOpen   ? wire::StorageArea::kOpenName
                           : kind == EExchangeKind::kSize ? wire::StorageArea::kQueryName
                                                          : std::size_t{0};
  if (name != 0) size = std::max(size, name + wire::StorageArea::kNameSize - wire::TCommandBuffer::kData);
  return request.DataField().first(size);
}

TIpmiAnswer AnswerOemGroup(const TSimulatedNode& node, const TIpmiRequest& request, std::size_t capacity) {
  TIpmiAnswer answer = {kInvalidCommand};
  if (request.Command() == wire::StorageArea::kCommand) {
    answer = AnswerStorageArea(node, TCommandData(DataWithWholeName(request)), capacity);
  }
  const TData id = DataOfBareAnswer(request);
  answer.data.insert(answer.data.begin(), id.begin(), id.end());
  return answer;
}

TIpmiAnswer AnswerRegisters(const TSimulatedNode& node, bool pattern, const TIpmiRequest& request) {
  switch (request.Command()) {
    case wire::RegisterRead::kRegisterRead: return AnswerRegister(node, pattern, TCommandData(request.Data()));
    case wire::RegisterRead::kTimestampRead: return AnswerTimestamp(node);
    default: return {kInvalidCommand};
  }
}

bool ReadsRegisterBlock(const dotCmd& command) {
  const auto& identifier = command.GetIdentifier();
  return command.GetCommand() == wire::RegisterBlockCommand::kCommand &&
         std::equal(identifier.begin(), identifier.end(), wire::RegisterBlockCommand::kIdentifier.begin(),
                    wire::RegisterBlockCommand::kIdentifier.end()) &&
         command.GetParameters().size() == wire::RegisterBlockCommand::kParameterSize;
}

}  // namespace

std::optional<TIpmiAnswer> AnswerIpmi(const TServerFile& server, const TIpmiRequest& request, std::size_t capacity) {
  const int node = request.Node();
  if (!server.driverPresent || node < 0 || static_cast<std::size_t>(node) >= server.nodes.size()) return std::nullopt;
  const TSimulatedNode& bmc = server.nodes[static_cast<std::size_t>(node)];
  TIpmiAnswer answer = {kInvalidCommand};
  if (request.NetworkFunction() == wire::RegisterRead::kNetworkFunction) {
    answer = AnswerRegisters(bmc, server.patternRegisters, request);
  } else if (request.NetworkFunction() == kOemGroup) {
    answer = AnswerOemGroup(bmc, request, capacity);
  }
  answer.data.resize(std::min({answer.data.size(), capacity, wire::TCommandBuffer::kMaxData}));
  return answer;
}

std::vector<std::uint8_t> DataOfBareAnswer(const TIpmiRequest& request) {
  if (request.NetworkFunction() != kOemGroup) return {};
  const auto data = request.Data();
  if (data.size() >= kIdSize) return {data.begin(), data.begin() + kIdSize};
  return {wire::StorageArea::kManufacturerId.begin(), wire::StorageArea::kManufacturerId.end()};
}

TDiscovery TSimulatedServer::Discover() {
  TDiscovery found;
  found.bmcNodes = static_cast<int>(server_.nodes.size());
  found.ipmiDriver = server_.driverPresent;
  if (!server_.dot) return found;
  found.dotCommands = true;
  found.communicates = server_.dot->communication;
  found.serviceProcessors = static_cast<int>(server_.dot->blocks.size());
  return found;
}

std::optional<TIpmiAnswer> TSimulatedServer::SendIpmi(const TIpmiRequest& request, const TStopSignal& stop) {
  if (stop.IsStopped()) return std::nullopt;
  return AnswerIpmi(server_, request);
}

std::optional<TDotAnswer> TSimulatedServer::SendDot(const TDotRequest& request, const TStopSignal& stop) {
  const int target = request.serviceProcessor;
  if (stop.IsStopped() || target < 0 || target >= Discover().serviceProcessors) return std::nullopt;
  if (!ReadsRegisterBlock(request.command)) return std::nullopt;
  const auto& parameters = request.command.GetParameters();
  const std::size_t asked = load_little_u16(parameters.data() + wire::RegisterBlockCommand::kParameterBufferSize);
  return TDotAnswer{server_.dot->blocks[static_cast<std::size_t>(target)].Read(0, std::min(asked, request.capacity))};
}

}  // namespace velhost
