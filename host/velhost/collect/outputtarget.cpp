#include "host/velhost/collect/outputtarget.h"

#include <string_view>

#include <sys/stat.h>
#include <unistd.h>

#include "host/velhost/messages.h"

namespace velhost {

namespace {

enum class EReader { kTerminal, kPipe, kNone };

EReader ReaderOfStandardOutput() {
  if (IsTerminal(STDOUT_FILENO)) return EReader::kTerminal;
  struct stat status {};
  const bool known = fstat(STDOUT_FILENO, &status) == 0;
  return known && (S_ISFIFO(status.st_mode) || S_ISSOCK(status.st_mode)) ? EReader::kPipe : EReader::kNone;
}

}  // namespace

bool IsStandardOutput(const std::string& path) { return path.empty() || path == "-"; }

// Unbuffered: the writers buffer their text themselves, and the progress line must be gone at the moment of the
// write.
class TOutputTarget::TStandardOutput : public ITextSink {
 public:
  explicit TStandardOutput(TPager* pager) : pager_(pager) {}
  void SetProgressLine(TProgressLine* line) { line_ = IsTerminal(STDERR_FILENO) ? line : nullptr; }
  void Write(std::string_view text) override {
    const bool inTheWay = line_ != nullptr && reader_ != EReader::kNone && !text.empty();
    if (inTheWay) line_->Hold();
    if (pager_ != nullptr) {
      pager_->Write(text);
    } else {
      sink_.Write(text);
      sink_.Flush();
    }
    const bool isOurs = reader_ == EReader::kTerminal && !IsPagerRunning();
    if (inTheWay && isOurs && text.ends_with('\n')) line_->Resume();
  }

 private:
  TPager* pager_;
  TDescriptorSink sink_{STDOUT_FILENO, "standard output"};
  EReader reader_ = ReaderOfStandardOutput();
  TProgressLine* line_ = nullptr;
};

TOutputTarget::TOutputTarget(const std::string& path, TPager* pager) {
  if (IsStandardOutput(path)) {
    standard_ = std::make_unique<TStandardOutput>(pager);
  } else {
    file_ = std::make_unique<TOutputFile>(path);
  }
}

TOutputTarget::~TOutputTarget() = default;

void TOutputTarget::SetProgressLine(TProgressLine* line) {
  if (standard_) standard_->SetProgressLine(line);
}

ITextSink& TOutputTarget::Sink() { return file_ ? static_cast<ITextSink&>(*file_) : *standard_; }

void TOutputTarget::Finish() {
  if (file_) file_->Commit();
}

}  // namespace velhost
