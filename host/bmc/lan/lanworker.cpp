#include "host/bmc/lan/lanworker.h"

#include <poll.h>

#include <algorithm>
#include <array>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>

#include "host/base/descriptor.h"
#include "host/bmc/lan/signalsblocked.h"

namespace velhost {

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
