// The server that a command works with: its service processor, machine type and clock.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "host/bmc/iserviceprocessor.h"
#include "host/model/hostservices.h"
#include "host/velhost/commandline.h"
#include "host/velhost/inputs.h"
#include "host/velhost/installation.h"

namespace velhost {

class IServerConnection {
 public:
  virtual ~IServerConnection() = default;
  virtual IServiceProcessor& ServiceProcessor() = 0;
  /// The server's own machine type and clock.
  virtual IHostEnvironment& Environment() = 0;
  /// Whether a node was given up during the run: what was collected is then only a part.
  virtual bool WasLost() const { return false; }
  /// What was asked for that was not recorded, in one line; empty where that never was.
  virtual std::string Mismatch() const { return {}; }
  /// Called after the collection: reports what is wrong with the connection itself by throwing
  /// THostError, once everything collected has been printed.
  virtual void CheckAfterwards() {}
};

/// Opens what --sp names, the demo server by default. Throws THostError; sets the process's time
/// zone for a replay. A run that is stopped while a session on the network is being opened gets a
/// connection that nothing answers on; one that is stopped while a file is read ends with TEndedReading.
std::unique_ptr<IServerConnection> ConnectServer(const TCommonOptions& options, const TInstallation& installation,
                                                 TInputs& inputs);

/// The connection's environment with the machine type of the command line, where there is one.
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
