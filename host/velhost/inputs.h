// The inputs of a run: files and pipes that the user named, and what kind of input each is. Reading ends when the run
// is stopped.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "host/base/sourcereader.h"
#include "host/base/storedbytes.h"
#include "host/bmc/stopsignal.h"

namespace velhost {

enum class EFileKind { kUnknown, kSchema, kServerFile, kRecording, kResult, kMofResult, kXmlResult, kXml, kCompressed };

/// How much of a file's beginning and end is examined.
inline constexpr std::size_t kFileKindBytes = 4096;

/// The kind as the content shows it, or else the suffix (.toml, .mof). `start` is the beginning of the content, and
/// `end` the end of it, which is needed to recognise a table; either may be all of it.
EFileKind KindOfFile(std::string_view path, std::string_view start, std::string_view end);

/// "a recording"; "a file" for kUnknown.
const char* NameOf(EFileKind kind);

/// Empty unless the file is certainly of another kind than the one wanted: "a.toml is a server file, not a schema; give
/// it as --sp sim:a.toml".
std::string WrongKindText(EFileKind wanted, const std::string& path, std::string_view start, std::string_view end);

/// A file and how messages refer to it.
struct TNamedFile {
  std::string name;  ///< "--log", "a file that --schema reads"
  std::string path;
};

/// The inputs of one run: the signal that stops their reading, and the files that were read.
class TInputs {
 public:
  /// Not owned.
  explicit TInputs(const TStopSignal& stop) : stop_(stop) {}
  TInputs(const TInputs&) = delete;
  TInputs& operator=(const TInputs&) = delete;

  const TStopSignal& Stop() const { return stop_; }
  /// Records a file that was read on behalf of `option` ("--schema").
  void Note(const std::string& option, const std::string& path) {
    files_.push_back({"a file that " + option + " reads", path});
  }
  const std::vector<TNamedFile>& Files() const { return files_; }

 private:
  const TStopSignal& stop_;
  std::vector<TNamedFile> files_;
};

/// What an input reader reads.
struct TInputUse {
  std::string what;    ///< "the schema"
  std::string option;  ///< "--schema"
  EFileKind kind;      ///< kUnknown: any kind
  bool mayBePipe = true;
};

/// Reads one input and all of its files. Throws TEndedReading for a named file that is certainly of another kind
/// ("a.toml is a server file, not a schema; give it as --sp sim:a.toml"), and when the run has been stopped
/// ("interrupted while reading the schema; nothing was collected").
class TInputReader : public TFileReader {
 public:
  /// `paths` are the paths that the user named. The inputs are not owned.
  TInputReader(TInputs& inputs, TInputUse use, const std::vector<std::string>& paths);
  std::string Read(const std::string& path, std::size_t limit) override;
  /// TStoredBytes::OfInput of the path, which is checked and recorded as in Read.
  TStoredBytes Open(const std::string& path, std::size_t limit, std::size_t limitOfOthers);
  void CheckStop() override;

 private:
  void NoteAndJudge(const std::string& path, std::string_view start, std::string_view end);

  TInputs& inputs_;
  TInputUse use_;
  std::vector<std::string> paths_;
};

}  // namespace velhost
