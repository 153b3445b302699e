// Bytes that stay as they are: in memory, or in a file that is read where it is asked for.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "host/base/api.h"
#include "host/base/descriptor.h"
#include "host/base/sourcereader.h"

namespace velhost {

/// Copies share the bytes. A file costs a descriptor and, once it is read, a buffer of 16 KiB, whatever
/// its size. One thread at a time.
class VELHOST_API TStoredBytes {
 public:
  TStoredBytes() = default;
  TStoredBytes(std::vector<std::uint8_t> bytes);  // NOLINT(google-explicit-constructor): bytes are stored as they are
  /// `file` is a regular file, of which the first `size` bytes count.
  TStoredBytes(TDescriptor file, std::size_t size);

  std::size_t Size() const;
  /// Copies as many bytes from `offset` as there are and as fit; returns their number. A file that was
  /// shortened meanwhile, or cannot be read, has fewer.
  std::size_t Read(std::size_t offset, std::span<std::uint8_t> out) const;
  std::vector<std::uint8_t> Read(std::size_t offset, std::size_t count) const;

  /// An input: a regular file is read where it is asked for, up to `limit` bytes; anything else, and what
  /// cannot be opened, is left to `reader`, with `limitOfOthers`. Throws THostError as that does.
  static TStoredBytes OfInput(const std::string& path, std::size_t limit, ISourceReader& reader,
                              std::size_t limitOfOthers);

  class IBytes;

 private:
  std::shared_ptr<IBytes> bytes_;
};

}  // namespace velhost
