// This server's own BMC nodes, reached through the Linux IPMI driver.
#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/base/api.h"
#include "host/bmc/inband/ipmidriver.h"
#include "host/bmc/iserviceprocessor.h"
#include "host/bmc/smbios/smbios.h"

namespace velhost {

/// How long an answer may take. The driver gives up on a BMC's system interface after about the same time.
inline constexpr std::chrono::milliseconds kInbandAnswerTime{5000};

/// One node per opened device, in order. Dot commands are not supported. Nothing is retried.
///
/// An answer is lost if the driver refuses the request, if none comes within kInbandAnswerTime, or if the run is
/// stopped meanwhile. The answer to a lost request may still arrive during a later exchange; it is recognised by its
/// message number and dropped. If the driver itself makes up a completion code for a silent BMC (0xC3, 0xFF), that
/// code is the answer: it cannot be told apart from one that the BMC sent.
class VELHOST_API TInbandServiceProcessor : public IServiceProcessor {
 public:
  /// Opens each device. Throws THostError: kDenied if access is refused, otherwise kUnreachable.
  TInbandServiceProcessor(std::shared_ptr<IIpmiDriver> driver, const std::vector<std::string>& devices);
  /// For a server that declares an IPMI device but has none to open: one node that never answers, and no driver.
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
  /// Waits for a message; false if none will come.
  bool WaitForMessage(int descriptor, std::chrono::steady_clock::time_point end, const TStopSignal& stop);
  /// Receives one message from the driver; empty unless it answers the latest request.
  std::optional<TIpmiAnswer> TakeAnswer(int descriptor);

  std::shared_ptr<IIpmiDriver> driver_;
  std::vector<int> descriptors_;
  bool declaredOnly_ = false;
  long messageNumber_ = 0;
};

/// The device in "inband:/dev/ipmiN"; empty for "inband". Throws THostError (kInvalidArgument) for anything else.
VELHOST_API std::string ParseInbandSpec(const std::string& spec);

/// Opens the devices in order; an empty name means every device that exists. Throws THostError: kDenied if access is
/// refused; kUnreachable if a device cannot be opened, or if every device is requested, none exists, and `smbios`
/// does not declare one either.
VELHOST_API std::unique_ptr<IServiceProcessor> OpenInband(const std::vector<std::string>& devices,
                                                          const TSystemSmbios& smbios,
                                                          std::shared_ptr<IIpmiDriver> driver = LinuxIpmiDriver());

/// What OpenInband would find, without opening a device. If there is none, nothing is found.
VELHOST_API TDiscovery DiscoverInband(const std::vector<std::string>& devices, const TSystemSmbios& smbios,
                                      const std::shared_ptr<IIpmiDriver>& driver = LinuxIpmiDriver());

}  // namespace velhost
