// Where the instances of a collection go, kept apart from the progress line.
#pragma once

#include <memory>
#include <string>

#include "host/base/text.h"
#include "host/output/outputfile.h"
#include "host/output/progress.h"
#include "host/velhost/pager.h"

namespace velhost {

/// Whether the path given with -o means standard output: empty or "-".
bool IsStandardOutput(const std::string& path);

/// Standard output, or a file that appears complete at the end.
///
/// A progress line on the same terminal is removed whenever something is written, and comes back when the text has
/// ended a line. If standard output is a pipe, the program that reads it may write to the terminal at any time, so
/// the line stays away once something has been written. It also stays away once a pager runs.
class TOutputTarget {
 public:
  /// Standard output goes through the pager if one is given, which is not owned. Throws THostError (kNotCreated).
  explicit TOutputTarget(const std::string& path, TPager* pager = nullptr);
  ~TOutputTarget();
  TOutputTarget(const TOutputTarget&) = delete;
  TOutputTarget& operator=(const TOutputTarget&) = delete;

  /// The line is not owned and must outlive the target.
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
