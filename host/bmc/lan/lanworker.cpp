#include "host/bmc/lan/lanworker.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <condition_variable>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

#include "host/bmc/lan/signalsblocked.h"

namespace velhost {

struct TLanWorker::TShared {
  TShared() : done(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    if (done < 0) throw std::system_error(errno, std::generic_category(), "eventfd");
  }
  ~TShared() { close(done); }
  TShared(const TShared&) = delete;
  TShared& operator=(const TShared&) = delete;

  void Signal() const {
    const std::uint64_t one = 1;
    [[maybe_unused]] const ssize_t written = write(done, &one, sizeof one);
  }
  void Consume() const {
    std::uint64_t count = 0;
    [[maybe_unused]] const ssize_t got = read(done, &count, sizeof count);
  }

  std::mutex mutex;
  std::condition_variable wake;
  std::function<void()> job;
  bool quit = false;
  std::thread thread;
  int done;
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
    // What the job owns goes before anybody learns that it is over.
    job = nullptr;
    shared->Signal();
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
  std::array<pollfd, 2> waiters = {{{shared_->done, POLLIN, 0}, {stop.Descriptor(), POLLIN, 0}}};
  while (true) {
    const auto left = stop.TimeLeft();
    const int time = left ? static_cast<int>(std::min<std::chrono::milliseconds::rep>(left->count(), 3'600'000)) : -1;
    poll(waiters.data(), waiters.size(), time);
    if ((waiters[0].revents & POLLIN) != 0) {
      shared_->Consume();
      return true;
    }
    if (stop.IsStopped()) {
      leftBehind_ = true;
      return false;
    }
  }
}

}  // namespace velhost
