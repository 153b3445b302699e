// Where an output file goes: a folder, held open, and a name in it.
#pragma once

#include <sys/stat.h>

#include <optional>
#include <string>

#include "host/base/descriptor.h"

namespace velhost {

/// Thrown on failure; the caller adds which output is affected.
struct TNoPlace {
  std::string reason;
};

struct TOutputPlace {
  TDescriptor folder;  ///< held open, so that it stays the same folder until the end
  std::string name;    ///< in that folder; was not a link when it was looked up
  std::optional<struct stat> existing;
};

/// Opens the folder that contains the last part of the path. Throws TNoPlace.
TOutputPlace FolderAndName(const std::string& path);

/// Resolves the path, following symbolic links. The last link may dangle.
///
/// The kernel looks up each link before it is followed, so its rules apply: with fs.protected_symlinks set, another
/// user's link in a sticky folder that others may write to (/tmp) is refused. Here that includes a link in the path's
/// last folder. Throws TNoPlace.
TOutputPlace FindOutputPlace(const std::string& path);

}  // namespace velhost
