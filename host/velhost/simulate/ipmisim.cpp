#include "host/velhost/simulate/ipmisim.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <numeric>
#include <sstream>
#include <utility>
#include <vector>

#include "host/base/digits.h"
#include "host/base/hosterror.h"
#include "wire/fru.h"

namespace velhost {

namespace {

namespace Fru = wire::Fru;
using TData = std::vector<std::uint8_t>;

/// The last byte, which makes the sum of all zero.
void AppendChecksum(TData& bytes) {
  bytes.push_back(static_cast<std::uint8_t>(0U - std::accumulate(bytes.begin(), bytes.end(), 0U)));
}

void AppendField(TData& area, std::string text) {
  if (text.size() == 1) text += ' ';  // a single character would be taken for the end mark
  text.resize(std::min<std::size_t>(text.size(), Fru::kLengthMask));
  area.push_back(static_cast<std::uint8_t>(Fru::kText << Fru::kTypeShift | text.size()));
  area.insert(area.end(), text.begin(), text.end());
}

TData ProductArea(const std::string& machineType) {
  TData area = {Fru::kVersion, 0, Fru::kEnglish};
  for (const std::string& text : {std::string("velhost"), std::string("Simulated server"), machineType}) {
    AppendField(area, text);
  }
  for (int i = 0; i < 4; ++i) AppendField(area, "");  // version, serial number, asset tag, FRU file
  area.push_back(Fru::kEndOfFields);
  while ((area.size() + 1) % Fru::kAreaUnit != 0) area.push_back(0);
  area[Fru::kAreaLength] = static_cast<std::uint8_t>((area.size() + 1) / Fru::kAreaUnit);
  AppendChecksum(area);
  return area;
}

}  // namespace

TData FruInventory(const std::string& machineType) {
  TData inventory(Fru::kHeaderSize - 1);
  inventory[0] = Fru::kVersion;
  inventory[Fru::kProductAreaOffset] = Fru::kHeaderSize / Fru::kAreaUnit;
  AppendChecksum(inventory);
  const TData area = ProductArea(machineType);
  inventory.insert(inventory.end(), area.begin(), area.end());
  return inventory;
}

namespace {

namespace fs = std::filesystem;
using std::chrono::milliseconds;

constexpr milliseconds kEndingTime{2'000};
constexpr std::size_t kLongestPath = 800;  // leaves room within a configuration line's 1024 bytes
constexpr int kCannotExecute = 127;
constexpr int kRemovals = 100;
constexpr useconds_t kRemovalStep = 20'000;

// The whole environment of ipmi_sim: the user's may hold secrets.
constexpr std::array<const char*, 3> kEnvironment = {"PATH=/usr/sbin:/usr/bin:/sbin:/bin", "LC_ALL=C", nullptr};

const std::string& Writable(const std::string& path) {
  const bool plain = std::none_of(path.begin(), path.end(), [](char c) {
    return c == '"' || c == '\'' || c == '\\' || static_cast<unsigned char>(c) < ' ';
  });
  if (plain && path.size() <= kLongestPath) return path;
  throw THostError(EFailure::kInvalidArgument, "'" + path +
                                                   "' cannot be passed to ipmi_sim: its path has a quotation mark, a "
                                                   "backslash, a control character or more than 800 bytes");
}

void WriteFile(const std::string& path, const std::string& content) {
  std::ofstream file(path, std::ios::binary);
  file << content;
  file.close();
  if (!file) throw THostError(EFailure::kNotCreated, "cannot write " + path + ": " + std::strerror(errno));
}

[[noreturn]] void ThrowStart(const TIpmiSimSettings& settings, int error) {
  throw THostError(EFailure::kUnreachable, "cannot start " + settings.program + ": " + std::strerror(error));
}

void ReplaceStandardStreams(int input, int output) {
  dup2(input, STDIN_FILENO);
  dup2(output, STDOUT_FILENO);
  dup2(output, STDERR_FILENO);
}

/// Closes inherited descriptors that this process does not know about.
void CloseFrom(int first) { close_range(static_cast<unsigned int>(first), ~0U, 0); }

/// Runs in the child, which may only make system calls after the fork.
[[noreturn]] void Become(const char* program, char* const* arguments, const char* log, pid_t parent) {
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
  for (const int ignored : {SIGPIPE, SIGXFSZ}) signal(ignored, SIG_DFL);
  // A group of its own: Ctrl-C is meant for velhost, which then ends ipmi_sim in an orderly way.
  setpgid(0, 0);
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (getppid() != parent) _exit(kCannotExecute);
  const int input = open("/dev/null", O_RDONLY);
  const int output = open(log, O_WRONLY | O_CREAT | O_TRUNC, 0600);
  if (input < 0 || output < 0) _exit(kCannotExecute);
  ReplaceStandardStreams(input, output);
  CloseFrom(STDERR_FILENO + 1);
  execve(program, arguments, const_cast<char* const*>(kEnvironment.data()));
  _exit(kCannotExecute);
}

/// Runs in the keeper of a private folder: waits until the parent closes its end of the pipe, if only by dying, and
/// removes what is left of the folder.
[[noreturn]] void KeepFolder(int pipeEnd, const std::string& folder) {
  setpgid(0, 0);  // Ctrl-C and other signals to the parent's group must not end the keeper
  const int nothing = open("/dev/null", O_RDWR | O_CLOEXEC);
  // Release the parent's output and other inherited pipes, so that their readers see the end of file.
  ReplaceStandardStreams(nothing, nothing);
  constexpr int kOnly = STDERR_FILENO + 1;
  if (pipeEnd != kOnly) dup2(pipeEnd, kOnly);
  CloseFrom(kOnly + 1);
  std::array<char, 1> byte{};
  while (read(kOnly, byte.data(), byte.size()) < 0 && errno == EINTR) continue;
  // ipmi_sim dies with the parent, but not at the same moment: it may still be writing.
  std::error_code error;
  for (int i = 0; i < kRemovals && fs::exists(folder, error); ++i) {
    fs::remove_all(folder, error);
    if (error) usleep(kRemovalStep);
  }
  _exit(0);
}

// Get Channel Authentication Capabilities (network function 6, command 0x38) for channel 14, "this channel", and an
// administrator: the first request of every client, outside of any session.
constexpr std::array<std::uint8_t, 23> kFirstQuestion = {
    0x06, 0x00, 0xFF, 0x07,                                      // RMCP, class IPMI
    0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x09,  // no session, 9 bytes follow
    0x20, 0x18, 0xC8, 0x81, 0x00, 0x38, 0x8E, 0x04, 0xB5};       // the message, with its two checksums

}  // namespace

std::string IpmiSimConfiguration(const TIpmiSimSettings& settings) {
  const std::string allowed = " none md2 md5 straight\n";
  std::ostringstream text;
  text << "name \"velhost\"\n"
       << "set_working_mc 0x20\n"
       << "startlan 1\n"
       << "  addr 127.0.0.1 " << settings.port << "\n"
       << "  priv_limit admin\n";
  for (const char* level : {"callback", "user", "operator", "admin"}) text << "  allowed_auths_" << level << allowed;
  // Without a GUID, ipmi_sim would not offer IPMI 2.0.
  text << "  guid 76656c686f737473696d756c61746564\n"
       << "endlan\n";
  if (settings.serialPort) text << "serial 15 127.0.0.1 " << *settings.serialPort << " codec VM\n";
  text << "user 2 true \"" << settings.user << "\" \"" << settings.password << "\" admin 60" << allowed << "loadlib \""
       << Writable(settings.module) << "\" \"" << settings.node << " " << Writable(settings.serverFile) << "\"\n";
  return text.str();
}

std::string IpmiSimCommands(const TIpmiSimSettings& settings) {
  const std::vector<std::uint8_t> fru = FruInventory(settings.machineType);
  std::ostringstream text;
  // The BMC at address 0x20: device ID, no SDRs, revision, firmware version, capabilities, manufacturer, product.
  text << "mc_setbmc 0x20\n"
       << "mc_add 0x20 0 no-device-sdrs 0x01 1 0 0x9f 0x003039 0x0001\n"
       << "mc_add_fru_data 0x20 0 " << fru.size() << " data";
  for (const std::uint8_t byte : fru) text << ' ' << HexByte(byte);
  text << "\nmc_enable 0x20\n";
  return text.str();
}

TPrivateFolder::TPrivateFolder() {
  const char* const base = std::getenv("TMPDIR");
  std::string pattern = std::string(base != nullptr && *base != '\0' ? base : "/tmp") + "/velhost-simulate-XXXXXX";
  if (mkdtemp(pattern.data()) == nullptr) {
    throw THostError(EFailure::kNotCreated, "cannot create the folder " + pattern + ": " + std::strerror(errno));
  }
  path_ = pattern;
  StartKeeper();
}

TPrivateFolder::~TPrivateFolder() {
  std::error_code ignored;
  fs::remove_all(path_, ignored);
  if (keeper_ < 0) return;
  pipe_.Close();
  waitpid(keeper_, nullptr, 0);
}

// If the keeper cannot be started, the folder is still removed unless this process is killed.
void TPrivateFolder::StartKeeper() {
  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC) != 0) return;
  const TDescriptor readEnd(ends[0]);
  TDescriptor writeEnd(ends[1]);
  keeper_ = fork();
  if (keeper_ == 0) {
    writeEnd.Close();
    KeepFolder(readEnd.Get(), path_);
  }
  if (keeper_ > 0) pipe_ = std::move(writeEnd);
}

