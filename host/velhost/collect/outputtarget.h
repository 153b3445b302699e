// Where the instances of a collection go, and the progress line that stands in their way.
#pragma once

#include <memory>
#include <string>

#include "host/output/iinstancewriter.h"
#include "host/output/outputfile.h"
#include "host/output/progress.h"

namespace velhost {

/// Whether the path of -o means standard output: none, or "-".
bool IsStandardOutput(const std::string& path);

/// Standard output, or a file that appears at the end, whole.
///
/// With a progress line on the same terminal the line is away whenever something is written. It comes
/// back when the text has ended a line. Behind a pipe there may be a program that writes to the
/// terminal when it likes: once something went there the line stays away.
class TOutputTarget {
 public:
  /// Throws THostError (kNotCreated).
  explicit TOutputTarget(const std::string& path);
  ~TOutputTarget();
  TOutputTarget(const TOutputTarget&) = delete;
  TOutputTarget& operator=(const TOutputTarget&) = delete;

  /// Not owned, and outlives the target.
  void SetProgressLine(TProgressLine* line);
  ITextSink& Sink();
  /// Throws THostError (kNotWritten).
  void Finish();

 private:
  class TStandardOutput;
  std::unique_ptr<TStandardOutput> standard_;
  std::unique_ptr<TOutputFile> file_;
};

}  // namespace velhost
