// Where text goes: a file, standard output, a string.
#pragma once

#include <string>
#include <string_view>

namespace velhost {

/// Takes text piece by piece. Write throws THostError when it cannot.
class ITextSink {
 public:
  virtual ~ITextSink() = default;
  virtual void Write(std::string_view text) = 0;
  /// Passes on what a sink may still hold, so that a reader at the other end sees it now. The forms
  /// that promise an instance at its commit call this after each one.
  virtual void Flush() {}
};

/// Keeps what is written.
class TStringSink : public ITextSink {
 public:
  void Write(std::string_view text) override { text_ += text; }
  const std::string& Text() const { return text_; }

 private:
  std::string text_;
};

}  // namespace velhost
