// Capture files, raw, in a folder.
#pragma once

#include <optional>
#include <string>

#include "host/output/capturefile.h"
#include "host/output/outputplace.h"

namespace velhost {

/// "node1-cpu_err-0.bin", from the instance's SourceNode, FileName and RecordID. Slashes and unsafe
/// characters (see IsUnsafe) become underscores, and each part is cut to 80 bytes.
std::string CaptureFileName(const TCaptureFile& capture);

class TCaptureFolder {
 public:
  /// Creates the folder if it does not exist; its parent has to. It is held open, so that all files go into
  /// the same one. Throws THostError (kCannotCreate), also if the path is a link that the kernel refuses to
  /// follow.
  explicit TCaptureFolder(const std::string& path);

  /// Writes the capture file that the instance holds and returns its path; empty for an instance that
  /// holds none (see CaptureFileOf). The file is there whole or not at all, and takes the place of
  /// whatever has its name: a link is replaced and never followed. Throws THostError (kCannotCreate, kWriteFailed) that
  /// names the file.
  std::optional<std::string> Write(const TInstance& instance) const;

 private:
  [[noreturn]] void FailToCreate(const std::string& reason) const;

  std::string path_;
  TDescriptor folder_;
};

}  // namespace velhost
