#include "host/serviceprocessor/lan/laninterrupter.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <system_error>

#include "host/serviceprocessor/lan/signalsblocked.h"

namespace NKROVEL20 {

namespace {

constexpr int kSignal = SIGURG;
constexpr int kIntervalMs = 10;
constexpr std::chrono::milliseconds::rep kLongestWaitMs = 3'600'000;

extern "C" void InterruptNothingMore(int /*signal*/) {}

}  // namespace

TLanInterrupter::TLanInterrupter(const TStopSignal& stop) : stop_(stop), quit_(eventfd(0, EFD_CLOEXEC)) {
  if (quit_ < 0) throw std::system_error(errno, std::generic_category(), "eventfd");
  struct sigaction action = {};
  action.sa_handler = &InterruptNothingMore;
  action.sa_flags = SA_RESTART;  // for reads and writes, should it come late; waits for events end all the same
  sigaction(kSignal, &action, &before_);
  const TSignalsBlocked blocked;
  watcher_ = std::thread([this] { Watch(); });
}

TLanInterrupter::~TLanInterrupter() {
  const std::uint64_t one = 1;
  [[maybe_unused]] const ssize_t written = write(quit_, &one, sizeof one);
  watcher_.join();
  sigaction(kSignal, &before_, nullptr);
  close(quit_);
}

TLanInterrupter::TScope::TScope(TLanInterrupter& interrupter) : interrupter_(interrupter) {
  const std::lock_guard lock(interrupter_.mutex_);
  interrupter_.caller_ = pthread_self();
  interrupter_.calling_ = true;
}

TLanInterrupter::TScope::~TScope() {
  const std::lock_guard lock(interrupter_.mutex_);
  interrupter_.calling_ = false;
}

void TLanInterrupter::Watch() {
  if (!WaitForStop()) return;
  pollfd quit = {quit_, POLLIN, 0};
  do {
    InterruptCall();
  } while (poll(&quit, 1, kIntervalMs) == 0);
}

// False when the watching ends before the run is stopped.
bool TLanInterrupter::WaitForStop() const {
  std::array<pollfd, 2> waiters = {{{quit_, POLLIN, 0}, {stop_.Descriptor(), POLLIN, 0}}};
  while (!stop_.IsStopped()) {
    const auto left = stop_.TimeLeft();
    poll(waiters.data(), waiters.size(), left ? static_cast<int>(std::min(left->count(), kLongestWaitMs)) : -1);
    if ((waiters[0].revents & POLLIN) != 0) return false;
  }
  return true;
}

void TLanInterrupter::InterruptCall() {
  const std::lock_guard lock(mutex_);
  if (calling_) pthread_kill(caller_, kSignal);
}

}  // namespace NKROVEL20
