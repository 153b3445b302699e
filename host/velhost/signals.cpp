#include "host/velhost/signals.h"

#include <atomic>
#include <csignal>

namespace NKROVEL20 {

namespace {

std::atomic<TStopSignal*> target{nullptr};

extern "C" void RequestStopOnce(int /*signal*/) {
  if (TStopSignal* const stop = target.load()) stop->RequestStop();
}

void Handle(int signal, void (*handler)(int), int flags) {
  struct sigaction action = {};
  action.sa_handler = handler;
  action.sa_flags = flags;
  sigaction(signal, &action, nullptr);
}

bool IsIgnored(int signal) {
  struct sigaction action = {};
  return sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

}  // namespace

TSignalGuard::TSignalGuard(TStopSignal& stop) {
  target.store(&stop);
  // SA_RESETHAND: the second signal of a kind has its default effect.
  Handle(SIGINT, &RequestStopOnce, static_cast<int>(SA_RESETHAND));
  Handle(SIGTERM, &RequestStopOnce, static_cast<int>(SA_RESETHAND));
  hangUp_ = !IsIgnored(SIGHUP);  // nohup has it ignored
  if (hangUp_) Handle(SIGHUP, &RequestStopOnce, static_cast<int>(SA_RESETHAND));
}

TSignalGuard::~TSignalGuard() {
  Handle(SIGINT, SIG_DFL, 0);
  Handle(SIGTERM, SIG_DFL, 0);
  if (hangUp_) Handle(SIGHUP, SIG_DFL, 0);
  target.store(nullptr);
}

}  // namespace NKROVEL20
