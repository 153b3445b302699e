// Immutable bytes, in memory or in a file that is read on demand, and their lines.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
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

class VELHOST_API TLineReader {
 public:
  /// A line longer than `longest` bytes is returned as a whole line of its first `longest` + 1 bytes.
  TLineReader(TStoredBytes text, std::size_t longest) : text_(std::move(text)), longest_(longest) {}

  struct TLine {
    std::string_view text;  ///< without the newline; valid until the next call
    bool isWhole = true;    ///< false: the text ends without a newline
    std::size_t start = 0;  ///< its offset in the bytes
  };
  /// Empty after the last line.
  std::optional<TLine> Next();

 private:
  bool ReadMore();
  /// Of what has not been returned yet.
  std::size_t Offset() const { return offset_ - buffer_.size() + start_; }

  TStoredBytes text_;
  std::size_t longest_;
  std::size_t offset_ = 0;  // of the next read, in the text
  std::string buffer_;
  std::size_t start_ = 0;  // of what has not been returned yet, in the buffer
};

}  // namespace velhost
