// The LAN module, implemented with libFreeIPMI. It is built as velhost-lan.so, and nothing else links libFreeIPMI,
// which is under GPL version 3 or later.
#include <freeipmi/api/ipmi-api.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <exception>
#include <mutex>
#include <utility>

#include "host/bmc/lan/lanmodule.h"
#include "host/bmc/lan/lansocket.h"

struct VelLanSession {
  ipmi_ctx_t context;
  int socket;  ///< owned by the library
};

namespace {

constexpr std::size_t kMaxMessage = 1024;
constexpr std::size_t kCommandSize = 1;

int StatusOf(int error) {
  switch (error) {
    case IPMI_ERR_CONNECTION_TIMEOUT:
    case IPMI_ERR_MESSAGE_TIMEOUT: return VEL_LAN_NO_ANSWER;
    case IPMI_ERR_SESSION_TIMEOUT: return VEL_LAN_BROKEN_OFF;
    case IPMI_ERR_HOSTNAME_INVALID: return VEL_LAN_BAD_HOST;
    case IPMI_ERR_IPMI_2_0_UNAVAILABLE: return VEL_LAN_NO_IPMI_2_0;
    case IPMI_ERR_USERNAME_INVALID: return VEL_LAN_USER;
    case IPMI_ERR_PASSWORD_INVALID:
    case IPMI_ERR_PASSWORD_VERIFICATION_TIMEOUT: return VEL_LAN_PASSWORD;
    case IPMI_ERR_K_G_INVALID: return VEL_LAN_KEY;
    case IPMI_ERR_PRIVILEGE_LEVEL_INSUFFICIENT:
    case IPMI_ERR_PRIVILEGE_LEVEL_CANNOT_BE_OBTAINED: return VEL_LAN_PRIVILEGE;
    // BMCs differ in how they refuse an unknown suite; some just stop answering.
    case IPMI_ERR_CIPHER_SUITE_ID_UNAVAILABLE:
    case IPMI_ERR_BAD_RMCPPLUS_STATUS_CODE:
    case IPMI_ERR_IPMI_ERROR: return VEL_LAN_CIPHER_SUITE;
    default: return VEL_LAN_FAILED;
  }
}

VelLanSession* Fail(int reason, const char* why, int* status, char* message, std::size_t messageSize) {
  *status = reason;
  std::snprintf(message, messageSize, "%s", why);
  return nullptr;
}

/// A library context; its session is closed unless the context is released.
class TContext {
 public:
  TContext() : context_(ipmi_ctx_create()) {}
  ~TContext() {
    if (context_ == nullptr) return;
    if (open_) ipmi_ctx_close(context_);
    ipmi_ctx_destroy(context_);
  }
  TContext(const TContext&) = delete;
  TContext& operator=(const TContext&) = delete;

  bool Open(const VelLanOpening& opening, const char* address) {
    const unsigned int workarounds =
        opening.leavePrivilegeOpen != 0 ? IPMI_WORKAROUND_FLAGS_OUTOFBAND_2_0_OPEN_SESSION_PRIVILEGE : 0;
    open_ = context_ != nullptr &&
            ipmi_ctx_open_outofband_2_0(context_, address, opening.user, opening.password, nullptr, 0,
                                        opening.privilege, opening.cipherSuite, opening.sessionTime,
                                        opening.retransmissionTime, workarounds, IPMI_FLAGS_DEFAULT) == 0;
    return open_;
  }
  int Error() const { return context_ == nullptr ? IPMI_ERR_OUT_OF_MEMORY : ipmi_ctx_errnum(context_); }
  ipmi_ctx_t Release() { return std::exchange(context_, nullptr); }

 private:
  ipmi_ctx_t context_;
  bool open_ = false;
};

// One opening at a time: the library's socket is recognised by being new.
VelLanSession* TryOpen(const VelLanOpening& opening, int* status, char* message, std::size_t messageSize) {
  static std::mutex alone;
  const std::lock_guard lock(alone);
  velhostlan::TPeer peer;
  if (!velhostlan::Resolve(opening.address, peer)) {
    return Fail(VEL_LAN_BAD_HOST, ipmi_ctx_strerror(IPMI_ERR_HOSTNAME_INVALID), status, message, messageSize);
  }
  const velhostlan::TSocketSearch search;
  TContext context;
  if (!context.Open(opening, peer.numeric.c_str())) {
    const int error = context.Error();
    return Fail(StatusOf(error), ipmi_ctx_strerror(error), status, message, messageSize);
  }
  const int socket = search.Find();
  if (socket < 0 || !velhostlan::KeepStrangersOut(socket, peer)) {
    return Fail(VEL_LAN_FAILED, "the session's socket cannot be restricted to the BMC", status, message, messageSize);
  }
  auto* const session = new VelLanSession{nullptr, socket};
  session->context = context.Release();
  *status = VEL_LAN_OK;
  return session;
}

VelLanSession* Open(const VelLanOpening* opening, int* status, char* message, std::size_t messageSize) {
  try {
    return TryOpen(*opening, status, message, messageSize);
  } catch (const std::exception& error) {
    return Fail(VEL_LAN_FAILED, error.what(), status, message, messageSize);
  }
}

int Exchange(VelLanSession* session, std::uint8_t networkFunction, std::uint8_t lun, const std::uint8_t* request,
             std::size_t requestSize, std::uint8_t* response, std::size_t capacity, std::size_t* size) {
  // The library's answer starts with the command byte, and never exceeds the buffer.
  std::array<std::uint8_t, kMaxMessage> answer{};
  velhostlan::ForgetError(session->socket);
  const int length = ipmi_cmd_raw(session->context, lun, networkFunction, request,
                                  static_cast<unsigned int>(requestSize), answer.data(), answer.size());
  if (length < 0) return StatusOf(ipmi_ctx_errnum(session->context));
  const auto answered = std::min(static_cast<std::size_t>(length), answer.size());
  if (answered <= kCommandSize || capacity == 0) return VEL_LAN_FAILED;
  // The library only checks session, sequence number and integrity code, and does not expose the answer's network
  // function.
  if (requestSize == 0 || answer[0] != request[0]) return VEL_LAN_OTHER_COMMAND;
  *size = std::min(answered - kCommandSize, capacity);
  std::memcpy(response, answer.data() + kCommandSize, *size);
  return VEL_LAN_OK;
}

void Close(VelLanSession* session) {
  ipmi_ctx_close(session->context);
  ipmi_ctx_destroy(session->context);
  delete session;
}

constexpr VelLanModule kModule = {VELHOST_LAN_INTERFACE, Open, Exchange, Close};

}  // namespace

extern "C" __attribute__((visibility("default"))) const VelLanModule* VelhostLanModule(void);
const VelLanModule* VelhostLanModule(void) { return &kModule; }
