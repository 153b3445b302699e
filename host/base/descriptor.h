// File descriptors: their owner, writing to one, and one to wait for beside others.
#pragma once

#include <unistd.h>

#include <string_view>
#include <utility>

#include "host/base/api.h"

namespace velhost {

/// Owns a file descriptor; -1 is none. All of it is in this header, for modules that link none of the host's libraries.
class TDescriptor {
 public:
  explicit TDescriptor(int descriptor = -1) noexcept : descriptor_(descriptor) {}
  TDescriptor(TDescriptor&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
  TDescriptor& operator=(TDescriptor&& other) noexcept {
    if (this != &other) {
      Close();
      descriptor_ = std::exchange(other.descriptor_, -1);
    }
    return *this;
  }
  ~TDescriptor() { Close(); }

  int Get() const noexcept { return descriptor_; }
  explicit operator bool() const noexcept { return descriptor_ >= 0; }
  /// What close() returns; 0 for none.
  int Close() noexcept { return descriptor_ < 0 ? 0 : ::close(std::exchange(descriptor_, -1)); }

 private:
  int descriptor_;
};

/// Writes the whole text: partial writes, interruptions by signals and a descriptor that does not block are dealt with.
/// Returns 0, or the number of the error that ended it.
VELHOST_API int WriteAll(int descriptor, std::string_view text) noexcept;

/// Something that has happened or not, as a descriptor to poll.
class VELHOST_API TEvent {
 public:
  /// Throws std::system_error when there is no descriptor left.
  TEvent();
  /// Safe in a signal handler and from any thread; leaves errno alone.
  void Set() noexcept;
  void Clear() noexcept;
  /// Readable from Set until Clear.
  int Descriptor() const noexcept { return descriptor_.Get(); }

 private:
  TDescriptor descriptor_;
};

}  // namespace velhost
