#include "host/bmc/inband/inbandserviceprocessor.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <span>
#include <utility>

#include "host/base/hosterror.h"

namespace velhost {

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr std::size_t kCompletionCodeSize = 1;
constexpr const char* kLoadDriver =
    "If this server has a BMC, load its driver (modprobe ipmi_si; modprobe ipmi_devintf); "
    "otherwise choose another service processor, such as --sp lan:HOST";

const char* WhatSmbiosSays(const TSystemSmbios& smbios) {
  switch (smbios.status) {
    case ESmbiosStatus::kAbsent: return "this machine has no SMBIOS that could declare one";
    case ESmbiosStatus::kDenied: return "only root can read whether SMBIOS declares one";
    case ESmbiosStatus::kMalformed: return "the readable part of this machine's damaged SMBIOS declares none";
    default: return "SMBIOS declares none";
  }
}

// An empty name means every device that exists.
std::vector<std::string> WantedDevices(const std::vector<std::string>& devices, IIpmiDriver& driver) {
  const std::vector<std::string> all = driver.Devices();
  std::vector<std::string> wanted;
  for (const std::string& device : devices) {
    if (device.empty()) {
      wanted.insert(wanted.end(), all.begin(), all.end());
    } else {
      wanted.push_back(device);
    }
  }
  return wanted;
}

std::string Refused(const std::string& device, int error) {
  return "cannot open " + device + ": " + std::strerror(error) + "\n";
}

[[noreturn]] void ThrowNotOpened(const std::string& device, int error) {
  if (error == EACCES || error == EPERM) {
    throw THostError(
        EFailure::kDenied,
        Refused(device, error) + "Run velhost as root, or give this user read and write access to the device");
  }
  throw THostError(EFailure::kUnreachable, Refused(device, error) + kLoadDriver);
}

milliseconds Until(steady_clock::time_point end) {
  return std::max(milliseconds(0), std::chrono::ceil<milliseconds>(end - steady_clock::now()));
}

}  // namespace

TInbandServiceProcessor::TInbandServiceProcessor(std::shared_ptr<IIpmiDriver> driver,
                                                 const std::vector<std::string>& devices)
    : driver_(std::move(driver)) {
  for (const std::string& device : devices) OpenDevice(device);
}

TInbandServiceProcessor::TInbandServiceProcessor(std::shared_ptr<IIpmiDriver> driver)
    : driver_(std::move(driver)), declaredOnly_(true) {}

TInbandServiceProcessor::~TInbandServiceProcessor() { CloseAll(); }

void TInbandServiceProcessor::OpenDevice(const std::string& device) {
  const int descriptor = driver_->Open(device);
  if (descriptor < 0) {
    // The destructor does not run if the constructor throws.
    CloseAll();
    ThrowNotOpened(device, -descriptor);
  }
  descriptors_.push_back(descriptor);
}

void TInbandServiceProcessor::CloseAll() {
  for (const int descriptor : descriptors_) driver_->Close(descriptor);
  descriptors_.clear();
}

TDiscovery TInbandServiceProcessor::Discover() {
  TDiscovery found;
  found.bmcNodes = declaredOnly_ ? 1 : static_cast<int>(descriptors_.size());
  found.ipmiDriver = !descriptors_.empty();
  return found;
}

std::optional<TIpmiAnswer> TInbandServiceProcessor::SendIpmi(const TIpmiRequest& request, const TStopSignal& stop) {
  const int node = request.Node();
  if (node < 0 || static_cast<std::size_t>(node) >= descriptors_.size() || stop.IsStopped()) return std::nullopt;
  const int descriptor = descriptors_[static_cast<std::size_t>(node)];
  if (!Send(descriptor, request)) return std::nullopt;
  const auto end = steady_clock::now() + kInbandAnswerTime;
  while (WaitForMessage(descriptor, end, stop)) {
    if (auto answer = TakeAnswer(descriptor)) return answer;
  }
  return std::nullopt;
}

