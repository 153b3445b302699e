// Reads a text line by line, keeping no more of it in memory than its longest line.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "host/base/api.h"
#include "host/base/storedbytes.h"

namespace velhost {

class VELHOST_API TLineReader {
 public:
  /// A line longer than `longest` bytes is returned as a whole line of its first `longest` + 1 bytes.
  TLineReader(TStoredBytes text, std::size_t longest) : text_(std::move(text)), longest_(longest) {}

  struct TLine {
    std::string_view text;  ///< without the newline; valid until the next call
    bool isWhole = true;    ///< false: the text ends without a newline
  };
  /// Empty after the last line.
  std::optional<TLine> Next();

 private:
  bool ReadMore();

  TStoredBytes text_;
  std::size_t longest_;
  std::size_t offset_ = 0;  // of the next read, in the text
  std::string buffer_;
  std::size_t start_ = 0;  // of what has not been returned yet, in the buffer
};

}  // namespace velhost
