// A fake BMC on the loopback interface that can misbehave, which ipmi_sim cannot. It knows no password: with cipher
// suite 0, where nothing is signed or encrypted, it can serve; with any other it is an impostor.
#pragma once

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cstdint>
#include <cstring>
#include <functional>
#include <stdexcept>
#include <thread>
#include <vector>

#include "tests/support/namespaces.h"

namespace tests {

using TBytes = std::vector<std::uint8_t>;

/// IPv4, and IPv6 if this machine has it.
inline std::vector<int> LoopbackFamilies() {
  const int descriptor = socket(AF_INET6, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  sockaddr_in6 address{};
  address.sin6_family = AF_INET6;
  address.sin6_addr = in6addr_loopback;
  const bool six = bind(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
  close(descriptor);
  return six ? std::vector<int>{AF_INET, AF_INET6} : std::vector<int>{AF_INET};
}

/// Sends from its own port on 127.0.0.1 or ::1 to any port there.
class TLoopbackSocket {
 public:
  explicit TLoopbackSocket(int family) : family_(family), descriptor_(socket(family, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
    sockaddr_storage address = Address(0);
    if (bind(descriptor_, reinterpret_cast<sockaddr*>(&address), Size()) != 0) throw std::runtime_error("no loopback");
  }
  ~TLoopbackSocket() { close(descriptor_); }
  TLoopbackSocket(const TLoopbackSocket&) = delete;
  TLoopbackSocket& operator=(const TLoopbackSocket&) = delete;

  int Descriptor() const { return descriptor_; }
  int Port() const {
    sockaddr_storage address{};
    socklen_t size = sizeof address;
    getsockname(descriptor_, reinterpret_cast<sockaddr*>(&address), &size);
    return PortOf(address);
  }
  void Send(const TBytes& bytes, int port) const {
    const sockaddr_storage address = Address(port);
    sendto(descriptor_, bytes.data(), bytes.size(), 0, reinterpret_cast<const sockaddr*>(&address), Size());
  }
  /// Returns the next datagram and sets the port that it came from.
  TBytes Receive(int& port) const {
    TBytes bytes(2048);
    sockaddr_storage address{};
    socklen_t size = sizeof address;
    const ssize_t got =
        recvfrom(descriptor_, bytes.data(), bytes.size(), 0, reinterpret_cast<sockaddr*>(&address), &size);
    bytes.resize(got < 0 ? 0 : static_cast<std::size_t>(got));
    port = PortOf(address);
    return bytes;
  }

 private:
  // The port is at the same offset in both families.
  static int PortOf(const sockaddr_storage& address) {
    return ntohs(reinterpret_cast<const sockaddr_in*>(&address)->sin_port);
  }
  socklen_t Size() const { return family_ == AF_INET6 ? sizeof(sockaddr_in6) : sizeof(sockaddr_in); }
  sockaddr_storage Address(int port) const {
    sockaddr_storage address{};
    auto* const four = reinterpret_cast<sockaddr_in*>(&address);
    four->sin_family = static_cast<sa_family_t>(family_);
    four->sin_port = htons(static_cast<std::uint16_t>(port));
    if (family_ == AF_INET6) {
      reinterpret_cast<sockaddr_in6*>(&address)->sin6_addr = in6addr_loopback;
    } else {
      four->sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    }
    return address;
  }

  int family_;
  int descriptor_;
};

/// Answers on its own thread from construction to destruction.
class TStandInBmc {
 public:
  explicit TStandInBmc(int family = AF_INET) : socket_(family), quit_(eventfd(0, EFD_CLOEXEC)) {
    port_ = socket_.Port();
  }
  ~TStandInBmc() {
    const std::uint64_t one = 1;
    EXPECT_EQ(write(quit_, &one, sizeof one), static_cast<ssize_t>(sizeof one));
    if (thread_.joinable()) thread_.join();
    close(quit_);
  }
  TStandInBmc(const TStandInBmc&) = delete;
  TStandInBmc& operator=(const TStandInBmc&) = delete;

  /// Called for each command of network function 0x3A, with the port that it came from; returns whether to answer it.
  /// Must be set before Start.
  std::function<bool(int clientPort)> onCommand = [](int) { return true; };
  /// Added to the command byte in the answer.
  std::uint8_t commandError = 0;

  void Start() {
    thread_ = std::thread([this] { Serve(); });
  }
  int Port() const { return port_; }
  /// How many times the client has sent its own proof of the password.
  int Proofs() const { return proofs_; }
  /// Sends an empty datagram from the BMC's address and port, as if they were forged. To be called from onCommand.
  void SendEmpty(int port) const { socket_.Send({}, port); }
  /// The number of commands of network function 0x3A received.
  int Requests() const { return requests_; }

 private:
  void Serve() {
    std::array<pollfd, 2> waiters = {{{socket_.Descriptor(), POLLIN, 0}, {quit_, POLLIN, 0}}};
    while (poll(waiters.data(), waiters.size(), -1) > 0 && (waiters[1].revents & POLLIN) == 0) {
      int client = 0;
      const TBytes request = socket_.Receive(client);
      const TBytes answer = request.size() < 16 ? TBytes() : Answer(request, client);
      if (!answer.empty()) socket_.Send(answer, client);
    }
  }

  // Byte 4 is the format: 0 for the query before any session, 6 for RMCP+.
  TBytes Answer(const TBytes& request, int client) {
    if (request[4] == 0) return Capabilities(request);
    const TBytes payload(request.begin() + 16, request.end());
    switch (request[5] & 0x3FU) {
      case 0x10: return OpenSession(payload);
      // Number, GUID, and the code that proves the password: arbitrary bytes, if the suite has such a code.
      case 0x12: return Wrapped(0x13, 0, 0, Joined({payload[0], 0, 0, 0}, console_, TBytes(signed_ ? 52 : 32, 0x5A)));
      case 0x14: ++proofs_; return Wrapped(0x15, 0, 0, Joined({payload[0], 0, 0, 0}, console_));
      default: break;
    }
    const TBytes answer = Command(payload, client);
    return answer.empty() ? answer : Wrapped(0x00, true, ++sequence_, answer);
  }

  // Get Channel Authentication Capabilities: channel 1; extended capabilities; users without a name; IPMI 2.0.
  static TBytes Capabilities(const TBytes& request) {
    const TBytes message =
        Message(TBytes(request.begin() + 14, request.end()), 0, {0x00, 1, 0x81, 0x07, 0x02, 0, 0, 0, 0});
    TBytes answer = {0x06, 0, 0xFF, 0x07, 0, 0, 0, 0, 0, 0, 0, 0, 0, static_cast<std::uint8_t>(message.size())};
    answer.insert(answer.end(), message.begin(), message.end());
    return answer;
  }

  // Accepts the three requested algorithms.
  TBytes OpenSession(const TBytes& payload) {
    console_.assign(payload.begin() + 4, payload.begin() + 8);
    sequence_ = 0;
    signed_ = payload[12] != 0;
    const TBytes managed = {0x11, 0x22, 0x33, 0x44};
    return Wrapped(
        0x11, 0, 0,
        Joined({payload[0], 0, payload[1], 0}, console_, managed, TBytes(payload.begin() + 8, payload.end())));
  }

  TBytes Command(const TBytes& message, int client) {
    const bool ours = message[1] >> 2U == 0x3A;
    if (ours) {
      ++requests_;
      if (!onCommand(client)) return {};
      return Message(message, commandError, {0x00, 0x12, 0x34, 0x56, 0x78});
    }
    // Set Session Privilege Level is answered with the level, everything else with no data.
    return Message(message, 0, message[5] == 0x3B ? TBytes{0x00, message[6]} : TBytes{0x00});
  }

  /// The answer to a message, with both of its checksums.
  static TBytes Message(const TBytes& request, std::uint8_t commandError, const TBytes& data) {
    TBytes answer = {request[3], static_cast<std::uint8_t>(request[1] + 4)};
    answer.push_back(Checksum(answer, 0));
    answer.insert(answer.end(), {request[0], request[4], static_cast<std::uint8_t>(request[5] + commandError)});
    answer.insert(answer.end(), data.begin(), data.end());
    answer.push_back(Checksum(answer, 3));
    return answer;
  }
  static std::uint8_t Checksum(const TBytes& bytes, std::size_t start) {
    std::uint8_t sum = 0;
    for (std::size_t i = start; i < bytes.size(); ++i) sum = static_cast<std::uint8_t>(sum + bytes[i]);
    return static_cast<std::uint8_t>(-sum);
  }

  /// Puts RMCP and session headers before the payload. Within a session, the header has the console's session ID.
  TBytes Wrapped(std::uint8_t type, bool inSession, std::uint8_t sequence, const TBytes& payload) const {
    return Joined({0x06, 0, 0xFF, 0x07, 0x06, type}, inSession ? console_ : TBytes(4), TBytes{sequence, 0, 0, 0},
                  TBytes{static_cast<std::uint8_t>(payload.size()), 0}, payload);
  }

  template <typename... TParts>
  static TBytes Joined(TBytes first, const TParts&... parts) {
    (first.insert(first.end(), parts.begin(), parts.end()), ...);
    return first;
  }

  TLoopbackSocket socket_;
  int quit_;
  int port_ = 0;
  TBytes console_;
  std::uint8_t sequence_ = 0;
  bool signed_ = false;
  std::atomic<int> requests_ = 0;
  std::atomic<int> proofs_ = 0;
  std::thread thread_;
};

}  // namespace tests
