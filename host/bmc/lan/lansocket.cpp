#include "host/bmc/lan/lansocket.h"

#include <dirent.h>
#include <linux/filter.h>
#include <netdb.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <utility>

#include "host/base/descriptor.h"

namespace velhostlan {

namespace {

/// A socket address of any family, as the system calls take it.
template <typename TStorage>
auto* General(TStorage* storage) {
  return reinterpret_cast<std::conditional_t<std::is_const_v<TStorage>, const sockaddr, sockaddr>*>(storage);
}

bool HasFamily(int family) {
  return static_cast<bool>(velhost::TDescriptor(socket(family, SOCK_DGRAM | SOCK_CLOEXEC, 0)));
}

std::string NumericAddress(const addrinfo& found) {
  std::array<char, NI_MAXHOST> host{};
  std::array<char, NI_MAXSERV> port{};
  if (getnameinfo(found.ai_addr, found.ai_addrlen, host.data(), host.size(), port.data(), port.size(),
                  NI_NUMERICHOST | NI_NUMERICSERV) != 0) {
    return {};
  }
  const std::string name = host.data();
  return (found.ai_family == AF_INET6 ? "[" + name + "]" : name) + ":" + port.data();
}

int SocketOption(int descriptor, int option) {
  int value = 0;
  socklen_t size = sizeof value;
  return getsockopt(descriptor, SOL_SOCKET, option, &value, &size) == 0 ? value : -1;
}

bool IsBoundUdpSocket(int descriptor) {
  if (SocketOption(descriptor, SO_PROTOCOL) != IPPROTO_UDP) return false;
  sockaddr_storage address{};
  socklen_t size = sizeof address;
  if (getpeername(descriptor, General(&address), &size) == 0) return false;
  size = sizeof address;
  if (getsockname(descriptor, General(&address), &size) != 0) return false;
  // The port is at the same offset in both families.
  return reinterpret_cast<const sockaddr_in*>(&address)->sin_port != 0;
}

/// The descriptors of sockets that may belong to a session, each with the socket's inode number.
std::vector<std::pair<int, ino_t>> Candidates() {
  std::vector<std::pair<int, ino_t>> found;
  const std::unique_ptr<DIR, int (*)(DIR*)> folder(opendir("/proc/self/fd"), &closedir);
  while (const dirent* const entry = folder ? readdir(folder.get()) : nullptr) {
    const int descriptor = std::atoi(entry->d_name);
    struct stat status = {};
    if (fstat(descriptor, &status) != 0 || !S_ISSOCK(status.st_mode)) continue;
    if (IsBoundUdpSocket(descriptor)) found.emplace_back(descriptor, status.st_ino);
  }
  return found;
}

/// Attaches a kernel filter to the socket, which sees datagrams from their UDP header on.
bool DropEmptyDatagrams(int descriptor) {
  constexpr std::uint32_t kHeader = 8;
  constexpr std::uint32_t kAll = 0xFFFFFFFF;
  std::array<sock_filter, 4> program = {{BPF_STMT(BPF_LD | BPF_W | BPF_LEN, 0),
                                         BPF_JUMP(BPF_JMP | BPF_JGT | BPF_K, kHeader, 0, 1),
                                         BPF_STMT(BPF_RET | BPF_K, kAll), BPF_STMT(BPF_RET | BPF_K, 0)}};
  const sock_fprog filter = {program.size(), program.data()};
  return setsockopt(descriptor, SOL_SOCKET, SO_ATTACH_FILTER, &filter, sizeof filter) == 0;
}

}  // namespace

bool Resolve(const std::string& address, TPeer& peer) {
  const std::size_t colon = address.rfind(':');
  if (colon == std::string::npos) return false;
  const bool bracketed = address.starts_with('[') && colon > 1 && address[colon - 1] == ']';
  const std::string host = bracketed ? address.substr(1, colon - 2) : address.substr(0, colon);
  addrinfo hints = {};
  hints.ai_socktype = SOCK_DGRAM;
  hints.ai_flags = AI_NUMERICSERV;
  addrinfo* all = nullptr;
  if (getaddrinfo(host.c_str(), address.c_str() + colon + 1, &hints, &all) != 0) return false;
  const std::unique_ptr<addrinfo, void (*)(addrinfo*)> owner(all, &freeaddrinfo);
  while (all != nullptr && !HasFamily(all->ai_family)) all = all->ai_next;
  if (all == nullptr || all->ai_addrlen > sizeof peer.address) return false;
  std::memcpy(&peer.address, all->ai_addr, all->ai_addrlen);
  peer.size = all->ai_addrlen;
  peer.numeric = NumericAddress(*all);
  return !peer.numeric.empty();
}

TSocketSearch::TSocketSearch() {
  for (const auto& [descriptor, number] : Candidates()) before_.push_back(number);
}

int TSocketSearch::Find() const {
  int found = -1;
  for (const auto& [descriptor, number] : Candidates()) {
    if (std::find(before_.begin(), before_.end(), number) != before_.end()) continue;
    if (found >= 0) return -1;
    found = descriptor;
  }
  return found;
}

bool KeepStrangersOut(int descriptor, const TPeer& peer) {
  if (!DropEmptyDatagrams(descriptor)) return false;
  if (connect(descriptor, General(&peer.address), peer.size) != 0) return false;
  char byte = 0;
  while (recv(descriptor, &byte, sizeof byte, MSG_DONTWAIT) >= 0) continue;
  return true;
}

void ForgetError(int descriptor) { SocketOption(descriptor, SO_ERROR); }

}  // namespace velhostlan
