#include "host/bmc/sim/simulatedserver.h"

#include <algorithm>

#include "host/bmc/commandframe.h"
#include "wire/registerblock.h"
#include "wire/storagearea.h"

namespace velhost {

namespace {

using TData = std::vector<std::uint8_t>;
using TRequest = std::span<const std::uint8_t>;

constexpr std::uint8_t kOemGroup = wire::StorageArea::kNetworkFunction;
constexpr std::size_t kIdSize = wire::StorageArea::kManufacturerId.size();

/// The data of one request, with zeros behind, by the offsets of the command buffer.
class TRequestData {
 public:
  explicit TRequestData(TRequest data) : data_(data) {}

  std::uint8_t At(std::size_t offset) const {
    const std::size_t index = offset - wire::TCommandBuffer::kData;
    return index < data_.size() ? data_[index] : std::uint8_t{0};
  }
  std::uint32_t LittleEndian(std::size_t offset, std::size_t size) const {
    std::uint32_t value = 0;
    for (std::size_t i = size; i > 0; --i) value = value << 8U | At(offset + i - 1);
    return value;
  }
  std::uint32_t BigEndian(std::size_t offset, std::size_t size) const {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < size; ++i) value = value << 8U | At(offset + i);
    return value;
  }

 private:
  TRequest data_;
};

void AppendLittleEndian(TData& data, std::uint32_t value, std::size_t size) {
  for (std::size_t i = 0; i < size; ++i) data.push_back(static_cast<std::uint8_t>(value >> (8 * i) & 0xFFU));
}

TIpmiAnswer AnswerRegister(const TSimulatedNode& node, bool pattern, const TRequestData& request) {
  const std::uint8_t chip = request.At(wire::RegisterRead::kChipSelector);
  const std::uint32_t address = request.BigEndian(wire::RegisterRead::kAddress, wire::RegisterRead::kAddressSize);
  const auto found = node.registers.find(TSimulatedNode::RegisterKey(chip, address));
  if (found == node.registers.end() && !pattern) return {kNotPresent, {}};
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
  if (!node.timestamp) return {kNotPresent, {}};
  return {wire::TCommandBuffer::kSuccess, {node.timestamp->begin(), node.timestamp->end()}};
}

bool FieldHolds(const TRequestData& request, std::size_t field, const std::string& name) {
  for (std::size_t i = 0; i < wire::StorageArea::kNameSize; ++i) {
    if (request.At(field + i) != (i < name.size() ? static_cast<std::uint8_t>(name[i]) : 0)) return false;
  }
  return true;
}

/// The area's place among its node's areas, from 1: its handle. 0 where there is none of that name.
std::uint32_t HandleOf(const TSimulatedNode& node, const TRequestData& request, std::size_t field) {
  for (std::size_t i = 0; i < node.areas.size(); ++i) {
    if (FieldHolds(request, field, node.areas[i].name)) return static_cast<std::uint32_t>(i + 1);
  }
  return 0;
}

// The answers to storage-area requests are given without the manufacturer id.

TIpmiAnswer AnswerOpen(const TSimulatedNode& node, const TRequestData& request) {
  const std::uint32_t handle = HandleOf(node, request, wire::StorageArea::kOpenName);
  if (handle == 0) return {kNotPresent, {}};
  TIpmiAnswer answer;
  AppendLittleEndian(answer.data, handle, wire::StorageArea::kHandleSize);
  return answer;
}

TIpmiAnswer AnswerSize(const TSimulatedNode& node, const TRequestData& request) {
  const std::uint32_t handle = HandleOf(node, request, wire::StorageArea::kQueryName);
  if (handle == 0) return {kNotPresent, {}};
  TIpmiAnswer answer;
  AppendLittleEndian(answer.data, static_cast<std::uint32_t>(node.areas[handle - 1].size), 4);
  return answer;
}

TIpmiAnswer AnswerRead(const TSimulatedNode& node, const TRequestData& request, std::size_t capacity) {
  constexpr std::size_t kCountSize = wire::StorageArea::kResponseData - wire::StorageArea::kResponseCount;
  const std::uint32_t handle = request.LittleEndian(wire::StorageArea::kHandle, wire::StorageArea::kHandleSize);
  if (handle == 0 || handle > node.areas.size()) return {kNotPresent, {}};
  const std::size_t start = request.LittleEndian(wire::StorageArea::kReadOffset, 4);
  const std::size_t room = capacity > kIdSize + kCountSize ? capacity - kIdSize - kCountSize : 0;
  const std::size_t wanted = request.LittleEndian(wire::StorageArea::kReadCount, kCountSize);
  const TData data = node.areas[handle - 1].data.Read(start, std::min(wanted, room));
  TIpmiAnswer answer;
  AppendLittleEndian(answer.data, static_cast<std::uint32_t>(data.size()), kCountSize);
  answer.data.insert(answer.data.end(), data.begin(), data.end());
  return answer;
}

TIpmiAnswer AnswerStorageArea(const TSimulatedNode& node, const TRequestData& request, std::size_t capacity) {
  for (std::size_t i = 0; i < kIdSize; ++i) {
    const std::uint8_t expected = wire::StorageArea::kManufacturerId.at(i);
    if (request.At(wire::StorageArea::kManufacturer + i) != expected) return {kInvalidCommand, {}};
  }
  switch (request.At(wire::StorageArea::kSubCommand)) {
    case wire::StorageArea::kOpen: return AnswerOpen(node, request);
    case wire::StorageArea::kQuerySize: return AnswerSize(node, request);
    case wire::StorageArea::kRead: return AnswerRead(node, request, capacity);
    case wire::StorageArea::kClose: return {};
    default: return {kInvalidCommand, {}};
  }
}

TIpmiAnswer AnswerOemGroup(const TSimulatedNode& node, std::uint8_t command, TRequest data, std::size_t capacity) {
  TIpmiAnswer answer = command == wire::StorageArea::kCommand ? AnswerStorageArea(node, TRequestData(data), capacity)
                                                              : TIpmiAnswer{kInvalidCommand, {}};
  const TData id = DataOfBareAnswer(kOemGroup, data);
  answer.data.insert(answer.data.begin(), id.begin(), id.end());
  return answer;
}

TIpmiAnswer AnswerRegisters(const TSimulatedNode& node, bool pattern, std::uint8_t command, TRequest data) {
  switch (command) {
    case wire::RegisterRead::kRegisterRead: return AnswerRegister(node, pattern, TRequestData(data));
    case wire::RegisterRead::kTimestampRead: return AnswerTimestamp(node);
    default: return {kInvalidCommand, {}};
  }
}

// Byte 5 of an open or size request counts the name's whole length modulo 256, so that it may say
// fewer bytes than the name's field has.
TRequest DataWithWholeName(const wire::TCommandBuffer& request) {
  constexpr auto kStart = wire::TCommandBuffer::kData;
  std::size_t size = CommandFrame::RequestData(request).size();
  const EExchangeKind kind = KindOfRequest(request);
  const std::size_t name = kind == EExchangeKind::kOpen   ? wire::StorageArea::kOpenName
                           : kind == EExchangeKind::kSize ? wire::StorageArea::kQueryName
                                                          : std::size_t{0};
  if (name != 0) size = std::max(size, name + wire::StorageArea::kNameSize - kStart);
  return {request.Data() + kStart, size};
}

bool ReadsRegisterBlock(const dotCmd& command) {
  const auto& identifier = command.GetIdentifier();
  return command.GetCommand() == wire::RegisterBlockCommand::kCommand &&
         std::equal(identifier.begin(), identifier.end(), wire::RegisterBlockCommand::kIdentifier.begin(),
                    wire::RegisterBlockCommand::kIdentifier.end()) &&
         command.GetParameters().size() == wire::RegisterBlockCommand::kParameterSize;
}

}  // namespace

