#include "host/bmc/exchange.h"

#include <algorithm>
#include <array>
#include <boost/endian/conversion.hpp>

#include "wire/registerread.h"
#include "wire/storagearea.h"

namespace velhost {

using wire::TCommandBuffer;

namespace {

EExchangeKind KindOfSubCommand(std::uint8_t subCommand) {
  switch (subCommand) {
    case wire::StorageArea::kOpen: return EExchangeKind::kOpen;
    case wire::StorageArea::kQuerySize: return EExchangeKind::kSize;
    case wire::StorageArea::kRead: return EExchangeKind::kRead;
    case wire::StorageArea::kClose: return EExchangeKind::kClose;
    default: return EExchangeKind::kOther;
  }
}

}  // namespace

TIpmiRequest::TIpmiRequest(int node, std::uint8_t networkFunction, std::uint8_t lun, std::uint8_t command,
                           std::span<const std::uint8_t> data)
    : node_(node),
      buffer_(networkFunction, command,
              static_cast<std::uint8_t>(std::min<std::size_t>(data.size(), TCommandBuffer::kMaxData))) {
  buffer_[TCommandBuffer::kLun] = lun;
  std::copy_n(data.begin(), buffer_.DataLength(), buffer_.Data() + TCommandBuffer::kData);
}

std::span<const std::uint8_t> TIpmiRequest::Data() const {
  return DataField().first(std::min<std::size_t>(buffer_.DataLength(), TCommandBuffer::kMaxData));
}

std::span<const std::uint8_t> TIpmiRequest::DataField() const {
  return {buffer_.Data() + TCommandBuffer::kData, TCommandBuffer::kMaxData};
}

std::uint8_t TIpmiAnswer::DataLength() const {
  return claimedDataLength.value_or(static_cast<std::uint8_t>(std::min(data.size(), TCommandBuffer::kMaxData)));
}

int TIpmiAnswer::Length() const {
  return claimedLength.value_or(
      static_cast<int>(TCommandBuffer::kData + std::min(data.size(), TCommandBuffer::kMaxData)));
}

TCommandBuffer TIpmiAnswer::InBufferOf(const TIpmiRequest& request) const {
  TCommandBuffer buffer = request.Buffer();
  const std::size_t size = std::min(data.size(), TCommandBuffer::kMaxData);
  unsigned char* const field = buffer.Data() + TCommandBuffer::kData;
  std::fill_n(std::copy_n(data.begin(), size, field), TCommandBuffer::kMaxData - size, std::uint8_t{0});
  buffer[TCommandBuffer::kCompletionCode] = completionCode;
  buffer[TCommandBuffer::kDataLength] = DataLength();
  return buffer;
}

EExchangeKind KindOfRequest(const TIpmiRequest& request) {
  if (request.NetworkFunction() == wire::RegisterRead::kNetworkFunction) {
    if (request.Command() == wire::RegisterRead::kRegisterRead) return EExchangeKind::kRegister;
    if (request.Command() == wire::RegisterRead::kTimestampRead) return EExchangeKind::kTimestamp;
    return EExchangeKind::kOther;
  }
  if (request.NetworkFunction() != wire::StorageArea::kNetworkFunction ||
      request.Command() != wire::StorageArea::kCommand) {
    return EExchangeKind::kOther;
  }
  const auto& id = wire::StorageArea::kManufacturerId;
  if (!std::equal(id.begin(), id.end(), request.DataField().begin())) return EExchangeKind::kOther;
  return KindOfSubCommand(request.Buffer()[wire::StorageArea::kSubCommand]);
}

const char* NameOfKind(EExchangeKind kind) {
  static constexpr std::array<const char*, 8> kNames = {"register", "timestamp", "open", "size",
                                                        "read",     "close",     "dot",  "other"};
  return kNames.at(static_cast<std::size_t>(kind));
}

std::string AreaInSizeRequest(const TIpmiRequest& request) {
  const auto* const name = reinterpret_cast<const char*>(request.Buffer().Data() + wire::StorageArea::kQueryName);
  return {name, std::find(name, name + wire::StorageArea::kNameSize, '\0')};
}

std::int32_t SizeInAnswer(const TIpmiAnswer& answer) {
  return boost::endian::load_little_s32(TCommandData(answer.data).Bytes<4>(wire::StorageArea::kResponseSize).data());
}

}  // namespace velhost
