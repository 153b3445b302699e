// Capture files, raw, in a folder.
#pragma once

#include <optional>
#include <string>

#include "host/output/capturefile.h"

namespace NKROVEL20 {

/// "node1-cpu_err-0.bin", from the instance's SourceNode, FileName and RecordID. Slashes and unsafe
/// characters (see IsUnsafe) become underscores, and each part is cut to 80 bytes.
std::string CaptureFileName(const TCaptureFile& capture);

class TCaptureFolder {
 public:
  /// Creates the folder where it is not there; its parent has to be. Throws THostError (kCannotCreate).
  explicit TCaptureFolder(const std::string& path);

  /// Writes the capture file that the instance holds and returns its path; empty for an instance that
  /// holds none (see CaptureFileOf). The file is there whole or not at all, and takes the place of one
  /// of the same name. Throws THostError (kCannotCreate, kWriteFailed) that names the file.
  std::optional<std::string> Write(const TInstance& instance) const;

 private:
  std::string path_;
};

}  // namespace NKROVEL20
