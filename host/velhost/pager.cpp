#include "host/velhost/pager.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "host/base/hosterror.h"
#include "host/output/outputfile.h"
#include "host/velhost/installation.h"
#include "host/velhost/messages.h"

namespace velhost {

namespace {

constexpr char kDefaultPager[] = "less";
// Leave at once if the text fits the screen, show colours, and leave the text on the screen.
constexpr char kLessOptions[] = "LESS=FRX";
constexpr int kWantedPipeSize = 1 << 20;
constexpr int kNotExecutable = 126;  // exit statuses of a shell that cannot run a command
constexpr int kNotFound = 127;

TPager* thePager = nullptr;  // the one that runs
// Of the pager that runs, for signal handlers.
std::atomic<pid_t> runningProcess{-1};
std::atomic<int> runningPipe{-1};

bool IsSet(const char* name) { return std::getenv(name) != nullptr; }

// "less" would wait for a key because it cannot move the cursor, so without one it is only run if it is asked for.
std::string PagerCommand() {
  for (const char* const name : {"VELHOST_PAGER", "PAGER"}) {
    if (const char* const value = std::getenv(name)) return std::strcmp(value, "cat") == 0 ? "" : value;
  }
  const char* const terminal = std::getenv("TERM");
  const bool isDumb = terminal != nullptr && std::strcmp(terminal, "dumb") == 0;
  return isDumb ? "" : kDefaultPager;
}

// A pager of a background job would be stopped as soon as it reads a key. If the terminal does not control this
// process, there are no jobs.
bool IsInForeground() {
  const pid_t group = ::tcgetpgrp(STDOUT_FILENO);
  return group < 0 || group == ::getpgrp();
}

// The words of a plain command, so that a failure to start it is noticed. Anything else is for the shell.
std::vector<std::string> WordsOf(const std::string& command) {
  if (command.find_first_of("|&;<>()$`\\\"'\t\n*?[#~=%") != std::string::npos) return {"/bin/sh", "-c", command};
  std::vector<std::string> words;
  for (std::size_t at = command.find_first_not_of(' '); at < command.size();) {
    const std::size_t end = std::min(command.find(' ', at), command.size());
    words.push_back(command.substr(at, end - at));
    at = command.find_first_not_of(' ', end);
  }
  return words;
}

std::vector<char*> PointersTo(std::vector<std::string>& words) {
  std::vector<char*> pointers;
  pointers.reserve(words.size() + 1);
  for (std::string& word : words) pointers.push_back(word.data());
  pointers.push_back(nullptr);
  return pointers;
}

// This environment, with what `less` needs. Somebody who may run this command as another user must not get a shell of
// that user from it.
std::vector<std::string> EnvironmentOfPager() {
  std::vector<std::string> variables;
  for (char* const* variable = environ; *variable != nullptr; ++variable) variables.emplace_back(*variable);
  if (!IsSet("LESS")) variables.emplace_back(kLessOptions);
  const bool isForAnother = IsSet("SUDO_UID") || IsSet("DOAS_USER") || IsSet("PKEXEC_UID");
  if (isForAnother) variables.emplace_back("LESSSECURE=1");
  return variables;
}

// What a program is started with: standard input from the pipe, no other descriptor than the standard ones, and the
// signals that this process ignores handled by default.
class TSpawnSettings {
 public:
  explicit TSpawnSettings(int input) {
    posix_spawn_file_actions_init(&actions_);
    posix_spawn_file_actions_adddup2(&actions_, input, STDIN_FILENO);
    posix_spawn_file_actions_addclosefrom_np(&actions_, STDERR_FILENO + 1);
    posix_spawnattr_init(&attributes_);
    sigset_t ignored;
    sigemptyset(&ignored);
    for (const int signal : {SIGPIPE, SIGXFSZ}) sigaddset(&ignored, signal);
    posix_spawnattr_setsigdefault(&attributes_, &ignored);
    posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGDEF);
  }
  ~TSpawnSettings() {
    posix_spawn_file_actions_destroy(&actions_);
    posix_spawnattr_destroy(&attributes_);
  }
  TSpawnSettings(const TSpawnSettings&) = delete;
  TSpawnSettings& operator=(const TSpawnSettings&) = delete;

  const posix_spawn_file_actions_t* Actions() const { return &actions_; }
  const posix_spawnattr_t* Attributes() const { return &attributes_; }

 private:
  posix_spawn_file_actions_t actions_{};
  posix_spawnattr_t attributes_{};
};

// Signals while this process only waits for its pager, which has the terminal: the keys that end programs are meant for
// the pager, and anything else must not end this process first.
class TSignalsOfPager {
 public:
  TSignalsOfPager() {
    for (std::size_t i = 0; i < kSignals.size(); ++i) {
      const int signal = kSignals.at(i);
      ::sigaction(signal, nullptr, &before_.at(i));
      struct sigaction action = {};
      const bool isKey = signal == SIGINT || signal == SIGQUIT;
      action.sa_handler = isKey || before_.at(i).sa_handler == SIG_IGN ? SIG_IGN : &EndBySignalAfterPager;
      ::sigaction(signal, &action, nullptr);
    }
  }
  ~TSignalsOfPager() {
    for (std::size_t i = 0; i < kSignals.size(); ++i) ::sigaction(kSignals.at(i), &before_.at(i), nullptr);
  }
  TSignalsOfPager(const TSignalsOfPager&) = delete;
  TSignalsOfPager& operator=(const TSignalsOfPager&) = delete;

 private:
  static constexpr std::array<int, 4> kSignals = {SIGINT, SIGQUIT, SIGTERM, SIGHUP};
  std::array<struct sigaction, kSignals.size()> before_{};
};

int WaitFor(pid_t process) noexcept {
  int status = 0;
  while (::waitpid(process, &status, 0) < 0 && errno == EINTR) continue;
  return status;
}

}  // namespace

