#include "host/serviceprocessor/exchange.h"

#include <array>

#include "nkrovel20/registercommands.h"
#include "nkrovel20/storageareacommands.h"

namespace NKROVEL20 {

EExchangeKind KindOfRequest(const TIPMICommandBuffer& request) {
  const std::uint8_t networkFunction = request[TIPMICommandBuffer::kNetworkFunction];
  const std::uint8_t command = request[TIPMICommandBuffer::kCommand];
  if (networkFunction == RegisterCommands::kNetworkFunction) {
    if (command == RegisterCommands::kRegisterRead) return EExchangeKind::kRegister;
    if (command == RegisterCommands::kTimestampRead) return EExchangeKind::kTimestamp;
    return EExchangeKind::kOther;
  }
  if (networkFunction != StorageAreaCommands::kNetworkFunction || command != StorageAreaCommands::kCommand) {
    return EExchangeKind::kOther;
  }
  for (std::size_t i = 0; i < StorageAreaCommands::kManufacturerId.size(); ++i) {
    if (request[StorageAreaCommands::kManufacturer + i] != StorageAreaCommands::kManufacturerId.at(i)) {
      return EExchangeKind::kOther;
    }
  }
  switch (request[StorageAreaCommands::kSubCommand]) {
    case StorageAreaCommands::kOpen: return EExchangeKind::kOpen;
    case StorageAreaCommands::kQuerySize: return EExchangeKind::kSize;
    case StorageAreaCommands::kRead: return EExchangeKind::kRead;
    case StorageAreaCommands::kClose: return EExchangeKind::kClose;
    default: return EExchangeKind::kOther;
  }
}

const char* NameOfKind(EExchangeKind kind) {
  static constexpr std::array<const char*, 8> kNames = {"register", "timestamp", "open", "size",
                                                        "read",     "close",     "dot",  "other"};
  return kNames.at(static_cast<std::size_t>(kind));
}

}  // namespace NKROVEL20
