/* The boundary between velhost and its LAN module.
 *
 * The module is a loadable library of its own, velhost-lan.so, which velhost loads at run time when a
 * service processor on the network is asked for. It knows one thing: how to carry one exchange over
 * one session. What to do about refusals and losses is velhost's business.
 *
 * Plain C, so that either side can be replaced alone. Nothing here throws. A session is used by one
 * thread at a time; different sessions may be used by different threads. */
#ifndef VELHOST_LANMODULE_H
#define VELHOST_LANMODULE_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Raised with every change of what stands below. */
#define VELHOST_LAN_INTERFACE 2u
/* The one function that the module exports, of type VelLanEntry. */
#define VELHOST_LAN_ENTRY "VelhostLanModule"

enum VelLanStatus {
  VEL_LAN_OK = 0,
  VEL_LAN_NO_ANSWER,     /* nothing came back at all */
  VEL_LAN_BROKEN_OFF,    /* it answered before, and now nothing came back in time; a session is dead after this */
  VEL_LAN_BAD_HOST,      /* the host's name cannot be resolved */
  VEL_LAN_NO_IPMI_2_0,   /* it answers, but has no IPMI 2.0 */
  VEL_LAN_USER,          /* the user's name was refused */
  VEL_LAN_PASSWORD,      /* either side does not have the password that the other has */
  VEL_LAN_KEY,           /* the BMC knows the password, but does not derive the same keys from it */
  VEL_LAN_PRIVILEGE,     /* the privilege level was refused */
  VEL_LAN_CIPHER_SUITE,  /* the cipher suite was refused, or the opening failed in a way that may come of it */
  VEL_LAN_OTHER_COMMAND, /* an answer came, to another command than the request's */
  VEL_LAN_FAILED         /* anything else */
};

/* What a session is opened with. The texts are NUL-terminated and only read during the call. */
struct VelLanOpening {
  const char* address; /* "host:port", an IPv6 address in brackets */
  const char* user;
  const char* password;
  uint8_t privilege; /* 2 user, 3 operator, 4 admin */
  uint8_t cipherSuite;
  /* For BMCs that refuse a privilege level in the opening itself: leave it open there and ask later. */
  uint8_t leavePrivilegeOpen;
  uint32_t sessionTime;        /* milliseconds without an answer after which the session is dead */
  uint32_t retransmissionTime; /* milliseconds after which a request is sent again; less than sessionTime */
};

struct VelLanSession;

struct VelLanModule {
  uint32_t version; /* VELHOST_LAN_INTERFACE */
  /* Null on failure, and *status says why; `message`, of `messageSize` bytes, gets the reason in
   * words, NUL-terminated and without secrets. */
  struct VelLanSession* (*open)(const struct VelLanOpening* opening, int* status, char* message, size_t messageSize);
  /* One exchange. Once a session is open, only datagrams from the BMC's address and port are looked
   * at. `request` is the command byte and then the data. `response` gets the completion
   * code and then the data, `*size` their number, at least 1 and never more than `capacity`. The wait
   * for the answer is broken off with an error when a signal handler has run on the thread: that is
   * how a stopped run ends it. */
  int (*exchange)(struct VelLanSession* session, uint8_t networkFunction, uint8_t lun, const uint8_t* request,
                  size_t requestSize, uint8_t* response, size_t capacity, size_t* size);
  /* Ends the session at the BMC, if it still stands, without waiting for an answer. */
  void (*close)(struct VelLanSession* session);
};

typedef const struct VelLanModule* (*VelLanEntry)(void); /* NOLINT(modernize-redundant-void-arg): C */

#ifdef __cplusplus
}
#endif

#endif
