#include "host/bmc/lan/blockingcalls.h"

#include <poll.h>

#include <algorithm>
#include <array>
#include <condition_variable>
#include <optional>
#include <utility>

namespace velhost {

namespace {

constexpr int kSignal = SIGURG;
constexpr std::chrono::milliseconds kInterval{10};
constexpr std::chrono::milliseconds kLook{1'000};

extern "C" void InterruptNothingMore(int /*signal*/) {}

/// Blocks signals in threads that are started while it lives: they inherit the mask. Signals are handled by the thread
/// that runs the collection.
class TSignalsBlocked {
 public:
  TSignalsBlocked() {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before_);
  }
  ~TSignalsBlocked() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
  TSignalsBlocked(const TSignalsBlocked&) = delete;
  TSignalsBlocked& operator=(const TSignalsBlocked&) = delete;

 private:
  sigset_t before_;
};

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

struct TLanWorker::TShared {
  std::mutex mutex;
  std::condition_variable wake;
  std::function<void()> job;
  bool quit = false;
  std::thread thread;
  TEvent done;
};

TLanWorker::TLanWorker() : shared_(std::make_shared<TShared>()) {
  const TSignalsBlocked blocked;
  shared_->thread = std::thread([shared = shared_] { Serve(shared); });
}

TLanWorker::~TLanWorker() {
  {
    const std::lock_guard lock(shared_->mutex);
    shared_->quit = true;
  }
  shared_->wake.notify_one();
  if (leftBehind_) {
    shared_->thread.detach();
  } else {
    shared_->thread.join();
  }
}

void TLanWorker::Serve(const std::shared_ptr<TShared>& shared) {
  std::unique_lock lock(shared->mutex);
  while (true) {
    shared->wake.wait(lock, [&shared] { return shared->job || shared->quit; });
    if (!shared->job) return;
    std::function<void()> job = std::exchange(shared->job, nullptr);
    lock.unlock();
    job();
    // Release what the job owns before anyone learns that it is over.
    job = nullptr;
    shared->done.Set();
    lock.lock();
  }
}

bool TLanWorker::Run(std::function<void()> job, const TStopSignal& stop) {
  if (leftBehind_ || stop.IsStopped()) return false;
  {
    const std::lock_guard lock(shared_->mutex);
    shared_->job = std::move(job);
  }
  shared_->wake.notify_one();
  std::array<pollfd, 2> waiters = {{{shared_->done.Descriptor(), POLLIN, 0}, {stop.Descriptor(), POLLIN, 0}}};
  while (true) {
    const auto left = stop.TimeLeft();
    const int time = left ? static_cast<int>(std::min<std::chrono::milliseconds::rep>(left->count(), 3'600'000)) : -1;
    poll(waiters.data(), waiters.size(), time);
    if ((waiters[0].revents & POLLIN) != 0) {
      shared_->done.Clear();
      return true;
    }
    if (stop.IsStopped()) {
      leftBehind_ = true;
      return false;
    }
  }
}

}  // namespace velhost
