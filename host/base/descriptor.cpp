#include "host/base/descriptor.h"

#include <poll.h>
#include <sys/eventfd.h>

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <system_error>

namespace velhost {

int WriteAll(int descriptor, std::string_view text) noexcept {
  while (!text.empty()) {
    const ssize_t written = ::write(descriptor, text.data(), text.size());
    if (written >= 0) {
      text.remove_prefix(static_cast<std::size_t>(written));
    } else if (errno == EAGAIN) {
      pollfd ready = {descriptor, POLLOUT, 0};
      ::poll(&ready, 1, -1);
    } else if (errno != EINTR) {
      return errno;
    }
  }
  return 0;
}

TEvent::TEvent() : descriptor_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
  if (!descriptor_) throw std::system_error(errno, std::generic_category(), "eventfd");
}

void TEvent::Set() noexcept {
  const int saved = errno;
  const std::uint64_t one = 1;
  // A full counter is already readable, which is all that matters.
  [[maybe_unused]] const ssize_t written = ::write(descriptor_.Get(), &one, sizeof one);
  errno = saved;
}

void TEvent::Clear() noexcept {
  std::uint64_t count = 0;
  [[maybe_unused]] const ssize_t got = ::read(descriptor_.Get(), &count, sizeof count);
}

}  // namespace velhost
