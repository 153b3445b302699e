// The LAN module over libFreeIPMI. Built as velhost-lan.so and nothing else links it, because
// libFreeIPMI is under GPL version 3 or later.
#include <freeipmi/api/ipmi-api.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <new>

#include "host/serviceprocessor/lan/lanmodule.h"

struct VelLanSession {
  ipmi_ctx_t context;
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
    case IPMI_ERR_PASSWORD_VERIFICATION_TIMEOUT:
    case IPMI_ERR_K_G_INVALID: return VEL_LAN_PASSWORD;
    case IPMI_ERR_PRIVILEGE_LEVEL_INSUFFICIENT:
    case IPMI_ERR_PRIVILEGE_LEVEL_CANNOT_BE_OBTAINED: return VEL_LAN_PRIVILEGE;
    // BMCs differ in how they refuse a suite that they do not know; some only break off.
    case IPMI_ERR_CIPHER_SUITE_ID_UNAVAILABLE:
    case IPMI_ERR_BAD_RMCPPLUS_STATUS_CODE:
    case IPMI_ERR_IPMI_ERROR: return VEL_LAN_CIPHER_SUITE;
    default: return VEL_LAN_FAILED;
  }
}

VelLanSession* Refuse(ipmi_ctx_t context, int* status, char* message, std::size_t messageSize) {
  const int error = context == nullptr ? IPMI_ERR_OUT_OF_MEMORY : ipmi_ctx_errnum(context);
  *status = StatusOf(error);
  std::snprintf(message, messageSize, "%s", ipmi_ctx_strerror(error));
  if (context != nullptr) ipmi_ctx_destroy(context);
  return nullptr;
}

VelLanSession* Open(const VelLanOpening* opening, int* status, char* message, std::size_t messageSize) {
  ipmi_ctx_t context = ipmi_ctx_create();
  if (context == nullptr) return Refuse(context, status, message, messageSize);
  const unsigned int workarounds =
      opening->leavePrivilegeOpen != 0 ? IPMI_WORKAROUND_FLAGS_OUTOFBAND_2_0_OPEN_SESSION_PRIVILEGE : 0;
  if (ipmi_ctx_open_outofband_2_0(context, opening->address, opening->user, opening->password, nullptr, 0,
                                  opening->privilege, opening->cipherSuite, opening->sessionTime,
                                  opening->retransmissionTime, workarounds, IPMI_FLAGS_DEFAULT) < 0) {
    return Refuse(context, status, message, messageSize);
  }
  auto* const session = new (std::nothrow) VelLanSession{context};
  if (session == nullptr) {
    ipmi_ctx_close(context);
    return Refuse(context, status, message, messageSize);
  }
  *status = VEL_LAN_OK;
  return session;
}

int Exchange(VelLanSession* session, std::uint8_t networkFunction, std::uint8_t lun, const std::uint8_t* request,
             std::size_t requestSize, std::uint8_t* response, std::size_t capacity, std::size_t* size) {
  // The library answers with the command byte first, and fills no more than it is given.
  std::array<std::uint8_t, kMaxMessage> answer{};
  const int length = ipmi_cmd_raw(session->context, lun, networkFunction, request,
                                  static_cast<unsigned int>(requestSize), answer.data(), answer.size());
  if (length < 0) return StatusOf(ipmi_ctx_errnum(session->context));
  const auto answered = std::min(static_cast<std::size_t>(length), answer.size());
  if (answered <= kCommandSize || capacity == 0) return VEL_LAN_FAILED;
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
