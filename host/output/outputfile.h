// Where output goes: a descriptor, or a file that appears complete or not at all, in a folder that is held open.
#pragma once

#include <sys/stat.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "host/base/descriptor.h"
#include "host/base/hosterror.h"
#include "host/base/text.h"

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

/// The reader of a pipe has closed it. That is not an error and nobody is left to read a message, so the command ends
/// silently, with the status of a failed write.
class TClosedPipe : public THostError {
 public:
  explicit TClosedPipe(const std::string& name);
};

/// Makes writes to a closed pipe fail with TClosedPipe instead of ending the process. Affects the whole process; call
/// it before anything is written.
void IgnoreBrokenPipeSignal();

/// Writes to an open descriptor, with buffering. Handles partial writes, interruptions by signals and non-blocking
/// descriptors. Throws TClosedPipe, or THostError (kNotWritten) that names the target. The destructor writes nothing:
/// only Flush reports whether the writes succeeded.
class TDescriptorSink : public ITextSink {
 public:
  /// The descriptor is not owned. `name` is used in messages: "standard output".
  TDescriptorSink(int descriptor, std::string name);
  void Write(std::string_view text) override;
  void Flush() override;

 private:
  int descriptor_;
  std::string name_;
  std::string pending_;
};

/// A file that appears under its name on Commit, complete, or not at all.
///
/// Until then the text is in a nameless file in the same folder, of which nothing remains if the process is killed.
/// On file systems without nameless files it has a temporary name, which the destructor removes unless Commit was
/// called. An existing file is replaced by renaming. A new file has the permissions that the umask allows. An
/// existing file keeps its permissions except set-user-ID, set-group-ID and sticky, and loses some if its owner or
/// group cannot be kept. A symbolic link is kept, provided that the kernel follows it (see FindOutputPlace). An
/// existing target that is not a regular file (a device, a pipe, /dev/stdout, /dev/fd/N) is written to directly. The
/// folder is held open, so later changes to the path do not redirect the output.
class TOutputFile : public ITextSink {
 public:
  enum class EUnfinished { kNameless, kNamed };
  /// Throws THostError (kNotCreated) if the file cannot be created or must not be written.
  /// kNamed uses a temporary name even if the file system supports nameless files.
  explicit TOutputFile(const std::string& path, EUnfinished unfinished = EUnfinished::kNameless);
  /// Writes the file `name` in an open folder, which is not owned. Replaces anything of that name except a folder;
  /// never follows a link. `path` is used in messages.
  TOutputFile(int folder, const std::string& name, const std::string& path);
  ~TOutputFile() override;
  TOutputFile(const TOutputFile&) = delete;
  TOutputFile& operator=(const TOutputFile&) = delete;

  void Write(std::string_view text) override { sink_->Write(text); }
  /// Does not affect when the file appears.
  void Flush() override { sink_->Flush(); }
  /// Call once, after everything is written. Throws THostError (kNotWritten) and leaves the target unchanged.
  void Commit();

 private:
  TDescriptor OpenExisting() const;
  void OpenDirectly(TDescriptor descriptor);
  void OpenUnfinished(EUnfinished unfinished);
  mode_t FirstMode() const;
  bool OpenNameless();
  void OpenTemporary();
  bool TakeTemporaryName(const std::function<bool(const std::string&)>& take);
  bool GiveName(const std::string& name) const;
  bool NameAsTarget();
  void KeepAttributesOfTarget();
  void Discard() noexcept;
  [[noreturn]] void FailToCreate(const std::string& reason) const;
  [[noreturn]] void FailToWrite(int error) const;

  std::string path_;  ///< as given, used in messages
  TOutputPlace place_;
  std::string temporary_;  ///< in the place's folder; empty if there is none, and after Commit
  bool nameless_ = false;  ///< if neither nameless nor temporary, the target is written to directly
  TDescriptor descriptor_;
  std::unique_ptr<TDescriptorSink> sink_;
};

}  // namespace velhost