bool TInbandServiceProcessor::Send(int descriptor, const TIpmiRequest& request) {
  const auto requestData = request.Data();
  std::array<std::uint8_t, wire::TCommandBuffer::kMaxData> data{};
  std::copy(requestData.begin(), requestData.end(), data.begin());
  ipmi_system_interface_addr address = {};
  address.addr_type = IPMI_SYSTEM_INTERFACE_ADDR_TYPE;
  address.channel = IPMI_BMC_CHANNEL;
  address.lun = request.Lun();
  ipmi_req message = {};
  message.addr = reinterpret_cast<unsigned char*>(&address);
  message.addr_len = sizeof address;
  message.msgid = ++messageNumber_;
  message.msg.netfn = request.NetworkFunction();
  message.msg.cmd = request.Command();
  message.msg.data = data.data();
  message.msg.data_len = static_cast<unsigned short>(requestData.size());
  return driver_->Send(descriptor, message) == 0;
}

bool TInbandServiceProcessor::WaitForMessage(int descriptor, steady_clock::time_point end, const TStopSignal& stop) {
  std::array<pollfd, 2> waiters = {{{descriptor, POLLIN, 0}, {stop.Descriptor(), POLLIN, 0}}};
  while (!stop.IsStopped()) {
    const milliseconds left = Until(end);
    if (left == milliseconds(0)) return false;
    const int ready = driver_->Poll(waiters, std::min(left, stop.TimeLeft().value_or(left)));
    if (ready == -EINTR) continue;
    return ready > 0 && (waiters[0].revents & POLLIN) != 0 && !stop.IsStopped();
  }
  return false;
}

std::optional<TIpmiAnswer> TInbandServiceProcessor::TakeAnswer(int descriptor) {
  std::array<std::uint8_t, kCompletionCodeSize + wire::TCommandBuffer::kMaxData> data{};
  ipmi_addr address = {};
  ipmi_recv message = {};
  message.addr = reinterpret_cast<unsigned char*>(&address);
  message.addr_len = sizeof address;
  message.msg.data = data.data();
  message.msg.data_len = static_cast<unsigned short>(data.size());
  const int error = driver_->Receive(descriptor, message);
  if (error != 0 && error != EMSGSIZE) return std::nullopt;
  if (message.recv_type != IPMI_RESPONSE_RECV_TYPE || message.msgid != messageNumber_) return std::nullopt;
  const std::size_t size = std::min<std::size_t>(message.msg.data_len, data.size());
  if (size < kCompletionCodeSize) return std::nullopt;
  return TIpmiAnswer{data[0], {data.begin() + kCompletionCodeSize, data.begin() + static_cast<std::ptrdiff_t>(size)}};
}

std::string ParseInbandSpec(const std::string& spec) {
  if (spec == "inband") return {};
  const std::string prefix = "inband:/dev/";
  if (spec.starts_with(prefix)) {
    const auto devices = IpmiDevicesAmong({spec.substr(prefix.size())});
    if (!devices.empty()) return devices.front();
  }
  throw THostError(EFailure::kInvalidArgument,
                   "'" + spec + "' is not an IPMI device; expected inband or inband:/dev/ipmiN");
}

std::unique_ptr<IServiceProcessor> OpenInband(const std::vector<std::string>& devices, const TSystemSmbios& smbios,
                                              std::shared_ptr<IIpmiDriver> driver) {
  const std::vector<std::string> wanted = WantedDevices(devices, *driver);
  if (!wanted.empty()) return std::make_unique<TInbandServiceProcessor>(std::move(driver), wanted);
  if (smbios.facts.declaresIpmiDevice) return std::make_unique<TInbandServiceProcessor>(std::move(driver));
  throw THostError(EFailure::kUnreachable, std::string("there is no IPMI device /dev/ipmi*, and ") +
                                               WhatSmbiosSays(smbios) + "\n" + kLoadDriver);
}

TDiscovery DiscoverInband(const std::vector<std::string>& devices, const TSystemSmbios& smbios,
                          const std::shared_ptr<IIpmiDriver>& driver) {
  TDiscovery found;
  found.bmcNodes = static_cast<int>(WantedDevices(devices, *driver).size());
  found.ipmiDriver = found.bmcNodes > 0;
  if (found.bmcNodes == 0 && smbios.facts.declaresIpmiDevice) found.bmcNodes = 1;
  return found;
}

}  // namespace velhost
