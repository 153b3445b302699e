#include "host/velhost/signals.h"

#include <termios.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>

#include "host/velhost/pager.h"

namespace velhost {

namespace {

std::atomic<TStopSignal*> target{nullptr};

std::atomic<bool> echoesInterrupt{false};

void HandleBy(int signal, void (*handler)(int)) {
  struct sigaction action = {};
  action.sa_handler = handler;
  sigaction(signal, &action, nullptr);
}

void HandleByDefault(int signal) { HandleBy(signal, SIG_DFL); }

extern "C" void RequestStopOnce(int signal, siginfo_t* info, void* /*context*/) {
  if (TStopSignal* const stop = target.load()) stop->RequestStop();
  HandleBy(signal, &EndBySignalAfterPager);
  // The kernel sends Ctrl-C for the terminal, which has echoed "^C" at the cursor.
  if (signal != SIGINT || info == nullptr || info->si_code != SI_KERNEL || !echoesInterrupt.load()) return;
  if (IsPagerRunning()) return;  // the terminal is not ours
  const int saved = errno;
  [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, "\n", 1);
  errno = saved;
}

void HandleOnce(int signal) {
  struct sigaction action = {};
  action.sa_sigaction = &RequestStopOnce;
  action.sa_flags = SA_SIGINFO;
  sigaction(signal, &action, nullptr);
}

bool StandardErrorEchoesControls() {
  termios settings = {};
  return tcgetattr(STDERR_FILENO, &settings) == 0 && (settings.c_lflag & ECHO) != 0 &&
         (settings.c_lflag & ECHOCTL) != 0;
}

bool IsIgnored(int signal) {
  struct sigaction action = {};
  return sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

}  // namespace

TSignalGuard::TSignalGuard(TStopSignal& stop) {
  target.store(&stop);
  echoesInterrupt.store(StandardErrorEchoesControls());
  HandleOnce(SIGINT);
  HandleOnce(SIGTERM);
  hangUp_ = !IsIgnored(SIGHUP);  // nohup ignores it
  if (hangUp_) HandleOnce(SIGHUP);
}

TSignalGuard::~TSignalGuard() {
  HandleByDefault(SIGINT);
  HandleByDefault(SIGTERM);
  if (hangUp_) HandleByDefault(SIGHUP);
  target.store(nullptr);
}

}  // namespace velhost
