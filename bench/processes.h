// Other programs in a benchmark: velhost from this build, its simulated BMC, and tools for comparison.
#pragma once

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace bench {

/// The build tree that this program was built in.
inline std::string BuildFolder() {
  return std::filesystem::read_symlink("/proc/self/exe").parent_path().parent_path().string();
}
inline std::string Velhost() { return BuildFolder() + "/bin/velhost"; }
inline std::string SharedData() { return BuildFolder() + "/share/velhost"; }

/// A folder for generated files, removed together with its contents.
class TFolder {
 public:
  TFolder() {
    std::string path = (std::filesystem::temp_directory_path() / "velhost-bench-XXXXXX").string();
    if (mkdtemp(path.data()) == nullptr) throw std::runtime_error("cannot create a temporary folder");
    path_ = path;
  }
  ~TFolder() { std::filesystem::remove_all(path_); }
  TFolder(const TFolder&) = delete;
  TFolder& operator=(const TFolder&) = delete;

  /// Writes a file in the folder and returns its path.
  std::string Write(const std::string& name, const std::string& text) const {
    const std::string file = (path_ / name).string();
    std::ofstream(file) << text;
    return file;
  }

 private:
  std::filesystem::path path_;
};

/// Replaces this (forked) process by a program found via PATH. Never returns.
[[noreturn]] inline void Become(const std::vector<std::string>& command) {
  std::vector<char*> arguments;
  for (const std::string& argument : command) arguments.push_back(const_cast<char*>(argument.c_str()));
  arguments.push_back(nullptr);
  execvp(arguments[0], arguments.data());
  _exit(127);
}

/// Runs a program to completion and discards its standard output. Throws if it fails.
inline void Run(const std::vector<std::string>& command) {
  const pid_t process = fork();
  if (process == 0) {
    const int nowhere = open("/dev/null", O_RDWR);
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO}) dup2(nowhere, descriptor);
    Become(command);
  }
  int status = 0;
  waitpid(process, &status, 0);
  if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) throw std::runtime_error(command[0] + " failed");
}

/// A UDP port that was free a moment ago.
inline int FreePort() {
  const int descriptor = socket(AF_INET, SOCK_DGRAM, 0);
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  auto* const general = reinterpret_cast<sockaddr*>(&address);
  if (bind(descriptor, general, size) != 0 || getsockname(descriptor, general, &size) != 0) {
    throw std::runtime_error("no free port");
  }
  close(descriptor);
  return ntohs(address.sin_port);
}

/// Runs `velhost simulate` during its lifetime.
class TSimulator {
 public:
  static constexpr const char* kUser = "ipmiusr";
  static constexpr const char* kPassword = "test";

  explicit TSimulator(const std::string& serverFile) : port_(FreePort()) {
    std::array<int, 2> ends{};
    if (pipe(ends.data()) != 0) throw std::runtime_error("no pipe");
    process_ = fork();
    if (process_ == 0) {
      dup2(ends[1], STDOUT_FILENO);
      close(ends[0]);
      Become({Velhost(), "simulate", serverFile, "--port", std::to_string(port_)});
    }
    close(ends[1]);
    std::string printed;
    char c = 0;
    const auto serves = [&printed] { return printed.find("Press Ctrl-C to stop.") != std::string::npos; };
    while (!serves() && read(ends[0], &c, 1) == 1) printed += c;
    close(ends[0]);
    if (!serves()) throw std::runtime_error("velhost simulate did not start");
  }
  ~TSimulator() {
    kill(process_, SIGTERM);
    waitpid(process_, nullptr, 0);
  }
  TSimulator(const TSimulator&) = delete;
  TSimulator& operator=(const TSimulator&) = delete;

  /// Processor time, in seconds, of the simulated BMC: of all descendants of `velhost simulate`.
  double ProcessorTime() const {
    std::ifstream children("/proc/" + std::to_string(process_) + "/task/" + std::to_string(process_) + "/children");
    double seconds = 0;
    int found = 0;
    for (pid_t child = 0; children >> child; ++found) {
      clockid_t clock = 0;
      timespec used = {};
      if (clock_getcpuclockid(child, &clock) != 0 || clock_gettime(clock, &used) != 0) break;
      seconds += static_cast<double>(used.tv_sec) + static_cast<double>(used.tv_nsec) * 1e-9;
    }
    if (found == 0 || !children.eof()) throw std::runtime_error("the simulated BMC has gone");
    return seconds;
  }

  std::string Address() const { return "127.0.0.1:" + std::to_string(port_); }
  /// Command lines of ipmitool and ipmi-raw; `rest` is what follows the connection options.
  std::vector<std::string> Ipmitool(const std::vector<std::string>& rest) const {
    return Joined({"ipmitool", "-I", "lanplus", "-C", "3", "-H", "127.0.0.1", "-p", std::to_string(port_), "-U", kUser,
                   "-P", kPassword},
                  rest);
  }
  std::vector<std::string> IpmiRaw(const std::vector<std::string>& rest) const {
    return Joined({"ipmi-raw", "-D", "LAN_2_0", "-h", Address(), "-u", kUser, "-p", kPassword, "-I", "3", "-l", "ADMIN",
                   "-W", "opensesspriv"},
                  rest);
  }

 private:
  static std::vector<std::string> Joined(std::vector<std::string> command, const std::vector<std::string>& rest) {
    command.insert(command.end(), rest.begin(), rest.end());
    return command;
  }

  int port_;
  pid_t process_ = -1;
};

}  // namespace bench
