// Where an output file goes: a folder, held open, and a name in it.
#pragma once

#include <sys/stat.h>

#include <optional>
#include <string>

#include "host/base/descriptor.h"

namespace velhost {

/// A failure is thrown as this, for the caller to say which output it concerns.
struct TNoPlace {
  std::string reason;
};

struct TOutputPlace {
  TDescriptor folder;  ///< held, so that the folder is the same one until the end
  std::string name;    ///< in that folder, never a link when it was looked up
  std::optional<struct stat> existing;
};

/// Opens the folder that holds the path's last part. Throws TNoPlace.
TOutputPlace FolderAndName(const std::string& path);

/// The place that the path leads to, through symbolic links, of which the last may lead to nothing.
///
/// The kernel looks up each link before it is followed, so that its rules hold: in a folder that is sticky
/// and that others may write to (/tmp), a link of another user is refused where fs.protected_symlinks is
/// set, here also as the last folder of the path. Throws TNoPlace.
TOutputPlace FindOutputPlace(const std::string& path);

}  // namespace velhost
