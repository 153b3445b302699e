#include "host/bmc/lan/lanlink.h"

#include <utility>

#include "host/base/hosterror.h"
#include "host/base/text.h"

namespace velhost {

namespace {

using std::chrono::milliseconds;

// The module requires it to be less than the session time.
constexpr milliseconds kNoRetransmission = kLanSessionTime - milliseconds(1);

bool IsSilence(int status) { return status == VEL_LAN_NO_ANSWER || status == VEL_LAN_BROKEN_OFF; }

/// Some BMCs refuse a cipher suite by not answering.
bool MayBeTheCipherSuite(int status) { return status == VEL_LAN_CIPHER_SUITE || status == VEL_LAN_BROKEN_OFF; }

std::string ListOf(const std::vector<int>& suites) {
  std::vector<std::string> numbers;
  for (const int suite : suites) numbers.push_back(std::to_string(suite));
  return Listed(numbers, " or ");
}

/// What a suite's algorithms leave unprotected; empty if it has all three.
std::string WeaknessOf(int suite) {
  switch (suite) {
    case 0:
      return "checks no password and protects nothing: anybody on the network can impersonate the BMC, and read and "
             "change what is exchanged";
    case 1:
    case 6:
    case 15: return "protects only the login: anybody between here and the BMC can read and change what is exchanged";
    case 2:
    case 7:
    case 11:
    case 16: return "does not encrypt: anybody between here and the BMC can read what is exchanged";
    default: return {};
  }
}

std::string UserOf(const TLanOptions& options) {
  return options.user.empty() ? "the anonymous user" : "user '" + options.user + "'";
}

}  // namespace

TLanLink::TLanLink(const VelLanModule& module, TLanOptions options, std::function<TClock::time_point()> now)
    : module_(module), options_(std::move(options)), name_("lan:" + AddressOf(options_)), now_(std::move(now)) {}

TLanLink::~TLanLink() { Close(); }

void TLanLink::Close() {
  if (session_ != nullptr) module_.close(std::exchange(session_, nullptr));
}

std::vector<std::string> TLanLink::Open() {
  FindWay();
  const TOutcome outcome = OpenForUse();
  if (outcome.session == nullptr) ThrowRefused(outcome);
  return Weaknesses();
}

std::vector<std::string> TLanLink::Weaknesses() const {
  std::vector<std::string> found;
  const std::string used = std::to_string(way_.cipherSuite);
  const std::string first = std::to_string(options_.cipherSuites.front());
  if (used != first) {
    found.push_back(name_ + ": no session with cipher suite " + first + ", so the weaker " + used +
                    " is used; an attacker can cause this (--cipher-suite " + first +
                    " allows no other, --cipher-suite " + used + " silences this warning)");
  }
  const std::string weakness = WeaknessOf(way_.cipherSuite);
  if (!weakness.empty()) found.push_back(name_ + ": cipher suite " + used + " " + weakness);
  return found;
}

std::string TLanLink::SessionText() const {
  return name_ + ": session open, cipher suite " + std::to_string(way_.cipherSuite) + ", privilege " +
         NameOf(options_.privilege);
}

TLanLink::TOutcome TLanLink::TryOpen(const TWay& way, milliseconds time, milliseconds retransmission) {
  const std::string address = AddressOf(options_);
  VelLanOpening opening = {};
  opening.address = address.c_str();
  opening.user = options_.user.c_str();
  opening.password = options_.password.Text();
  opening.privilege = static_cast<std::uint8_t>(options_.privilege);
  opening.cipherSuite = way.cipherSuite;
  opening.leavePrivilegeOpen = way.leavePrivilegeOpen ? 1 : 0;
  opening.sessionTime = static_cast<std::uint32_t>(time.count());
  opening.retransmissionTime = static_cast<std::uint32_t>(retransmission.count());
  std::array<char, 128> message{};
  TOutcome outcome;
  outcome.session = module_.open(&opening, &outcome.status, message.data(), message.size());
  outcome.message = message.data();
  return outcome;
}

/// Tries a plain opening and, if the privilege is refused, one that leaves the privilege open at first. The second
/// one gets further, so its refusal is reported unless it is unspecific.
TLanLink::TOutcome TLanLink::TryBothWays(std::uint8_t cipherSuite, TWay& way) {
  way = {cipherSuite, false};
  TOutcome outcome = TryOpen(way, kLanProbeTime, kLanProbeRetransmission);
  if (outcome.session != nullptr || outcome.status != VEL_LAN_PRIVILEGE) return outcome;
  way.leavePrivilegeOpen = true;
  TOutcome second = TryOpen(way, kLanProbeTime, kLanProbeRetransmission);
  return second.session == nullptr && second.status == VEL_LAN_FAILED ? outcome : second;
}

void TLanLink::FindWay() {
  TOutcome refusal;
  for (const int suite : options_.cipherSuites) {
    TOutcome outcome = TryBothWays(static_cast<std::uint8_t>(suite), way_);
    if (outcome.session != nullptr) {
      module_.close(outcome.session);
      return;
    }
    refusal = std::move(outcome);
    if (!MayBeTheCipherSuite(refusal.status)) break;
  }
  ThrowRefused(refusal);
}

/// Uses the times of the run, during which nothing is retransmitted; hence the second try, in case a packet was lost.
TLanLink::TOutcome TLanLink::OpenForUse() {
  TOutcome outcome = TryOpen(way_, kLanSessionTime, kNoRetransmission);
  if (IsSilence(outcome.status)) outcome = TryOpen(way_, kLanSessionTime, kNoRetransmission);
  session_ = outcome.session;
  lastAnswer_ = now_();
  return outcome;
}

/// Checks with the short times whether the BMC still answers before using those of the run.
TLanLink::TOutcome TLanLink::Reopen() {
  TOutcome probe = TryOpen(way_, kLanProbeTime, kLanProbeRetransmission);
  if (probe.session == nullptr) return probe;
  module_.close(probe.session);
  return OpenForUse();
}

std::string TLanLink::Describe(const TOutcome& outcome) const {
  switch (outcome.status) {
    case VEL_LAN_NO_ANSWER: return "no answer; is this the address of a BMC, with IPMI over LAN enabled?";
    case VEL_LAN_BROKEN_OFF: return "the BMC stopped answering while the session was being opened";
    case VEL_LAN_BAD_HOST: return "the host name cannot be resolved";
    case VEL_LAN_NO_IPMI_2_0: return "the BMC does not support IPMI 2.0 here";
    case VEL_LAN_USER: return "the BMC refuses " + UserOf(options_);
    case VEL_LAN_PASSWORD:
      return "the password of " + UserOf(options_) +
             " is not the BMC's; either it is wrong, or an impostor is answering";
    case VEL_LAN_KEY:
      return "the BMC uses a key that does not come from the password; either it has a key of its own (K_g), which "
             "velhost cannot use, or an impostor is answering";
    case VEL_LAN_PRIVILEGE:
      return "the BMC refuses " + UserOf(options_) + " the privilege level " + NameOf(options_.privilege) +
             "; use --privilege for a lower one";
    case VEL_LAN_CIPHER_SUITE:
      return "the BMC does not accept cipher suite " + ListOf(options_.cipherSuites) + " (" + outcome.message +
             "); choose one that it accepts with --cipher-suite N";
    default: return outcome.message;
  }
}

void TLanLink::ThrowRefused(const TOutcome& outcome) const {
  const bool denied = outcome.status == VEL_LAN_USER || outcome.status == VEL_LAN_PASSWORD ||
                      outcome.status == VEL_LAN_KEY || outcome.status == VEL_LAN_PRIVILEGE;
  throw THostError(denied ? EFailure::kRefused : EFailure::kUnreachable, name_ + ": " + Describe(outcome));
}

bool TLanLink::IsReady() const { return givenUp_ || (session_ != nullptr && now_() - lastAnswer_ < kLanIdleTime); }

void TLanLink::Exchange(TLanExchange& exchange) {
  Prepare(exchange);
  if (givenUp_) return;
  const int status =
      module_.exchange(session_, exchange.networkFunction, exchange.lun, exchange.request.data(),
                       exchange.request.size(), exchange.response.data(), exchange.response.size(), &exchange.size);
  if (status == VEL_LAN_OTHER_COMMAND) {
    exchange.warning = name_ + ": an answer to a command other than the one requested was ignored";
  }
  if (status != VEL_LAN_OK) return Lose(exchange);
  exchange.answered = true;
  lostBefore_ = false;
  lastAnswer_ = now_();
}

void TLanLink::Prepare(TLanExchange& exchange) {
  if (IsReady()) return;
  Close();
  const TOutcome outcome = Reopen();
  if (outcome.session == nullptr) GiveUp(exchange, "it could not be opened again: " + Describe(outcome));
}

void TLanLink::Lose(TLanExchange& exchange) {
  Close();
  if (lostBefore_) GiveUp(exchange, "requests are not answered");
  lostBefore_ = true;
}

void TLanLink::GiveUp(TLanExchange& exchange, const std::string& why) {
  givenUp_ = true;
  exchange.notice = name_ + ": the BMC stopped answering during the run, and the session is lost: " + why;
}

}  // namespace velhost
