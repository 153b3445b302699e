#include "host/output/textbuffer.h"

#include <cstddef>

namespace velhost {

void TTextBuffer::HandOver() {
  // Reset before the sink is called: if the sink throws, the text is not written a second time.
  const std::size_t size = size_;
  size_ = 0;
  if (size > 0) sink_.Write(std::string_view(text_.data(), size));
}

void TTextBuffer::Flush() {
  HandOver();
  sink_.Flush();
}

void TTextBuffer::AppendLong(std::string_view text) {
  HandOver();
  if (text.size() > kCapacity) return sink_.Write(text);
  Append(text);
}

}  // namespace velhost