TIpmiSim::TIpmiSim(const TIpmiSimSettings& settings) {
  WriteFiles(settings);
  Start(settings);
}

TIpmiSim::~TIpmiSim() {
  kill(process_, SIGTERM);
  if (!WaitForEnd(kEndingTime)) kill(process_, SIGKILL);
  waitpid(process_, nullptr, 0);
}

void TIpmiSim::WriteFiles(const TIpmiSimSettings& settings) const {
  const std::string& folder = folder_.Path();
  WriteFile(folder + "/lan.conf", IpmiSimConfiguration(settings));
  WriteFile(folder + "/commands", IpmiSimCommands(settings));
  fs::create_directory(folder + "/state");
}

void TIpmiSim::Start(const TIpmiSimSettings& settings) {
  const std::string& folder = folder_.Path();
  std::vector<std::string> words = {settings.program,     "-c", folder + "/lan.conf", "-f",
                                    folder + "/commands", "-s", folder + "/state",    "-n"};
  std::vector<char*> arguments;
  arguments.reserve(words.size() + 1);
  for (std::string& word : words) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  const std::string log = folder + "/log";
  const pid_t parent = getpid();
  process_ = fork();
  if (process_ < 0) ThrowStart(settings, errno);
  if (process_ == 0) Become(arguments.front(), arguments.data(), log.c_str(), parent);
  descriptor_ = TDescriptor(static_cast<int>(syscall(SYS_pidfd_open, process_, 0)));
  if (!descriptor_) {
    const int error = errno;
    kill(process_, SIGKILL);
    waitpid(process_, nullptr, 0);
    ThrowStart(settings, error);
  }
}

