// The lines of a text, one after the other, with no more of it in memory than the longest of them.
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
  /// Of a line longer than `longest` bytes the first `longest` + 1 come as a whole one.
  TLineReader(TStoredBytes text, std::size_t longest) : text_(std::move(text)), longest_(longest) {}

  struct TLine {
    std::string_view text;  ///< without the newline; until the next call
    bool isWhole = true;    ///< false: the text ends without a newline
  };
  /// Empty after the last line.
  std::optional<TLine> Next();

 private:
  bool ReadMore();

  TStoredBytes text_;
  std::size_t longest_;
  std::size_t offset_ = 0;  // of what is read next, in the text
  std::string buffer_;
  std::size_t start_ = 0;  // of what was not given out, in the buffer
};

}  // namespace velhost
