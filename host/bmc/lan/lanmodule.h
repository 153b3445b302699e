/* The interface between velhost and its LAN module.
 *
 * The module is a separate library, velhost-lan.so, which velhost loads at run time when a service processor on the
 * network is requested. It only knows how to carry one exchange over one session. Handling refusals and losses is up
 * to velhost.
 *
 * Plain C, so that either side can be replaced on its own. Nothing here throws. A session is used by one thread at a
 * time; different threads may use different sessions. */
#ifndef VELHOST_LANMODULE_H
#define VELHOST_LANMODULE_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Incremented with every change to the interface below. */
#define VELHOST_LAN_INTERFACE 2u
/* The one function that the module exports, of type VelLanEntry. */
#define VELHOST_LAN_ENTRY "VelhostLanModule"

enum VelLanStatus {
  VEL_LAN_OK = 0,
  VEL_LAN_NO_ANSWER,     /* nothing came back at all */
  VEL_LAN_BROKEN_OFF,    /* it had answered before, but nothing came back in time; a session is dead after this */
  VEL_LAN_BAD_HOST,      /* the host name cannot be resolved */
  VEL_LAN_NO_IPMI_2_0,   /* it answers, but does not speak IPMI 2.0 */
  VEL_LAN_USER,          /* the user's name was refused */
  VEL_LAN_PASSWORD,      /* the two sides have different passwords */
  VEL_LAN_KEY,           /* the BMC knows the password, but does not derive the same keys from it */
  VEL_LAN_PRIVILEGE,     /* the privilege level was refused */
  VEL_LAN_CIPHER_SUITE,  /* the cipher suite was refused, or the opening failed in a way that may be due to it */
  VEL_LAN_OTHER_COMMAND, /* an answer came, but to a command other than the request's */
  VEL_LAN_FAILED         /* anything else */
};

/* The parameters of a session. The texts are NUL-terminated and only read during the call. */
struct VelLanOpening {
  const char* address; /* "host:port", with an IPv6 address in brackets */
  const char* user;
  const char* password;
  uint8_t privilege; /* 2 user, 3 operator, 4 admin */
  uint8_t cipherSuite;
  /* For BMCs that refuse a privilege level in the opening itself: leave it open there and request it later. */
  uint8_t leavePrivilegeOpen;
  uint32_t sessionTime;        /* milliseconds without an answer after which the session is dead */
  uint32_t retransmissionTime; /* milliseconds after which a request is retransmitted; less than sessionTime */
};

struct VelLanSession;

struct VelLanModule {
  uint32_t version; /* VELHOST_LAN_INTERFACE */
  /* Opens a session. Returns null on failure, and *status says why; `message`, of `messageSize` bytes, receives the
   * reason in words, NUL-terminated and without secrets. */
  struct VelLanSession* (*open)(const struct VelLanOpening* opening, int* status, char* message, size_t messageSize);
  /* Makes one exchange and returns a VelLanStatus. Datagrams that do not come from the BMC's address and port are
   * ignored. `request` is the command byte, then the data. `response` receives the completion code, then the data, and
   * `*size` their number of bytes, at least 1 and at most `capacity`. If a signal handler runs on the thread, the wait
   * for the answer ends with an error: that is how a stopped run ends it. */
  int (*exchange)(struct VelLanSession* session, uint8_t networkFunction, uint8_t lun, const uint8_t* request,
                  size_t requestSize, uint8_t* response, size_t capacity, size_t* size);
  /* Closes the session at the BMC, if it is still open, without waiting for an answer. */
  void (*close)(struct VelLanSession* session);
};

typedef const struct VelLanModule* (*VelLanEntry)(void); /* NOLINT(modernize-redundant-void-arg): C */

#ifdef __cplusplus
}
#endif

#endif
