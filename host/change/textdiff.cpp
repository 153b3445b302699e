#include "host/change/textdiff.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>

#include "host/base/text.h"
#include "host/base/utf8.h"

namespace velhost {

namespace {

// Comparing every line with every other takes this much memory and time at most: 16 MiB.
constexpr std::size_t kMostPairs = std::size_t{4} << 20U;

using TLines = std::vector<std::string_view>;

// Without their newlines. What follows the last newline is a line only if it is not empty.
TLines LinesOf(std::string_view text) {
  TLines lines;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    lines.push_back(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return lines;
}

// The lines between those that both texts begin with and those that both end with.
class TMiddle {
 public:
  TMiddle(const TLines& before, const TLines& after) : before_(before), after_(after) {
    const std::size_t least = std::min(before.size(), after.size());
    while (start_ < least && before[start_] == after[start_]) ++start_;
    beforeEnd_ = before.size();
    afterEnd_ = after.size();
    while (beforeEnd_ > start_ && afterEnd_ > start_ && before[beforeEnd_ - 1] == after[afterEnd_ - 1]) {
      --beforeEnd_;
      --afterEnd_;
    }
  }

  std::vector<TLineChange> Changes() {
    const std::size_t pairs = (beforeEnd_ - start_ + 1) * (afterEnd_ - start_ + 1);
    if (pairs <= kMostPairs) CountCommonLines();
    std::size_t b = start_;
    std::size_t a = start_;
    while (b < beforeEnd_ || a < afterEnd_) {
      const bool isCommon = !common_.empty() && b < beforeEnd_ && a < afterEnd_ && before_[b] == after_[a];
      if (isCommon) {
        ++b;
        ++a;
      } else if (b < beforeEnd_ && (a == afterEnd_ || common_.empty() || Common(b + 1, a) >= Common(b, a + 1))) {
        Add(false, b++, before_);
      } else {
        Add(true, a++, after_);
      }
    }
    return std::move(changes_);
  }

 private:
  // The most lines that the rests from b and from a have in common, in order.
  std::uint32_t& Common(std::size_t b, std::size_t a) {
    return common_[(b - start_) * (afterEnd_ - start_ + 1) + (a - start_)];
  }
  void CountCommonLines() {
    common_.assign((beforeEnd_ - start_ + 1) * (afterEnd_ - start_ + 1), 0);
    for (std::size_t b = beforeEnd_; b-- > start_;) {
      for (std::size_t a = afterEnd_; a-- > start_;) {
        Common(b, a) =
            before_[b] == after_[a] ? Common(b + 1, a + 1) + 1 : std::max(Common(b + 1, a), Common(b, a + 1));
      }
    }
  }
  void Add(bool isAdded, std::size_t index, const TLines& lines) {
    changes_.push_back({isAdded, index + 1, std::string(lines[index])});
  }

  const TLines& before_;
  const TLines& after_;
  std::size_t start_ = 0;
  std::size_t beforeEnd_ = 0;
  std::size_t afterEnd_ = 0;
  std::vector<std::uint32_t> common_;
  std::vector<TLineChange> changes_;
};

}  // namespace

bool IsPrintableText(std::string_view bytes) {
  for (std::size_t at = 0; at < bytes.size();) {
    const TCodePoint next = NextCodePoint(bytes, at);
    const bool isLayout = next.value == '\n' || next.value == '\t' || next.value == '\r';
    if (!next.valid || (IsUnsafe(next.value) && !isLayout)) return false;
    at += next.size;
  }
  return true;
}

std::vector<TLineChange> CompareLines(std::string_view before, std::string_view after) {
  const TLines beforeLines = LinesOf(before);
  const TLines afterLines = LinesOf(after);
  return TMiddle(beforeLines, afterLines).Changes();
}

TFileChange CompareBytes(std::string_view before, std::string_view after) {
  TFileChange change;
  change.beforeSize = before.size();
  change.afterSize = after.size();
  const auto [end, ignored] =
      std::mismatch(before.begin(), before.begin() + static_cast<std::ptrdiff_t>(std::min(before.size(), after.size())),
                    after.begin());
  change.firstDifference = static_cast<std::size_t>(end - before.begin());
  change.isText = IsPrintableText(before) && IsPrintableText(after);
  if (change.isText) change.lines = CompareLines(before, after);
  return change;
}

}  // namespace velhost