std::optional<TIpmiAnswer> AnswerIpmi(const TServerFile& server, int node, std::uint8_t networkFunction,
                                      std::uint8_t command, TRequest data, std::size_t capacity) {
  if (!server.driverPresent || node < 0 || static_cast<std::size_t>(node) >= server.nodes.size()) return std::nullopt;
  const TSimulatedNode& bmc = server.nodes[static_cast<std::size_t>(node)];
  TIpmiAnswer answer = {kInvalidCommand, {}};
  if (networkFunction == wire::RegisterRead::kNetworkFunction) {
    answer = AnswerRegisters(bmc, server.patternRegisters, command, data);
  } else if (networkFunction == kOemGroup) {
    answer = AnswerOemGroup(bmc, command, data, capacity);
  }
  if (answer.data.size() > capacity) answer.data.resize(capacity);
  return answer;
}

std::vector<std::uint8_t> DataOfBareAnswer(std::uint8_t networkFunction, TRequest requestData) {
  if (networkFunction != kOemGroup) return {};
  if (requestData.size() >= kIdSize) return {requestData.begin(), requestData.begin() + kIdSize};
  return {wire::StorageArea::kManufacturerId.begin(), wire::StorageArea::kManufacturerId.end()};
}

bool TSimulatedServer::SendIpmi(int node, wire::TCommandBuffer& buffer, int& length, const TStopSignal& stop) {
  if (stop.IsStopped()) return false;
  const auto answer = AnswerIpmi(server_, node, buffer[wire::TCommandBuffer::kNetworkFunction],
                                 buffer[wire::TCommandBuffer::kCommand], DataWithWholeName(buffer));
  if (!answer) return false;
  CommandFrame::StoreResponse(buffer, length, answer->completionCode, answer->data);
  return true;
}

bool TSimulatedServer::SendDot(int serviceProcessor, const dotCmd& command, std::span<std::uint8_t> response,
                               int& length, const TStopSignal& stop) {
  if (stop.IsStopped() || serviceProcessor < 0 || serviceProcessor >= DiscoverServiceProcessors()) return false;
  if (!ReadsRegisterBlock(command)) return false;
  const TStoredBytes& block = server_.dot->blocks[static_cast<std::size_t>(serviceProcessor)];
  const auto& parameters = command.GetParameters();
  const std::size_t asked = parameters[wire::RegisterBlockCommand::kParameterBufferSize] |
                            static_cast<std::size_t>(parameters[wire::RegisterBlockCommand::kParameterBufferSize + 1])
                                << 8U;
  length = static_cast<int>(block.Read(0, response.first(std::min(asked, response.size()))));
  return true;
}

}  // namespace velhost
