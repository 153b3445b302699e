// One run of ipmi_sim, with everything that it needs in a private folder.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <optional>
#include <string>

#include "host/base/descriptor.h"

namespace velhost {

struct TIpmiSimSettings {
  std::string program;     ///< the path of ipmi_sim
  std::string module;      ///< the path of velbmcsim.so
  std::string serverFile;  ///< an absolute path
  int node = 0;
  int port = 0;                   ///< UDP, of 127.0.0.1
  std::optional<int> serialPort;  ///< TCP, of 127.0.0.1
  std::string user;
  std::string password;
};

/// The configuration file of a run. Throws THostError (kInvalidArgument) for a path that ipmi_sim's
/// configuration has no way to write: one with quotes, backslashes, control characters, or too long.
std::string IpmiSimConfiguration(const TIpmiSimSettings& settings);

/// Removes itself, and what is in it, at the end of its life; when this process is killed too, by a
/// child that does nothing but wait for that.
class TPrivateFolder {
 public:
  /// In TMPDIR, else /tmp; for this user only. Throws THostError (kNotCreated).
  TPrivateFolder();
  ~TPrivateFolder();
  TPrivateFolder(const TPrivateFolder&) = delete;
  TPrivateFolder& operator=(const TPrivateFolder&) = delete;
  const std::string& Path() const { return path_; }

 private:
  void StartKeeper();

  std::string path_;
  pid_t keeper_ = -1;
  TDescriptor pipe_;  ///< whose closing the keeper waits for
};

/// A running ipmi_sim, which inherits no descriptor but standard streams of its own, and nothing of the
/// environment. It is ended with this object, and by the kernel if this process dies.
class TIpmiSim {
 public:
  /// Throws THostError (kNotCreated, kUnreachable).
  explicit TIpmiSim(const TIpmiSimSettings& settings);
  ~TIpmiSim();
  TIpmiSim(const TIpmiSim&) = delete;
  TIpmiSim& operator=(const TIpmiSim&) = delete;

  /// Becomes readable when it has ended.
  int Descriptor() const { return descriptor_.Get(); }
  bool HasEnded() const { return WaitForEnd(std::chrono::milliseconds(0)); }
  /// "with status 1" or "by signal 9, SIGKILL", once it has.
  std::string HowItEnded() const;
  /// What it has written so far, without the last line's end; for messages.
  std::string Output() const;

 private:
  void WriteFiles(const TIpmiSimSettings& settings) const;
  void Start(const TIpmiSimSettings& settings);
  bool WaitForEnd(std::chrono::milliseconds time) const;

  TPrivateFolder folder_;
  pid_t process_ = -1;
  TDescriptor descriptor_;
};

/// Whether something on 127.0.0.1:`port` answers IPMI over LAN within `time`.
bool AnswersIpmi(int port, std::chrono::milliseconds time);

}  // namespace velhost
