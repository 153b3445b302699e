#include "host/velhost/verbs.h"

#include <arpa/inet.h>
#include <poll.h>
#include <signal.h>
#include <sys/signalfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/base/descriptor.h"
#include "host/base/digits.h"
#include "host/base/sourcereader.h"
#include "host/base/storedbytes.h"
#include "host/base/text.h"
#include "host/bmc/record/checkedrecording.h"
#include "host/bmc/serve/servedfile.h"
#include "host/bmc/serve/servedrecording.h"
#include "host/bmc/serve/servedserver.h"
#include "host/bmc/sim/serverfile.h"
#include "host/velhost/inputs.h"
#include "host/velhost/messages.h"
#include "host/velhost/simulate/ipmisim.h"

namespace velhost {

namespace {

namespace fs = std::filesystem;
using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr const char* kProgram = "ipmi_sim";
constexpr const char* kModuleFile = "/velbmcsim.so";
constexpr milliseconds kStartingTime{10'000};
constexpr milliseconds kStartingStep{50};

/// The signals that end the command, as a descriptor to poll. They are blocked so that none interrupts the cleanup.
/// SIGPIPE is among them; a write to a closed pipe still fails.
class TEndingSignals {
 public:
  TEndingSignals() {
    sigset_t ending;
    sigemptyset(&ending);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGPIPE}) sigaddset(&ending, signal);
    sigprocmask(SIG_BLOCK, &ending, &before_);
    descriptor_ = TDescriptor(signalfd(-1, &ending, SFD_CLOEXEC));
    if (!descriptor_) {
      const int error = errno;
      sigprocmask(SIG_SETMASK, &before_, nullptr);
      throw THostError(EFailure::kDefect, std::string("signalfd: ") + std::strerror(error));
    }
  }
  ~TEndingSignals() {
    // Consumed here; otherwise they would end this process when they are unblocked.
    pollfd waiter = {descriptor_.Get(), POLLIN, 0};
    std::array<signalfd_siginfo, 1> signal{};
    while (poll(&waiter, 1, 0) == 1 && read(descriptor_.Get(), signal.data(), sizeof signal) > 0) continue;
    sigprocmask(SIG_SETMASK, &before_, nullptr);
  }
  TEndingSignals(const TEndingSignals&) = delete;
  TEndingSignals& operator=(const TEndingSignals&) = delete;
  int Descriptor() const { return descriptor_.Get(); }

