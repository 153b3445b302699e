// `velhost simulate` in a separate process, for as long as the object lives.
#pragma once

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>

#include "host/velhost/verbs.h"
#include "tests/support/namespaces.h"
#include "tests/support/temporaryfolder.h"

namespace tests {

/// Goes at the beginning of a test: without the package openipmi there is nothing to run against.
#define SKIP_WITHOUT_IPMI_SIM()                                            \
  if (std::system("command -v ipmi_sim >/dev/null 2>&1") != 0) {           \
    GTEST_SKIP() << "ipmi_sim (Debian package openipmi) is not installed"; \
  }

/// A socket of `type` bound to a port of 127.0.0.1; port 0 means any free one.
class TBoundPort {
 public:
  explicit TBoundPort(int type, int port = 0) : descriptor_(socket(AF_INET, type | SOCK_CLOEXEC, 0)) {
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    sockaddr generic = {};
    std::memcpy(&generic, &address, sizeof address);
    socklen_t size = sizeof generic;
    bound_ = bind(descriptor_, &generic, size) == 0 && getsockname(descriptor_, &generic, &size) == 0;
    std::memcpy(&address, &generic, sizeof address);
    port_ = ntohs(address.sin_port);
    if (type == SOCK_STREAM) listen(descriptor_, 1);
  }
  ~TBoundPort() { close(descriptor_); }
  TBoundPort(const TBoundPort&) = delete;
  TBoundPort& operator=(const TBoundPort&) = delete;
  bool IsBound() const { return bound_; }
  int Port() const { return port_; }

 private:
  int descriptor_;
  bool bound_ = false;
  int port_ = 0;
};

inline int FreePort(int type = SOCK_DGRAM) { return TBoundPort(type).Port(); }
inline bool IsFree(int port, int type = SOCK_DGRAM) { return TBoundPort(type, port).IsBound(); }

class TRunningSimulator {
 public:
  /// Starts it with a file of this content, and waits until it has printed its lines or ended.
  explicit TRunningSimulator(const std::string& content, int node = 0, std::optional<int> serialPort = std::nullopt) {
    arguments_.file = folder_.Write("server.toml", content);
    arguments_.node = node;
    arguments_.port = FreePort();
    arguments_.serialPort = serialPort;
    std::filesystem::create_directory(folder_.Path() / "tmp");
    Start();
  }
  ~TRunningSimulator() {
    if (process_ > 0) End(SIGTERM);
  }
  TRunningSimulator(const TRunningSimulator&) = delete;
  TRunningSimulator& operator=(const TRunningSimulator&) = delete;

  int Port() const { return arguments_.port; }
  const std::string& File() const { return arguments_.file; }
  const std::string& Printed() const { return printed_; }
  /// Whether the folder for its own files is empty.
  bool LeftNoFiles() const { return std::filesystem::is_empty(folder_.Path() / "tmp"); }

  /// Sends the signal; returns the exit status, or minus the signal that ended it.
  int End(int signal) {
    kill(process_, signal);
    int status = 0;
    waitpid(process_, &status, 0);
    process_ = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
  }

 private:
  void Start() {
    int ends[2] = {-1, -1};
    if (pipe(ends) != 0) throw std::runtime_error("no pipe");
    std::fflush(stdout);  // or the child would print what is buffered, into a pipe that is closed by then
    process_ = fork();
    if (process_ == 0) {
      dup2(ends[1], STDOUT_FILENO);
      close(ends[0]);
      close(ends[1]);
      Serve();
    }
    close(ends[1]);
    char c = 0;
    while (printed_.find("Press Ctrl-C to stop.\n") == std::string::npos && read(ends[0], &c, 1) == 1) printed_ += c;
    close(ends[0]);
  }
  [[noreturn]] void Serve() {
    setenv("TMPDIR", (folder_.Path() / "tmp").c_str(), 1);
    int status = 70;
    try {
      status = static_cast<int>(SimulateCommand(arguments_, TInstallation(VELHOST_PROGRAM_DIR)));
    } catch (const THostError& error) {
      std::cerr << error.what() << "\n";
      status = static_cast<int>(StatusOf(error.Kind()));
    }
    std::cout.flush();
    _exit(status);
  }

  TTemporaryFolder folder_;
  TSimulateArguments arguments_;
  pid_t process_ = -1;
  std::string printed_;
};

}  // namespace tests
