#include "host/base/secret.h"

#include <sys/prctl.h>

#include <algorithm>
#include <cstring>
#include <mutex>

namespace velhost {

namespace {

/// Makes the process undumpable; the last one to be destroyed restores the previous state.
class TUndumpable {
 public:
  TUndumpable() {
    const std::lock_guard lock(Mutex());
    if (count_++ > 0) return;
    before_ = prctl(PR_GET_DUMPABLE);
    prctl(PR_SET_DUMPABLE, 0);
  }
  ~TUndumpable() {
    const std::lock_guard lock(Mutex());
    // A process may only set 0 and 1.
    if (--count_ == 0 && before_ == 1) prctl(PR_SET_DUMPABLE, 1);
  }
  TUndumpable(const TUndumpable&) = delete;
  TUndumpable& operator=(const TUndumpable&) = delete;

 private:
  static std::mutex& Mutex() {
    static std::mutex mutex;
    return mutex;
  }
  inline static int count_ = 0;
  inline static int before_ = 0;
};

}  // namespace

class TSecret::TBuffer {
 public:
  explicit TBuffer(std::string_view text) : size_(text.size()), text_(std::make_unique<char[]>(size_ + 1)) {
    std::copy(text.begin(), text.end(), text_.get());
  }
  ~TBuffer() { explicit_bzero(text_.get(), size_); }
  TBuffer(const TBuffer&) = delete;
  TBuffer& operator=(const TBuffer&) = delete;
  const char* Text() const { return text_.get(); }
  std::size_t Size() const { return size_; }

 private:
  const TUndumpable undumpable_;  // constructed before the text, destroyed after it
  std::size_t size_;
  std::unique_ptr<char[]> text_;
};

TSecret::TSecret(std::string_view text) : buffer_(std::make_shared<const TBuffer>(text)) {}

const char* TSecret::Text() const { return buffer_->Text(); }

std::size_t TSecret::Size() const { return buffer_->Size(); }

void Wipe(std::string& text) {
  text.resize(text.capacity());
  explicit_bzero(text.data(), text.size());
  text.clear();
}

}  // namespace velhost
