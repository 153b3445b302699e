// Cancellation and deadline of a run, which every exchange observes.
#pragma once

#include <atomic>
#include <chrono>
#include <optional>

#include "host/base/api.h"
#include "host/base/descriptor.h"

namespace velhost {

/// Stopped for good once RequestStop has been called or the deadline has passed.
class VELHOST_API TStopSignal {
 public:
  using TClock = std::chrono::steady_clock;

  TStopSignal() = default;
  TStopSignal(const TStopSignal&) = delete;
  TStopSignal& operator=(const TStopSignal&) = delete;

  /// Safe in a signal handler and from any thread.
  void RequestStop() noexcept;
  void SetDeadline(TClock::time_point deadline) { deadline_ = deadline; }

  bool IsStopped() const;
  bool WasRequested() const noexcept { return requested_.load(); }
  /// Time until the deadline, never negative; empty if there is no deadline.
  std::optional<std::chrono::milliseconds> TimeLeft() const;

  /// Waits; returns true after the whole duration, false as soon as the run is stopped.
  bool WaitFor(std::chrono::milliseconds duration) const;
  /// Becomes readable when a stop is requested (not at the deadline), to be polled alongside a device.
  int Descriptor() const noexcept { return request_.Descriptor(); }

 private:
  std::atomic<bool> requested_{false};
  std::optional<TClock::time_point> deadline_;
  TEvent request_;
};

}  // namespace velhost
