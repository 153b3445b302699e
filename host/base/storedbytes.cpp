#include "host/base/storedbytes.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <utility>
#include <vector>

namespace velhost {

class TStoredBytes::IBytes {
 public:
  virtual ~IBytes() = default;
  virtual std::size_t Size() const = 0;
  virtual std::size_t Read(std::size_t offset, std::span<std::uint8_t> out) = 0;
};

namespace {

constexpr std::size_t kReadAhead = 16384;

class TMemoryBytes : public TStoredBytes::IBytes {
 public:
  explicit TMemoryBytes(std::vector<std::uint8_t> bytes) : bytes_(std::move(bytes)) {}
  std::size_t Size() const override { return bytes_.size(); }
  std::size_t Read(std::size_t offset, std::span<std::uint8_t> out) override {
    if (offset >= bytes_.size()) return 0;
    const std::size_t count = std::min(out.size(), bytes_.size() - offset);
    std::copy_n(bytes_.begin() + static_cast<std::ptrdiff_t>(offset), count, out.begin());
    return count;
  }

 private:
  std::vector<std::uint8_t> bytes_;
};

// The collector reads ten bytes at a time, mostly in order, so a buffer saves nearly all system calls.
class TFileBytes : public TStoredBytes::IBytes {
 public:
  TFileBytes(TDescriptor file, std::size_t size) : file_(std::move(file)), size_(size) {}
  std::size_t Size() const override { return size_; }
  std::size_t Read(std::size_t offset, std::span<std::uint8_t> out) override {
    std::size_t done = 0;
    while (done < out.size() && offset + done < size_) {
      const std::size_t at = offset + done;
      if (at < start_ || at >= start_ + buffer_.size()) Fill(at);
      if (at >= start_ + buffer_.size()) break;
      const std::size_t count = std::min(out.size() - done, start_ + buffer_.size() - at);
      std::copy_n(buffer_.begin() + static_cast<std::ptrdiff_t>(at - start_), count,
                  out.begin() + static_cast<std::ptrdiff_t>(done));
      done += count;
    }
    return done;
  }

 private:
  void Fill(std::size_t at) {
    buffer_.resize(std::min(kReadAhead, size_ - at));
    start_ = at;
    ssize_t got = -1;
    do {
      got = pread(file_.Get(), buffer_.data(), buffer_.size(), static_cast<off_t>(at));
    } while (got < 0 && errno == EINTR);
    buffer_.resize(static_cast<std::size_t>(std::max<ssize_t>(got, 0)));
  }

  TDescriptor file_;
  std::size_t size_;
  std::vector<std::uint8_t> buffer_;
  std::size_t start_ = 0;  // of the buffer, in the file
};

}  // namespace

TStoredBytes::TStoredBytes(std::vector<std::uint8_t> bytes)
    : bytes_(std::make_shared<TMemoryBytes>(std::move(bytes))) {}
TStoredBytes::TStoredBytes(TDescriptor file, std::size_t size)
    : bytes_(std::make_shared<TFileBytes>(std::move(file), size)) {}

std::size_t TStoredBytes::Size() const { return bytes_ ? bytes_->Size() : 0; }

std::size_t TStoredBytes::Read(std::size_t offset, std::span<std::uint8_t> out) const {
  return bytes_ ? bytes_->Read(offset, out) : 0;
}

std::vector<std::uint8_t> TStoredBytes::Read(std::size_t offset, std::size_t count) const {
  std::vector<std::uint8_t> bytes(offset < Size() ? std::min(count, Size() - offset) : 0);
  bytes.resize(Read(offset, std::span(bytes)));
  return bytes;
}

TStoredBytes TStoredBytes::OfInput(const std::string& path, std::size_t limit, ISourceReader& reader,
                                   std::size_t limitOfOthers) {
  // Checked before opening: opening and closing a pipe would end its writer.
  struct stat status = {};
  TDescriptor file;
  if (stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode)) {
    file = TDescriptor(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  }
  if (file && fstat(file.Get(), &status) == 0 && S_ISREG(status.st_mode)) {
    const auto size = static_cast<std::size_t>(status.st_size);
    if (size > limit) ThrowTooLarge(path, limit);
    return {std::move(file), size};
  }
  const std::string content = reader.Read(path, limitOfOthers);
  return std::vector<std::uint8_t>(content.begin(), content.end());
}

namespace {

constexpr std::size_t kPiece = 65536;

}  // namespace

bool TLineReader::ReadMore() {
  buffer_.erase(0, std::exchange(start_, 0));
  const std::vector<std::uint8_t> piece = text_.Read(offset_, kPiece);
  offset_ += piece.size();
  buffer_.append(piece.begin(), piece.end());
  return !piece.empty();
}

std::optional<TLineReader::TLine> TLineReader::Next() {
  std::size_t seen = 0;  // bytes already searched for a newline
  while (true) {
    const std::size_t end = buffer_.find('\n', start_ + seen);
    const std::size_t size = std::min(end, buffer_.size()) - start_;
    if (end != std::string::npos || size > longest_) {
      const std::string_view line = std::string_view(buffer_).substr(start_, std::min(size, longest_ + 1));
      const std::size_t offset = Offset();
      start_ += line.size() + (size <= longest_ ? 1 : 0);
      return TLine{line, true, offset};
    }
    seen = size;
    if (ReadMore()) continue;
    if (size == 0) return std::nullopt;
    const std::size_t offset = Offset();
    start_ = buffer_.size();
    return TLine{std::string_view(buffer_).substr(buffer_.size() - size), false, offset};
  }
}

}  // namespace velhost
