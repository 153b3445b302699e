// This server's own BMC nodes, through the Linux IPMI driver.
#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/base/api.h"
#include "host/bmc/inband/ipmidriver.h"
#include "host/bmc/iserviceprocessor.h"
#include "host/bmc/smbios/systemsmbios.h"

namespace velhost {

/// How long one answer may take. The driver gives up on a BMC's system interface after about as long.
inline constexpr std::chrono::milliseconds kInbandAnswerTime{5000};

/// One node per opened device, in their order. Takes no dot commands. Nothing is retried.
///
/// An answer is lost when the driver refuses the request, none comes within
/// kInbandAnswerTime, or the run is stopped meanwhile. The answer to a lost request may still arrive
/// during a later exchange; it is told by its message number and dropped. Where the driver itself
/// makes up a completion code for a BMC that is silent (0xC3, 0xFF), that code is the answer: there
/// is no telling it from one that the BMC gave.
class VELHOST_API TInbandServiceProcessor : public IServiceProcessor {
 public:
  /// Opens each device. Throws THostError: kDenied where access is refused, else kUnreachable.
  TInbandServiceProcessor(std::shared_ptr<IIpmiDriver> driver, const std::vector<std::string>& devices);
  /// No device at all, but a server that declares one: a node that never answers, and no driver.
  explicit TInbandServiceProcessor(std::shared_ptr<IIpmiDriver> driver);
  ~TInbandServiceProcessor() override;
  TInbandServiceProcessor(const TInbandServiceProcessor&) = delete;
  TInbandServiceProcessor& operator=(const TInbandServiceProcessor&) = delete;

  TDiscovery Discover() override;
  std::optional<TIpmiAnswer> SendIpmi(const TIpmiRequest& request, const TStopSignal& stop) override;

 private:
  void OpenDevice(const std::string& device);
  void CloseAll();
  bool Send(int descriptor, const TIpmiRequest& request);
  /// Waits for a message; false when none will come any more.
  bool WaitForMessage(int descriptor, std::chrono::steady_clock::time_point end, const TStopSignal& stop);
  /// Takes one message from the driver; empty unless it answers the latest request.
  std::optional<TIpmiAnswer> TakeAnswer(int descriptor);

  std::shared_ptr<IIpmiDriver> driver_;
  std::vector<int> descriptors_;
  bool declaredOnly_ = false;
  long messageNumber_ = 0;
};

/// The device of "inband:/dev/ipmiN", empty for "inband". Throws THostError (kInvalidArgument) for anything else.
VELHOST_API std::string ParseInbandSpec(const std::string& spec);

/// Opens the devices in order; an empty name stands for every device there is. Throws THostError:
/// kDenied where access is refused; kUnreachable where a device cannot be opened, or where all
/// are asked for, there is none, and `smbios` declares no IPMI device either.
VELHOST_API std::unique_ptr<IServiceProcessor> OpenInband(const std::vector<std::string>& devices,
                                                          const TSystemSmbios& smbios,
                                                          std::shared_ptr<IIpmiDriver> driver = LinuxIpmiDriver());

}  // namespace velhost
