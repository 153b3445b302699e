// One BMC on the network: opens its session, keeps it, and reopens it when it is lost.
#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "host/base/api.h"
#include "host/bmc/lan/lanmodule.h"
#include "host/bmc/lan/lanspec.h"
#include "wire/commandbuffer.h"

namespace velhost {

/// The library's session time: a session without an answer for this long is dead. A request would be retransmitted a
/// millisecond earlier, and the BMC would carry it out twice.
inline constexpr std::chrono::milliseconds kLanSessionTime{15'000};
/// The wait for an answer is therefore interrupted after this time, at most a second late.
inline constexpr std::chrono::milliseconds kLanAnswerTime{12'000};
/// A session that has been silent for this long is reopened before the next request, because both sides count the
/// silence towards its time-out.
inline constexpr std::chrono::milliseconds kLanIdleTime{5'000};
/// The times used while finding out how to open a session. Nothing can be carried out twice then, so lost packets are
/// retransmitted.
inline constexpr std::chrono::milliseconds kLanProbeTime{3'000};
inline constexpr std::chrono::milliseconds kLanProbeRetransmission{1'000};

/// One exchange, filled in by TLanLink::Exchange.
struct TLanExchange {
  std::uint8_t networkFunction = 0;
  std::uint8_t lun = 0;
  std::vector<std::uint8_t> request;  ///< the command, then the data
  bool answered = false;
  std::array<std::uint8_t, 1 + wire::TCommandBuffer::kMaxData> response{};  ///< completion code, then the data
  std::size_t size = 0;                                                     ///< of the response, at least 1
  // Messages for the user, each given once; empty if there is none.
  std::string warning;
  std::string notice;  ///< that the node has been given up
};

/// Calls block. For one thread at a time.
class VELHOST_API TLanLink {
 public:
  using TClock = std::chrono::steady_clock;

  /// `module` must outlive this object. `now` is the clock that measures silence.
  TLanLink(const VelLanModule& module, TLanOptions options, std::function<TClock::time_point()> now = TClock::now);
  ~TLanLink();
  TLanLink(const TLanLink&) = delete;
  TLanLink& operator=(const TLanLink&) = delete;

  /// Finds a cipher suite that the BMC accepts, and whether the privilege level must be left open at first, then
  /// opens the session. Returns warnings for the user about what the session does not protect. Throws THostError:
  /// kRefused if the user, the password or the privilege is refused, otherwise kUnreachable.
  std::vector<std::string> Open();

  /// "lan:HOST:623: session open, cipher suite 17, privilege admin", after Open.
  std::string SessionText() const;

  /// Whether the next exchange can go without an opening: it will only wait for the answer.
  bool IsReady() const;

  /// Reopens the session if the next exchange requires it. If that fails, the node is given up with a notice.
  void Prepare(TLanExchange& exchange);

  /// Sends the request once, provided that the caller interrupts the wait after kLanAnswerTime. A request without an
  /// answer is not repeated; the session is reopened for the next one, unless Prepare has done so. If that fails, or
  /// the new session's first request gets no answer either, the node is given up with a notice, and every later
  /// exchange fails at once.
  void Exchange(TLanExchange& exchange);

  void Close();

 private:
  struct TWay {
    std::uint8_t cipherSuite;
    bool leavePrivilegeOpen;
  };
  struct TOutcome {
    VelLanSession* session = nullptr;
    int status = VEL_LAN_FAILED;
    std::string message;
  };

  TOutcome TryOpen(const TWay& way, std::chrono::milliseconds time, std::chrono::milliseconds retransmission);
  TOutcome TryBothWays(std::uint8_t cipherSuite, TWay& way);
  void FindWay();
  TOutcome OpenForUse();
  TOutcome Reopen();
  [[noreturn]] void ThrowRefused(const TOutcome& outcome) const;
  std::string Describe(const TOutcome& outcome) const;
  std::vector<std::string> Weaknesses() const;
  void Lose(TLanExchange& exchange);
  void GiveUp(TLanExchange& exchange, const std::string& why);

  const VelLanModule& module_;
  const TLanOptions options_;
  const std::string name_;  ///< used in messages
  std::function<TClock::time_point()> now_;
  TWay way_{};
  VelLanSession* session_ = nullptr;
  TClock::time_point lastAnswer_;
  bool lostBefore_ = false;  ///< the last request had no answer
  bool givenUp_ = false;
};

}  // namespace velhost
