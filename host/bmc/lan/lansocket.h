// The network side of a libFreeIPMI session: the BMC's address, and the library's socket.
//
// The library binds its UDP socket but never connects it, so the kernel delivers datagrams from anyone; it takes an
// empty one for a time-out and retransmits its request. Nor does it reveal the socket's descriptor, hence the search.
#pragma once

#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/types.h>

#include <string>
#include <vector>

namespace velhostlan {

/// The address of a BMC, resolved once for both the library and the kernel.
struct TPeer {
  sockaddr_storage address{};
  socklen_t size = 0;
  std::string numeric;  ///< "ADDRESS:PORT", an IPv6 address in brackets
};

/// Resolves "HOST:PORT", with an IPv6 address in brackets, to the first address of a family that this machine
/// supports; false if there is none.
bool Resolve(const std::string& address, TPeer& peer);

/// Finds the UDP socket that was opened since its construction. Only reliable while no other thread opens one.
class TSocketSearch {
 public:
  TSocketSearch();
  /// The descriptor of the only socket that is new, bound and not connected; -1 if there is none, or more than one.
  int Find() const;

 private:
  std::vector<ino_t> before_;
};

/// Makes the kernel drop datagrams that do not come from the peer's address and port, and empty ones even from there,
/// since an address can be forged. Datagrams received before are dropped too. False if the kernel refuses.
bool KeepStrangersOut(int descriptor, const TPeer& peer);

/// Clears an error that an ICMP message left on the connected socket, for example from a host that rejects its BMC's
/// answers; otherwise the next send would fail with it.
void ForgetError(int descriptor);

}  // namespace velhostlan
