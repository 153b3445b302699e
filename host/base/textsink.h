// Destinations of text: a file, standard output, a string.
#pragma once

#include <string>
#include <string_view>

namespace velhost {

/// Receives text piece by piece. Write throws THostError on failure.
class ITextSink {
 public:
  virtual ~ITextSink() = default;
  virtual void Write(std::string_view text) = 0;
  /// Passes on anything buffered, so that a reader at the other end sees it now. Output forms that promise each
  /// instance at its commit call this after each one.
  virtual void Flush() {}
};

/// Collects what is written.
class TStringSink : public ITextSink {
 public:
  void Write(std::string_view text) override { text_ += text; }
  const std::string& Text() const { return text_; }

 private:
  std::string text_;
};

}  // namespace velhost
