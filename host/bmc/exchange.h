// What observers of the service processor see of each exchange.
#pragma once

#include <chrono>
#include <cstdint>
#include <span>
#include <string>

#include "host/base/api.h"
#include "nkrovel20/dotcmd.h"
#include "wire/commandbuffer.h"

namespace velhost {

/// What an exchange is for. The names are those of the server file's `on` and of the failure list.
enum class EExchangeKind { kRegister, kTimestamp, kOpen, kSize, kRead, kClose, kDot, kOther };

/// Which of the collector's requests stands in the buffer; kOther for any other.
VELHOST_API EExchangeKind KindOfRequest(const wire::TCommandBuffer& request);
/// "register", "timestamp", "open", "size", "read", "close", "dot", "other".
VELHOST_API const char* NameOfKind(EExchangeKind kind);

struct TIpmiExchange {
  int node;
  bool attempted;  ///< false: refused because the run was stopped already
  const wire::TCommandBuffer& request;
  bool answered;
  const wire::TCommandBuffer& response;  ///< equals the request when there was no answer
  int length;
  std::chrono::microseconds duration;
};

struct TDotExchange {
  int serviceProcessor;
  bool attempted;  ///< false: refused because the run was stopped already
  const dotCmd& command;
  bool answered;
  std::span<const std::uint8_t> response;  ///< empty when there was no answer
  int length;
  std::chrono::microseconds duration;
};

/// Called after each exchange, on the thread that made it, in the order of the exchanges.
class VELHOST_API IExchangeObserver {
 public:
  virtual ~IExchangeObserver();
  virtual void OnIpmi(const TIpmiExchange& exchange) = 0;
  virtual void OnDot(const TDotExchange& exchange) = 0;
};

}  // namespace velhost
