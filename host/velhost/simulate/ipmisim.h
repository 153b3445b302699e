// One run of ipmi_sim, with all its files in a private folder, and the FRU inventory that it serves.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/base/descriptor.h"

namespace velhost {

struct TIpmiSimSettings {
  std::string program;     ///< the path of ipmi_sim
  std::string module;      ///< the path of velbmcsim.so
  std::string serverFile;  ///< an absolute path
  std::string machineType;
  int node = 0;
  int port = 0;                   ///< UDP, of 127.0.0.1
  std::optional<int> serialPort;  ///< TCP, of 127.0.0.1
  std::string user;
  std::string password;
};

/// The configuration file of a run. Throws THostError (kInvalidArgument) for a path that ipmi_sim's configuration
/// cannot express: one that has quotes, backslashes or control characters, or is too long.
std::string IpmiSimConfiguration(const TIpmiSimSettings& settings);
/// The commands that set up the simulated BMC: its device, and FRU 0 with the machine type.
std::string IpmiSimCommands(const TIpmiSimSettings& settings);

/// A folder that is removed with its content on destruction. If this process is killed, a child process that waits
/// for this removes it.
class TPrivateFolder {
 public:
  /// Created in TMPDIR, else in /tmp, for this user only. Throws THostError (kNotCreated).
  TPrivateFolder();
  ~TPrivateFolder();
  TPrivateFolder(const TPrivateFolder&) = delete;
  TPrivateFolder& operator=(const TPrivateFolder&) = delete;
  const std::string& Path() const { return path_; }

 private:
  void StartKeeper();

  std::string path_;
  pid_t keeper_ = -1;
  TDescriptor pipe_;  ///< the keeper waits until it is closed
};

/// A running ipmi_sim. It inherits neither descriptors nor environment, and has standard streams of its own. The
/// destructor ends it; the kernel does if this process dies.
class TIpmiSim {
 public:
  /// Throws THostError (kNotCreated, kUnreachable).
  explicit TIpmiSim(const TIpmiSimSettings& settings);
  ~TIpmiSim();
  TIpmiSim(const TIpmiSim&) = delete;
  TIpmiSim& operator=(const TIpmiSim&) = delete;

  /// Becomes readable when ipmi_sim has ended.
  int Descriptor() const { return descriptor_.Get(); }
  bool HasEnded() const { return WaitForEnd(std::chrono::milliseconds(0)); }
  /// "exit status 1" or "signal 9, SIGKILL", once it has ended.
  std::string HowItEnded() const;
  /// Its output so far, without the last newline; for messages.
  std::string Output() const;

 private:
  void WriteFiles(const TIpmiSimSettings& settings) const;
  void Start(const TIpmiSimSettings& settings);
  bool WaitForEnd(std::chrono::milliseconds time) const;

  TPrivateFolder folder_;
  pid_t process_ = -1;
  TDescriptor descriptor_;
};

/// Whether something at 127.0.0.1:`port` answers IPMI over LAN within `time`.
bool AnswersIpmi(int port, std::chrono::milliseconds time);

/// An inventory with a product area alone, whose part number is the machine type (its first 63 bytes). Manufacturer and
/// product name have no digits, so that no client takes them for a machine type.
std::vector<std::uint8_t> FruInventory(const std::string& machineType);

}  // namespace velhost
