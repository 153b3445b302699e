// Where an output file goes: a folder, held open, and a name in it.
#pragma once

#include <sys/stat.h>

#include <optional>
#include <string>
#include <utility>

namespace velhost {

/// A descriptor that is closed with its owner; -1 is none.
class TOwnedDescriptor {
 public:
  TOwnedDescriptor() = default;
  explicit TOwnedDescriptor(int descriptor) : descriptor_(descriptor) {}
  TOwnedDescriptor(TOwnedDescriptor&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
  TOwnedDescriptor& operator=(TOwnedDescriptor&& other) noexcept;
  ~TOwnedDescriptor() { Close(); }

  int Get() const { return descriptor_; }
  bool IsOpen() const { return descriptor_ >= 0; }
  /// What close() returns; 0 for none.
  int Close() noexcept;

 private:
  int descriptor_ = -1;
};

/// A failure is thrown as this, for the caller to say which output it concerns.
struct TNoPlace {
  std::string reason;
};

struct TOutputPlace {
  TOwnedDescriptor folder;  ///< held, so that the folder is the same one until the end
  std::string name;         ///< in that folder, never a link when it was looked up
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
