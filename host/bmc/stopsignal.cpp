#include "host/bmc/stopsignal.h"

#include <poll.h>

#include <algorithm>

namespace velhost {

using std::chrono::milliseconds;

namespace {

constexpr milliseconds kLongestWait = std::chrono::hours(24 * 365 * 100);  // a longer one would overflow the clock

}  // namespace

void TStopSignal::RequestStop() noexcept {
  requested_.store(true);
  request_.Set();
}

bool TStopSignal::IsStopped() const { return WasRequested() || (deadline_ && TClock::now() >= *deadline_); }

std::optional<milliseconds> TStopSignal::TimeLeft() const {
  if (!deadline_) return std::nullopt;
  return std::max(milliseconds(0), std::chrono::ceil<milliseconds>(*deadline_ - TClock::now()));
}

bool TStopSignal::WaitFor(milliseconds duration) const {
  const auto end = TClock::now() + std::min(duration, kLongestWait);
  while (!IsStopped()) {
    const auto left = std::chrono::ceil<milliseconds>(end - TClock::now());
    if (left <= milliseconds(0)) return true;
    milliseconds slice = std::min(left, milliseconds(3'600'000));
    if (const auto untilDeadline = TimeLeft()) slice = std::min(slice, *untilDeadline);
    pollfd waiter = {Descriptor(), POLLIN, 0};
    poll(&waiter, 1, static_cast<int>(slice.count()));
  }
  return false;
}

}  // namespace velhost