bool TIpmiSim::WaitForEnd(milliseconds time) const {
  pollfd waiter = {descriptor_.Get(), POLLIN, 0};
  return poll(&waiter, 1, static_cast<int>(time.count())) == 1;
}

std::string TIpmiSim::Output() const {
  std::ifstream file(folder_.Path() + "/log", std::ios::binary);
  std::string text((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  while (text.ends_with('\n')) text.pop_back();
  return text;
}

std::string TIpmiSim::HowItEnded() const {
  siginfo_t end = {};
  if (waitid(P_PID, static_cast<id_t>(process_), &end, WEXITED | WNOHANG | WNOWAIT) != 0) return {};
  if (end.si_code == CLD_EXITED) return "exit status " + std::to_string(end.si_status);
  const char* const name = sigabbrev_np(end.si_status);
  return "signal " + std::to_string(end.si_status) + (name != nullptr ? std::string(", SIG") + name : "");
}

bool AnswersIpmi(int port, milliseconds time) {
  const TDescriptor descriptor(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
  if (!descriptor) return false;
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  sockaddr generic = {};
  static_assert(sizeof generic == sizeof address);
  std::memcpy(&generic, &address, sizeof address);
  if (connect(descriptor.Get(), &generic, sizeof generic) != 0 ||
      send(descriptor.Get(), kFirstQuestion.data(), kFirstQuestion.size(), 0) <= 0) {
    return false;
  }
  pollfd waiter = {descriptor.Get(), POLLIN, 0};
  std::array<std::uint8_t, 64> answer{};
  return poll(&waiter, 1, static_cast<int>(time.count())) == 1 &&
         recv(descriptor.Get(), answer.data(), answer.size(), 0) > 0 && answer[0] == kFirstQuestion[0];
}

}  // namespace velhost
