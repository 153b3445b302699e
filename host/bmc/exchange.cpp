#include "host/bmc/exchange.h"

#include <array>

#include "wire/registerread.h"
#include "wire/storagearea.h"

namespace velhost {

EExchangeKind KindOfRequest(const wire::TCommandBuffer& request) {
  const std::uint8_t networkFunction = request[wire::TCommandBuffer::kNetworkFunction];
  const std::uint8_t command = request[wire::TCommandBuffer::kCommand];
  if (networkFunction == wire::RegisterRead::kNetworkFunction) {
    if (command == wire::RegisterRead::kRegisterRead) return EExchangeKind::kRegister;
    if (command == wire::RegisterRead::kTimestampRead) return EExchangeKind::kTimestamp;
    return EExchangeKind::kOther;
  }
  if (networkFunction != wire::StorageArea::kNetworkFunction || command != wire::StorageArea::kCommand) {
    return EExchangeKind::kOther;
  }
  for (std::size_t i = 0; i < wire::StorageArea::kManufacturerId.size(); ++i) {
    if (request[wire::StorageArea::kManufacturer + i] != wire::StorageArea::kManufacturerId.at(i)) {
      return EExchangeKind::kOther;
    }
  }
  switch (request[wire::StorageArea::kSubCommand]) {
    case wire::StorageArea::kOpen: return EExchangeKind::kOpen;
    case wire::StorageArea::kQuerySize: return EExchangeKind::kSize;
    case wire::StorageArea::kRead: return EExchangeKind::kRead;
    case wire::StorageArea::kClose: return EExchangeKind::kClose;
    default: return EExchangeKind::kOther;
  }
}

const char* NameOfKind(EExchangeKind kind) {
  static constexpr std::array<const char*, 8> kNames = {"register", "timestamp", "open", "size",
                                                        "read",     "close",     "dot",  "other"};
  return kNames.at(static_cast<std::size_t>(kind));
}

}  // namespace velhost
