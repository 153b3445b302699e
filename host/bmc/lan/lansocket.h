// The network side of a session in libFreeIPMI: the BMC's address, and the library's socket.
//
// The library binds its UDP socket and never connects it, so that the kernel hands it datagrams from
// anybody; one of length zero counts as a time-out there and makes it send its request again. It does
// not tell which descriptor the socket has either. Hence the search.
#pragma once

#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/types.h>

#include <string>
#include <vector>

namespace velhostlan {

/// Where a BMC is, resolved once, for the library and for the kernel alike.
struct TPeer {
  sockaddr_storage address{};
  socklen_t size = 0;
  std::string numeric;  ///< "ADDRESS:PORT", an IPv6 address in brackets
};

/// Looks up "HOST:PORT", an IPv6 address in brackets. The first address of a family that this machine
/// has; false when there is none.
bool Resolve(const std::string& address, TPeer& peer);

/// Finds the UDP socket that was opened since its construction. Of use while no other thread opens one.
class TSocketSearch {
 public:
  TSocketSearch();
  /// The descriptor of the one socket that is new, bound and not connected; -1 when there is none, or
  /// more than one.
  int Find() const;

 private:
  std::vector<ino_t> before_;
};

/// From now on the kernel drops what does not come from the peer's address and port, and empty
/// datagrams also from there, since an address can be forged. What had arrived before is dropped too.
/// False when the kernel refuses.
bool KeepStrangersOut(int descriptor, const TPeer& peer);

/// Takes an error that an ICMP message left on the connected socket, such as that of a host which
/// refuses what its BMC answers; else the next sending would fail for it.
void ForgetError(int descriptor);

}  // namespace velhostlan
