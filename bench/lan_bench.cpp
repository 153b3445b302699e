// What the LAN transport adds to the library under it: the same register reads against the same
// simulated BMC, once in a bare loop over the LAN module, once through OpenLan.
//
// lan_bench [COMMANDS], 2000 a round unless given. Elapsed time per command, in turn over eleven
// rounds, medians; simulator and client share the machine. Needs ipmi_sim (package openipmi).
#include <dlfcn.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "bench/benchsupport.h"
#include "host/serviceprocessor/lan/lanclient.h"

namespace {

using namespace NKROVEL20;
using TClock = std::chrono::steady_clock;

constexpr int kRounds = 11;
constexpr int kPort = 29623;

std::string BuildFolder() {
  return std::filesystem::read_symlink("/proc/self/exe").parent_path().parent_path().string();
}

/// `velhost simulate` for as long as it lives.
class TSimulator {
 public:
  TSimulator() {
    std::array<int, 2> ends{};
    if (pipe(ends.data()) != 0) throw std::runtime_error("no pipe");
    process_ = fork();
    if (process_ == 0) {
      dup2(ends[1], STDOUT_FILENO);
      close(ends[0]);
      const std::string velhost = BuildFolder() + "/bin/velhost";
      const std::string server = BuildFolder() + "/share/velhost/servers/demo.toml";
      execl(velhost.c_str(), "velhost", "simulate", server.c_str(), "--port", std::to_string(kPort).c_str(), nullptr);
      _exit(127);
    }
    close(ends[1]);
    std::string printed;
    char c = 0;
    while (printed.find("Ctrl-C ends it.") == std::string::npos && read(ends[0], &c, 1) == 1) printed += c;
    close(ends[0]);
    if (printed.empty()) throw std::runtime_error("velhost simulate did not start");
  }
  ~TSimulator() {
    kill(process_, SIGTERM);
    waitpid(process_, nullptr, 0);
  }
  TSimulator(const TSimulator&) = delete;
  TSimulator& operator=(const TSimulator&) = delete;

 private:
  pid_t process_ = -1;
};

/// A session of the module's own, used on this thread.
class TBareSession {
 public:
  explicit TBareSession(const std::string& moduleFile) {
    void* const library = dlopen(moduleFile.c_str(), RTLD_NOW);
    if (library == nullptr) throw std::runtime_error("no LAN module");
    module_ = reinterpret_cast<VelLanEntry>(dlsym(library, VELHOST_LAN_ENTRY))();
    const std::string address = "127.0.0.1:" + std::to_string(kPort);
    const VelLanOpening opening = {address.c_str(), "ipmiusr", "test", 4, 3, 1, 15'000, 14'999};
    std::array<char, 128> message{};
    int status = VEL_LAN_OK;
    session_ = module_->open(&opening, &status, message.data(), message.size());
    if (session_ == nullptr) throw std::runtime_error(message.data());
  }
  ~TBareSession() { module_->close(session_); }
  TBareSession(const TBareSession&) = delete;
  TBareSession& operator=(const TBareSession&) = delete;

  void ReadRegister() {
    constexpr std::array<std::uint8_t, 5> kRequest = {0x62, 0x00, 0x0F, 0x00, 0x08};
    std::array<std::uint8_t, 256> response{};
    std::size_t size = 0;
    const int status =
        module_->exchange(session_, 0x3A, 0, kRequest.data(), kRequest.size(), response.data(), response.size(), &size);
    if (status != VEL_LAN_OK || size < 1) throw std::runtime_error("no answer");
  }

 private:
  const VelLanModule* module_ = nullptr;
  VelLanSession* session_ = nullptr;
};

void ReadRegister(IServiceProcessor& processor, const TStopSignal& stop) {
  TIPMICommandBuffer buffer(0x3A, 0x62, 4);
  buffer[10] = 0x0F;
  buffer[12] = 0x08;
  int length = 256;
  if (!processor.SendIpmi(0, buffer, length, stop)) throw std::runtime_error("no answer");
}

double SecondsPer(int commands, const std::function<void()>& command) {
  const auto start = TClock::now();
  for (int i = 0; i < commands; ++i) command();
  return std::chrono::duration<double>(TClock::now() - start).count() / commands;
}

double Median(std::vector<double> values) {
  std::nth_element(values.begin(), values.begin() + kRounds / 2, values.end());
  return values[kRounds / 2];
}

void Run(int commands) {
  const TSimulator simulator;
  const std::string modules = BuildFolder() + "/lib/velhost/modules";
  TBareSession bare(modules + "/" + kLanModuleFile);
  TLanOptions options;
  options.host = "127.0.0.1";
  options.port = kPort;
  options.user = "ipmiusr";
  options.password = "test";
  const TStopSignal stop;
  const auto processor = OpenLan({options}, stop, {modules});
  std::vector<double> bareTimes;
  std::vector<double> fullTimes;
  for (int round = 0; round < kRounds; ++round) {
    bareTimes.push_back(SecondsPer(commands, [&bare] { bare.ReadRegister(); }));
    fullTimes.push_back(SecondsPer(commands, [&processor, &stop] { ReadRegister(*processor, stop); }));
  }
  const double bareTime = Median(bareTimes);
  const double fullTime = Median(fullTimes);
  bench::Report("LAN, one command", "bare loop over the library", fullTime / bareTime,
                bench::Microseconds(fullTime) + " against " + bench::Microseconds(bareTime));
}

}  // namespace

int main(int argc, char** argv) {
  try {
    Run(argc > 1 ? std::max(1, std::atoi(argv[1])) : 2000);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "lan_bench: %s\n", error.what());
    return 1;
  }
  return 0;
}
