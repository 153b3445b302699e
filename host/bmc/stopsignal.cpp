#include "host/bmc/stopsignal.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <system_error>

namespace velhost {

using std::chrono::milliseconds;

namespace {

constexpr milliseconds kLongestWait = std::chrono::hours(24 * 365 * 100);  // longer ones would overflow the clock

}  // namespace

TStopSignal::TStopSignal() : descriptor_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
  if (descriptor_ < 0) throw std::system_error(errno, std::generic_category(), "eventfd");
}

TStopSignal::~TStopSignal() { close(descriptor_); }

void TStopSignal::RequestStop() noexcept {
  const int saved = errno;
  requested_.store(true);
  const std::uint64_t one = 1;
  // A full counter is readable already, which is all that matters.
  [[maybe_unused]] const ssize_t written = write(descriptor_, &one, sizeof one);
  errno = saved;
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
    pollfd waiter = {descriptor_, POLLIN, 0};
    poll(&waiter, 1, static_cast<int>(slice.count()));
  }
  return false;
}

}  // namespace velhost
