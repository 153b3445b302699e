// One BMC on the network: opening its session, keeping it, opening it anew when it was lost.
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

/// What the library counts: a session without an answer for so long is dead, and a request is sent again
/// a millisecond before. A BMC would carry it out twice.
inline constexpr std::chrono::milliseconds kLanSessionTime{15'000};
/// Hence an answer is waited for so long, and up to a second more, and then the wait is broken off.
inline constexpr std::chrono::milliseconds kLanAnswerTime{12'000};
/// A session that was silent for this long is opened anew before the next request, since both sides
/// count the silence against its time.
inline constexpr std::chrono::milliseconds kLanIdleTime{5'000};
/// The times while it is found out how a session can be opened. Nothing is carried out twice there,
/// so lost packets are sent again.
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
  // What the user should be told, once; empty for nothing.
  std::string warning;
  std::string notice;  ///< that the node is given up
};

/// Blocks, and is used by one thread at a time.
class VELHOST_API TLanLink {
 public:
  using TClock = std::chrono::steady_clock;

  /// `module` outlives it. `now` is the clock that silence is measured by.
  TLanLink(const VelLanModule& module, TLanOptions options, std::function<TClock::time_point()> now = TClock::now);
  ~TLanLink();
  TLanLink(const TLanLink&) = delete;
  TLanLink& operator=(const TLanLink&) = delete;

  /// Finds a cipher suite that the BMC takes, and whether the privilege level must be left open at
  /// first, then opens the session. Returns what the user should be warned of: what the session does
  /// not protect. Throws THostError: kDenied where the user, the password or the privilege is
  /// refused, kUnreachable for everything else.
  std::vector<std::string> Open();

  /// Whether the next exchange needs no opening: its only wait is for the answer.
  bool IsReady() const;

  /// Opens the session anew where that is needed before an exchange. When that fails the node is given
  /// up with a notice.
  void Prepare(TLanExchange& exchange);

  /// Sends once, if the caller has the wait broken off after kLanAnswerTime. A request that is not answered stays so;
  /// the session is then opened anew for the next one, unless Prepare has done so. Where that fails, or the new
  /// session's first request is not answered either, the node is given up with a notice, and every later exchange fails
  /// at once.
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
  const std::string name_;  ///< for messages
  std::function<TClock::time_point()> now_;
  TWay way_{};
  VelLanSession* session_ = nullptr;
  TClock::time_point lastAnswer_;
  bool lostBefore_ = false;  ///< the latest request had no answer
  bool givenUp_ = false;
};

}  // namespace velhost
