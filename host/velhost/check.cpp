// velhost check: reports the errors and warnings in schemas, server files and recordings.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <limits>
#include <map>
#include <optional>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "host/base/sourcereader.h"
#include "host/base/storedbytes.h"
#include "host/base/textdiagnostic.h"
#include "host/bmc/record/checkedrecording.h"
#include "host/bmc/sim/serverfile.h"
#include "host/schema/schemacheck.h"
#include "host/velhost/inputs.h"
#include "host/velhost/messages.h"
#include "host/velhost/pager.h"
#include "host/velhost/schemaloading.h"
#include "host/velhost/verbs.h"

namespace velhost {

namespace {

namespace fs = std::filesystem;

std::string TextOf(const std::vector<std::uint8_t>& bytes) { return {bytes.begin(), bytes.end()}; }

/// Reads the files. A pipe can be read only once, so its content is kept when its kind is determined.
class TCheckReader : public TInputReader {
 public:
  TCheckReader(TInputs& inputs, const std::vector<std::string>& paths)
      : TInputReader(inputs, {"the files", "check", EFileKind::kUnknown}, paths) {}

  EFileKind KindOf(const std::string& path) {
    std::error_code ignored;
    if (fs::is_directory(path, ignored)) return EFileKind::kSchema;
    const TStoredBytes bytes =
        TStoredBytes::OfInput(path, std::numeric_limits<std::size_t>::max(), *this, kLargestRecordingOfAPipe);
    if (!fs::is_regular_file(path, ignored)) pipes_[path] = bytes;
    const std::string start = TextOf(bytes.Read(0, kFileKindBytes));
    const std::size_t endSize = std::min(bytes.Size(), kFileKindBytes);
    const EFileKind kind = KindOfFile(path, start, TextOf(bytes.Read(bytes.Size() - endSize, endSize)));
    if (kind != EFileKind::kUnknown) return kind;
    return start.starts_with('{') ? EFileKind::kRecording : EFileKind::kSchema;
  }

  TStoredBytes OpenRecording(const std::string& path) {
    const auto pipe = pipes_.find(path);
    return pipe == pipes_.end() ? TCheckedRecording::Open(path, *this) : pipe->second;
  }

  std::string Read(const std::string& path, std::size_t limit) override {
    const auto pipe = pipes_.find(path);
    isPipe_ = pipe != pipes_.end();
    if (!isPipe_) return TInputReader::Read(path, limit);
    if (pipe->second.Size() <= limit) return TextOf(pipe->second.Read(0, limit));
    ThrowTooLarge(path, limit);
  }
  bool LiesIn(const std::string& folder) override { return isPipe_ || TInputReader::LiesIn(folder); }

 private:
  std::map<std::string, TStoredBytes> pipes_;
  bool isPipe_ = false;  // whether the latest one read is one of them
};

struct TCheckedFile {
  std::string path;
  EFileKind kind;
};

bool IsMof(const TCheckedFile& file) { return file.kind == EFileKind::kSchema || file.kind == EFileKind::kMofResult; }

TTextDiagnostic AboutFile(const std::string& path, const std::string& message) {
  return {EDiagnosticSeverity::kError, {path, 0, 0}, message, {}};
}

TTextDiagnostic WrongKind(const TCheckedFile& file) {
  std::string message = std::string("found ") + NameOf(file.kind) + ", expected a schema, server file or recording";
  if (file.kind == EFileKind::kResult) message += "; \"velhost collect --record FILE\" makes a recording";
  if (file.kind == EFileKind::kCompressed) message += "; bundles cannot be read yet";
  return AboutFile(file.path, message);
}

void CheckOne(const TCheckedFile& file, TCheckReader& reader, TCheckFindings& findings) {
  try {
    if (file.kind == EFileKind::kServerFile) {
      ReadServerFile(file.path, reader);
    } else if (file.kind == EFileKind::kRecording) {
      const TCheckedRecording recording(file.path, reader.OpenRecording(file.path), &reader);
      if (const auto warning = recording.CutWarning()) findings.Add(*warning);
    } else {
      findings.Add(WrongKind(file));
    }
  } catch (const TDiagnosedError& error) {
    findings.Add(error.Diagnostic());
  }
}

// A result in MOF is read together with its schema. Without it, every instance would be of an undeclared class.
void CheckMof(const std::vector<TCheckedFile>& files, TCheckReader& reader, TCheckFindings& findings) {
  std::vector<std::string> paths;
  bool hasSchema = false;
  for (const TCheckedFile& file : files) {
    if (!IsMof(file)) continue;
    paths.push_back(file.path);
    hasSchema = hasSchema || file.kind == EFileKind::kSchema;
  }
  if (hasSchema) return findings.Add(CheckSchema(paths, reader));
  for (const std::string& path : paths) {
    findings.Add(AboutFile(path, std::string("found ") + NameOf(EFileKind::kMofResult) +
                                     " without its schema, expected the schema's files too"));
  }
}

/// Reads each server file and each recording by itself, as a collection would, and all MOF files and folders together
/// as one schema, in the place of the first of them. What the readers report are the findings; so is a file of
/// another kind. The content determines the kind, then the suffix .toml; anything else is MOF. Throws THostError if a
/// path cannot be read.
TCheckFindings CheckFiles(const std::vector<std::string>& paths, TInputs& inputs) {
  TCheckReader reader(inputs, paths);
  std::vector<TCheckedFile> files;
  for (const std::string& path : paths) files.push_back({path, reader.KindOf(path)});
  TCheckFindings findings;
  bool isMofChecked = false;
  for (const TCheckedFile& file : files) {
    if (!IsMof(file)) {
      CheckOne(file, reader, findings);
    } else if (!isMofChecked) {
      CheckMof(files, reader, findings);
      isMofChecked = true;
    }
  }
  return findings;
}

TCheckFindings FindingsOf(const TCommandLine& commandLine, const TInstallation& installation) {
  const TStopSignal stop;
  TInputs inputs(stop);
  if (!commandLine.check.files.empty()) return CheckFiles(commandLine.check.files, inputs);
  const std::vector<std::string> paths = SchemaPaths(commandLine.common, installation);
  TInputReader reader(inputs, {"the schema", "--schema", EFileKind::kSchema}, paths);
  return CheckSchema(paths, reader);
}

}  // namespace

EExitStatus CheckSchemaFiles(const TCommandLine& commandLine, const TInstallation& installation) {
  const TCheckFindings findings = FindingsOf(commandLine, installation);
  TStringSink text;
  if (commandLine.check.json) {
    WriteFindingsAsJson(findings, text);
    WriteToStandardOutput(text.Text());
  } else {
    WriteFindingsAsText(findings, text);
    WriteForPeople(commandLine.common, SafeLines(text.Text()));
  }
  // Warnings count too: a file passes only if it has no findings.
  return findings.findings.empty() ? EExitStatus::kComplete : EExitStatus::kBadData;
}

}  // namespace velhost