 private:
  sigset_t before_;
  TDescriptor descriptor_;
};

std::string FindSimulator() {
  std::string file = FindProgram(kProgram);
  if (!file.empty()) return file;
  throw THostError(EFailure::kUnreachable,
                   "ipmi_sim is not installed; it is in the Debian package openipmi (apt install openipmi)");
}

std::string FindModule(const TInstallation& installation) {
  std::string file = installation.ModuleFolder() + kModuleFile;
  if (access(file.c_str(), R_OK) == 0) return file;
  throw THostError(
      EFailure::kUnreachable,
      "the module for ipmi_sim is not installed: " + SafeText(file) +
          "\nIt is part of the package velhost; \"cmake --build build/release --target velbmcsim\" builds it");
}

std::string CheckRecording(const TSimulateArguments& arguments, TInputs& inputs) {
  TInputReader reader(inputs, {"the recording", "simulate", EFileKind::kRecording, false}, {arguments.file});
  const TStoredBytes bytes = reader.Open(arguments.file, kLargestRecording, kLargestRecordingOfAPipe);
  const TServedRecording served(arguments.file, bytes, &reader, arguments.node);
  if (const auto warning = served.Recording().CutWarning()) SayDiagnostics({*warning});
  return served.Recording().Header().machineType;
}

std::string CheckServerFile(const TSimulateArguments& arguments, TInputs& inputs) {
  TInputReader reader(inputs, {"the server file", "simulate", EFileKind::kServerFile, false}, {arguments.file});
  const TServerFile server = ReadServerFile(arguments.file, reader);
  RefuseNotServed(ReasonNotToServe(server, arguments.node), arguments.file);
  return server.machineType;
}

/// Returns the server's machine type. Checks the file first, because ipmi_sim would not say what is wrong with it.
std::string CheckServer(const TSimulateArguments& arguments) {
  const TStopSignal stop;
  TInputs inputs(stop);
  TFileReader reader;
  return IsRecording(arguments.file, reader) ? CheckRecording(arguments, inputs) : CheckServerFile(arguments, inputs);
}

/// ipmi_sim also starts on a port that is in use, and then gets no requests.
void CheckPort(int port, int type, const char* protocol) {
  TDescriptor descriptor(socket(AF_INET, type | SOCK_CLOEXEC, 0));
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  sockaddr generic = {};
  std::memcpy(&generic, &address, sizeof address);
  // A TCP port in TIME_WAIT counts as free: ipmi_sim can use it.
  const int reuse = 1;
  if (type == SOCK_STREAM) setsockopt(descriptor.Get(), SOL_SOCKET, SO_REUSEADDR, &reuse, sizeof reuse);
  const int error = bind(descriptor.Get(), &generic, sizeof generic) == 0 ? 0 : errno;
  descriptor.Close();
  if (error == 0) return;
  const std::string place = std::string(protocol) + " port " + std::to_string(port) + " of 127.0.0.1";
  if (error == EACCES) throw THostError(EFailure::kDenied, "cannot listen on " + place + ": " + std::strerror(error));
  throw THostError(EFailure::kUnreachable, "cannot listen on " + place + ": " + std::strerror(error) +
                                               "\nUse --port or --serial-port to choose another");
}

TIpmiSimSettings SettingsOf(const TSimulateArguments& arguments, const std::string& machineType,
                            const TInstallation& installation) {
  TIpmiSimSettings settings;
  settings.program = FindSimulator();
  settings.module = FindModule(installation);
  settings.serverFile = fs::absolute(arguments.file).string();
  settings.machineType = machineType;
  settings.node = arguments.node;
  settings.port = arguments.port;
  settings.serialPort = arguments.serialPort;
  settings.user = kSimulatedUser;
  settings.password = kSimulatedPassword;
  return settings;
}

[[noreturn]] void ThrowEnded(const TIpmiSim& simulator, const char* when) {
  const std::string output = simulator.Output();
  throw THostError(EFailure::kUnreachable, std::string("ipmi_sim ended ") + when + " (" + simulator.HowItEnded() + ")" +
                                               (output.empty() ? ", and gave no reason" : ": " + output));
}

/// Waits for a signal and returns true; false if the time is over or the simulator has ended.
bool WaitForSignal(const TEndingSignals& signals, const TIpmiSim& simulator, int time) {
  std::array<pollfd, 2> waiters = {{{signals.Descriptor(), POLLIN, 0}, {simulator.Descriptor(), POLLIN, 0}}};
  while (poll(waiters.data(), waiters.size(), time) < 0 && errno == EINTR) continue;
  return (waiters[0].revents & POLLIN) != 0;
}

/// Returns true when the simulator answers, false if a signal comes first.
bool WaitForAnswer(const TEndingSignals& signals, const TIpmiSim& simulator, int port) {
  const auto end = steady_clock::now() + kStartingTime;
  while (!AnswersIpmi(port, kStartingStep)) {
    if (WaitForSignal(signals, simulator, static_cast<int>(kStartingStep.count()))) return false;
    if (simulator.HasEnded()) ThrowEnded(simulator, "during startup");
    if (steady_clock::now() >= end) {
      throw THostError(EFailure::kUnreachable, "ipmi_sim does not answer on 127.0.0.1:" + std::to_string(port));
    }
  }
  return true;
}

std::string ShellWord(const std::string& text) {
  std::string quoted = "'";
  for (const char c : text) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return quoted + "'";
}

/// Only needed if a client would find another machine type in the FRU inventory.
std::string MachineTypeOption(const std::string& machineType) {
  const auto groups = DigitGroups(machineType, 4);
  if (!groups.empty() && groups.front() == machineType) return {};
  return " --machine-type " + ShellWord(SafeText(machineType));
}

std::string ConnectingLines(const TSimulateArguments& arguments, const std::string& machineType) {
  const std::string port = std::to_string(arguments.port);
  const std::string user = kSimulatedUser;
  const std::string password = kSimulatedPassword;
  std::string text = "BMC node " + std::to_string(arguments.node) + " of " + SafeText(arguments.file) +
                     " answers on 127.0.0.1:" + port + " (user " + user + ", password " + password +
                     ").\nConnect with one of:\n  ipmitool -I lanplus -C 3 -H 127.0.0.1 -p " + port + " -U " + user +
                     " -P " + password + " mc info\n  ipmi-raw -D LAN_2_0 -h 127.0.0.1:" + port + " -u " + user +
                     " -p " + password + " -I 3 -l ADMIN -W opensesspriv 0 6 1\n  VELHOST_IPMI_PASSWORD=" + password +
                     " velhost collect --sp lan:" + user + "@127.0.0.1:" + port + " --cipher-suite 3 --schema example" +
                     MachineTypeOption(machineType) + "\n";
  if (arguments.serialPort) {
    text += "As the BMC of a virtual machine:\n  qemu-system-x86_64 ... -chardev socket,id=bmc,host=127.0.0.1,port=" +
            std::to_string(*arguments.serialPort) +
            ",reconnect=1 -device ipmi-bmc-extern,id=bmc0,chardev=bmc -device isa-ipmi-kcs,bmc=bmc0\n";
  }
  return text + "Press Ctrl-C to stop.\n";
}

}  // namespace

EExitStatus SimulateCommand(const TSimulateArguments& given, const TInstallation& installation) {
  TSimulateArguments arguments = given;
  arguments.file = installation.FindServer(given.file);
  const std::string machineType = CheckServer(arguments);
  const TIpmiSimSettings settings = SettingsOf(arguments, machineType, installation);
  CheckPort(arguments.port, SOCK_DGRAM, "UDP");
  if (arguments.serialPort) CheckPort(*arguments.serialPort, SOCK_STREAM, "TCP");
  const TEndingSignals signals;
  const TIpmiSim simulator(settings);
  if (!WaitForAnswer(signals, simulator, arguments.port)) return EExitStatus::kComplete;
  WriteToStandardOutput(ConnectingLines(arguments, machineType));
  while (!WaitForSignal(signals, simulator, -1)) {
    if (simulator.HasEnded()) ThrowEnded(simulator, "unexpectedly");
  }
  return EExitStatus::kComplete;
}

}  // namespace velhost
