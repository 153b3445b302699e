// File descriptors: an owner, a complete write, and an event to poll alongside others.
#pragma once

#include <unistd.h>

#include <string_view>
#include <utility>

#include "host/base/api.h"

namespace velhost {

/// Owns a file descriptor; -1 means none. Header-only, for modules that link none of the host's libraries.
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
  /// Returns what close() returned; 0 if there was nothing to close.
  int Close() noexcept { return descriptor_ < 0 ? 0 : ::close(std::exchange(descriptor_, -1)); }

 private:
  int descriptor_;
};

/// Writes the whole text, despite partial writes, interrupting signals and non-blocking descriptors. Returns 0, or
/// the errno that ended it.
VELHOST_API int WriteAll(int descriptor, std::string_view text) noexcept;

/// A flag that can be polled as a descriptor.
class VELHOST_API TEvent {
 public:
  /// Throws std::system_error if no descriptor is available.
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
