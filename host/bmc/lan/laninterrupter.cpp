#include "host/bmc/lan/laninterrupter.h"

#include <poll.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <optional>

#include "host/bmc/lan/signalsblocked.h"

namespace velhost {

namespace {

constexpr int kSignal = SIGURG;
constexpr std::chrono::milliseconds kInterval{10};
constexpr std::chrono::milliseconds kLook{1'000};

extern "C" void InterruptNothingMore(int /*signal*/) {}

}  // namespace

TLanInterrupter::TLanInterrupter(const TStopSignal& stop, std::chrono::milliseconds longest)
    : stop_(stop), longest_(longest) {
  struct sigaction action = {};
  action.sa_handler = &InterruptNothingMore;
  action.sa_flags = SA_RESTART;  // restarts reads and writes hit by a late signal; waits for events end anyway
  sigaction(kSignal, &action, &before_);
  const TSignalsBlocked blocked;
  watcher_ = std::thread([this] { Watch(); });
}

TLanInterrupter::~TLanInterrupter() {
  quit_.Set();
  watcher_.join();
  sigaction(kSignal, &before_, nullptr);
}

TLanInterrupter::TScope::TScope(TLanInterrupter& interrupter) : interrupter_(interrupter) {
  const std::lock_guard lock(interrupter_.mutex_);
  interrupter_.caller_ = pthread_self();
  interrupter_.began_ = TClock::now();
  interrupter_.calling_ = true;
}

TLanInterrupter::TScope::~TScope() {
  const std::lock_guard lock(interrupter_.mutex_);
  interrupter_.calling_ = false;
}

void TLanInterrupter::Watch() {
  while (!WaitForQuit(InterruptCall() ? kInterval : TimeToNextLook())) continue;
}

/// Waits for `time`, or until the run is stopped; returns whether the watcher is to end.
bool TLanInterrupter::WaitForQuit(std::chrono::milliseconds time) const {
  // Once stopped, the stop signal's descriptor stays readable.
  std::array<pollfd, 2> waiters = {
      {{quit_.Descriptor(), POLLIN, 0}, {stop_.IsStopped() ? -1 : stop_.Descriptor(), POLLIN, 0}}};
  poll(waiters.data(), waiters.size(), static_cast<int>(time.count()));
  return (waiters[0].revents & POLLIN) != 0;
}

std::chrono::milliseconds TLanInterrupter::TimeToNextLook() const {
  const auto look = std::min(kLook, longest_);
  const auto left = stop_.TimeLeft();
  return left && !stop_.IsStopped() ? std::min(look, std::chrono::milliseconds(*left)) : look;
}

/// Interrupts a call that is due. Returns whether to call again soon: one was due, or one may begin at any moment.
bool TLanInterrupter::InterruptCall() {
  const std::lock_guard lock(mutex_);
  const bool stopped = stop_.IsStopped();
  const bool due = calling_ && (stopped || TClock::now() - began_ >= longest_);
  if (due) pthread_kill(caller_, kSignal);
  return due || stopped;
}

}  // namespace velhost
