// The server that a command works with: its service processor, machine type and clock.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "host/bmc/iserviceprocessor.h"
#include "host/bmc/record/recording.h"
#include "host/model/cimnamespace.h"
#include "host/model/hostservices.h"
#include "host/velhost/commandline.h"
#include "host/velhost/inputs.h"
#include "host/velhost/installation.h"

namespace velhost {

/// Which server a connection leads to. Empty texts are unknown.
struct TServerFacts {
  bool isSimulated = false;  ///< the answers are made up, in this run or in the recorded one
  std::string recorded{};    ///< when the recording was made that answers
  std::string serialNumber{};
  std::string uuid{};
};

class IServerConnection {
 public:
  virtual ~IServerConnection() = default;
  virtual IServiceProcessor& ServiceProcessor() = 0;
  /// The server's own machine type and clock.
  virtual IHostEnvironment& Environment() = 0;
  virtual TServerFacts Facts() const { return {}; }
  /// The first line of the recording that answers; null without one.
  virtual const TRecordingHeader* Recording() const { return nullptr; }
  /// Whether a node was given up during the run, so that the collection is only partial.
  virtual bool WasLost() const { return false; }
  /// A request that differs from the one to be replayed, in one line; empty if there was none.
  virtual std::string Mismatch() const { return {}; }
  /// Called after the collection, when everything collected has been printed. Throws THostError if the connection
  /// itself is at fault.
  virtual void CheckAfterwards() {}
};

/// What --sp names, by default "sim". Throws THostError (kInvalidArgument) for a malformed address and for service
/// processors that cannot be used together, without repeating a password.
std::vector<std::string> CheckedSpecs(const TCommonOptions& options);

/// Opens the servers that --sp names, by default the demo server. Throws THostError; sets the process's time zone for
/// a recording. If the run is stopped while a session on the network is being opened, returns a connection that never
/// answers and may have no machine type; if it is stopped while a file is read, throws TEndedReading. On the network
/// there may be several candidates for the machine type; the first that occurs in the schema's lists of them counts.
std::unique_ptr<IServerConnection> ConnectServer(const TCommonOptions& options, const TInstallation& installation,
                                                 TInputs& inputs, const TNamespace& cimNamespace);

/// A server with a known machine type and the system's clock.
class TServerEnvironment : public TSystemEnvironment {
 public:
  explicit TServerEnvironment(std::string machineType = {}) : machineType_(std::move(machineType)) {}
  std::string MachineType() override { return machineType_; }

 private:
  std::string machineType_;
};

/// The connection's environment, with the machine type of the command line if there is one.
class TSessionEnvironment : public IHostEnvironment {
 public:
  TSessionEnvironment(IHostEnvironment& server, std::optional<std::string> machineType)
      : server_(server), machineType_(std::move(machineType)) {}
  std::string MachineType() override { return machineType_ ? *machineType_ : server_.MachineType(); }
  TCIMDateTime LocalTime() override { return server_.LocalTime(); }

 private:
  IHostEnvironment& server_;
  std::optional<std::string> machineType_;
};

}  // namespace velhost
