// Immutable bytes: in memory, or in a file that is read on demand.
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

/// Copies share the bytes. A file takes a descriptor and, after the first read, a buffer of 16 KiB, whatever its
/// size. For one thread at a time.
class VELHOST_API TStoredBytes {
 public:
  TStoredBytes() = default;
  TStoredBytes(std::vector<std::uint8_t> bytes);  // NOLINT(google-explicit-constructor): bytes are stored as they are
  /// `file` is a regular file, of which only the first `size` bytes are used.
  TStoredBytes(TDescriptor file, std::size_t size);

  std::size_t Size() const;
  /// Copies bytes from `offset` on until `out` is full or the data ends; returns their number. A file that has been
  /// truncated since, or cannot be read, yields fewer.
  std::size_t Read(std::size_t offset, std::span<std::uint8_t> out) const;
  std::vector<std::uint8_t> Read(std::size_t offset, std::size_t count) const;

  /// Opens an input. A regular file of up to `limit` bytes is read on demand; anything else, or one that cannot be
  /// opened, is left to `reader`, with `limitOfOthers`. Throws THostError like that reader.
  static TStoredBytes OfInput(const std::string& path, std::size_t limit, ISourceReader& reader,
                              std::size_t limitOfOthers);

  class IBytes;

 private:
  std::shared_ptr<IBytes> bytes_;
};

}  // namespace velhost
