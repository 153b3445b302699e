// Where output goes: a descriptor, or a file that is there whole or not at all.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "host/base/hosterror.h"
#include "host/output/iinstancewriter.h"
#include "host/output/outputplace.h"

namespace velhost {

/// The reader at the other end of a pipe has gone. Nothing is wrong and nobody is there to tell: the
/// command ends without a message. Its status is that of a failed write.
class TClosedPipe : public THostError {
 public:
  explicit TClosedPipe(const std::string& name);
};

/// Has writes into a closed pipe fail with TClosedPipe instead of ending the process. For the whole
/// process; to be called before anything is written.
void IgnoreBrokenPipeSignal();

/// Writes to an open descriptor, gathering small pieces. Partial writes, interruptions by signals and
/// a descriptor that does not block are dealt with. Throws TClosedPipe, or THostError (kNotWritten)
/// that names the target. Nothing is written on destruction: Flush says whether all went well.
class TDescriptorSink : public ITextSink {
 public:
  /// The descriptor is not owned. `name` is for messages: "standard output".
  TDescriptorSink(int descriptor, std::string name);
  void Write(std::string_view text) override;
  void Flush() override;

 private:
  int descriptor_;
  std::string name_;
  std::string pending_;
};

/// A file that appears under its name with Commit, with everything in it, or not at all.
///
/// Until then the text is in a file of the same folder that has no name, of which a killed process
/// leaves nothing; on file systems without such files it has a temporary name, which destruction
/// without a Commit removes. A file that exists is replaced by renaming. A new file has the permissions that
/// the process's mask allows, an existing one keeps its own but for set-user-ID, set-group-ID and sticky, and
/// with less where its owner or group cannot be kept. A symbolic link stays one, if the kernel follows it (see
/// FindOutputPlace). A target that exists and is not a regular file (a device, a pipe, /dev/stdout,
/// /dev/fd/N) is written to directly. The folder is held open: what happens to the path meanwhile leads
/// nowhere else.
class TOutputFile : public ITextSink {
 public:
  enum class EUnfinished { kNameless, kNamed };
  /// Throws THostError (kNotCreated) if the file cannot be created or must not be written.
  /// kNamed does without a nameless file, as file systems do that have none.
  explicit TOutputFile(const std::string& path, EUnfinished unfinished = EUnfinished::kNameless);
  /// The file `name` of an open folder, which is not owned. What has that name is replaced, whatever it is but
  /// a folder; a link is never followed. `path` is for messages.
  TOutputFile(int folder, const std::string& name, const std::string& path);
  ~TOutputFile() override;
  TOutputFile(const TOutputFile&) = delete;
  TOutputFile& operator=(const TOutputFile&) = delete;

  void Write(std::string_view text) override { sink_->Write(text); }
  /// Has no effect on when the file appears.
  void Flush() override { sink_->Flush(); }
  /// Once, after everything is written. Throws THostError (kNotWritten) and leaves the target as it
  /// was.
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

  std::string path_;  ///< as given, for messages
  TOutputPlace place_;
  std::string temporary_;  ///< in the place's folder; empty without one, and after Commit
  bool nameless_ = false;  ///< with neither of the two the target is written to directly
  TDescriptor descriptor_;
  std::unique_ptr<TDescriptorSink> sink_;
};

}  // namespace velhost