TPager::TPager(const TCommonOptions& options) {
  const bool isUseful = !options.noPager && IsTerminal(STDOUT_FILENO) && IsInForeground();
  if (isUseful) command_ = PagerCommand();
}

TPager::~TPager() {
  Drain();
  WaitForEnd();
}

void TPager::Start() {
  isStarted_ = true;
  const std::vector<std::string> words = WordsOf(command_);
  if (words.empty() || Run(words)) return;
  const bool isMissingDefault = errno == ENOENT && command_ == kDefaultPager;
  if (!isMissingDefault) Say("warning: cannot run the pager " + QuotedWord(command_) + ": " + std::strerror(errno));
}

bool TPager::Run(const std::vector<std::string>& words) {
  const std::string& name = words.front();
  const std::string program = name.find('/') == std::string::npos ? FindProgram(name) : name;
  errno = ENOENT;
  if (program.empty()) return false;
  std::array<int, 2> ends{};
  if (::pipe2(ends.data(), O_CLOEXEC) != 0) return false;
  const TDescriptor readEnd(ends[0]);
  TDescriptor writeEnd(ends[1]);
  ::fcntl(writeEnd.Get(), F_SETFL, O_NONBLOCK);
  ::fcntl(writeEnd.Get(), F_SETPIPE_SZ, kWantedPipeSize);  // a smaller one only means that more is kept here
  std::vector<std::string> arguments = words;
  std::vector<std::string> variables = EnvironmentOfPager();
  const TSpawnSettings settings(readEnd.Get());
  errno = ::posix_spawn(&process_, program.c_str(), settings.Actions(), settings.Attributes(),
                        PointersTo(arguments).data(), PointersTo(variables).data());
  if (errno != 0) {
    process_ = -1;
    return false;
  }
  pipe_ = std::move(writeEnd);
  thePager = this;
  runningPipe = pipe_.Get();
  runningProcess = process_;
  watcher_ = std::thread([this] { Watch(); });
  return true;
}

// Runs in a thread of its own.
void TPager::Watch() {
  const TDescriptor ended(static_cast<int>(::syscall(SYS_pidfd_open, process_, 0)));
  std::array<pollfd, 2> either = {{{closing_.Descriptor(), POLLIN, 0}, {ended.Get(), POLLIN, 0}}};
  while (::poll(either.data(), either.size(), -1) < 0 && errno == EINTR) continue;
  if (either[0].revents == 0) Leave();
}

void TPager::Leave() {
  wasLeft_ = true;
  const std::lock_guard lock(callbackMutex_);
  if (onLeft_) std::exchange(onLeft_, {})();
}

void TPager::SetLeftCallback(std::function<void()> onLeft) {
  const std::lock_guard lock(callbackMutex_);
  onLeft_ = std::move(onLeft);
}

void TPager::Write(std::string_view text) {
  if (text.empty()) return;
  if (!isStarted_) Start();
  if (!IsRunning()) {
    TDescriptorSink sink(STDOUT_FILENO, "standard output");
    sink.Write(text);
    return sink.Flush();
  }
  if (wasLeft_) return;
  pending_ += text;
  Push();
}

// Passes on as much as the pipe takes now.
void TPager::Push() {
  std::string_view rest = pending_;
  while (!rest.empty()) {
    const ssize_t written = ::write(pipe_.Get(), rest.data(), rest.size());
    if (written >= 0) {
      rest.remove_prefix(static_cast<std::size_t>(written));
    } else if (errno == EAGAIN) {
      break;
    } else if (errno != EINTR) {
      rest = {};
      Leave();
    }
  }
  pending_.erase(0, pending_.size() - rest.size());
}

void TPager::Drain() noexcept {
  if (!IsRunning()) return;
  const TSignalsOfPager signals;
  if (!wasLeft_) WriteAll(pipe_.Get(), pending_);  // fails if the user has seen enough
  pending_.clear();
}

int TPager::WaitForEnd() noexcept {
  if (!IsRunning()) return 0;
  const TSignalsOfPager signals;
  closing_.Set();
  watcher_.join();
  runningPipe = -1;
  pipe_.Close();
  const int status = WaitFor(process_);
  runningProcess = -1;
  process_ = -1;
  thePager = nullptr;
  return status;
}

void TPager::Close() {
  Drain();
  const int status = WaitForEnd();
  const int exitStatus = WIFEXITED(status) ? WEXITSTATUS(status) : 0;
  if (exitStatus != kNotExecutable && exitStatus != kNotFound) return;
  throw THostError(EFailure::kNotWritten, "the pager " + QuotedWord(command_) + " could not be run (status " +
                                              std::to_string(exitStatus) + "); --no-pager prints without one");
}

void WriteForPeople(const TCommonOptions& options, std::string_view text) {
  TPager pager(options);
  pager.Write(text);
  pager.Close();
}

bool WriteToRunningPager(std::string_view text) {
  if (!IsPagerRunning()) return false;
  thePager->Write(text);
  return true;
}

void WaitForPagerBeforeTheEnd() noexcept {
  const pid_t process = runningProcess.exchange(-1);
  const int pipe = runningPipe.exchange(-1);
  if (process < 0) return;
  if (pipe >= 0) ::close(pipe);
  WaitFor(process);
}

void EndBySignalAfterPager(int signal) noexcept {
  WaitForPagerBeforeTheEnd();
  std::signal(signal, SIG_DFL);
  std::raise(signal);  // delivered when the handler returns
}

bool IsPagerRunning() noexcept { return runningProcess.load() >= 0; }

}  // namespace velhost
