#include "host/bmc/inband/ipmidriver.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <filesystem>
#include <string_view>
#include <utility>

#include "host/base/digits.h"

namespace velhost {

namespace {

constexpr std::string_view kPrefix = "ipmi";
constexpr std::size_t kMaxDigits = 6;  // minor numbers have 20 bits

int Control(int descriptor, unsigned long request, void* argument) {
  return ioctl(descriptor, request, argument) == 0 ? 0 : errno;
}

class TLinuxIpmiDriver : public IIpmiDriver {
 public:
  std::vector<std::string> Devices() override {
    std::vector<std::string> names;
    // Not the overload with an error code: its iterator would still end the process if memory ran out while
    // advancing.
    try {
      for (const auto& entry : std::filesystem::directory_iterator("/dev")) {
        names.push_back(entry.path().filename().string());
      }
    } catch (const std::filesystem::filesystem_error&) {
      return IpmiDevicesAmong(names);  // those read so far
    }
    return IpmiDevicesAmong(names);
  }
  int Open(const std::string& device) override {
    const int descriptor = open(device.c_str(), O_RDWR | O_CLOEXEC | O_NONBLOCK);
    return descriptor >= 0 ? descriptor : -errno;
  }
  void Close(int descriptor) override { close(descriptor); }
  int Send(int descriptor, ipmi_req& request) override { return Control(descriptor, IPMICTL_SEND_COMMAND, &request); }
  int Receive(int descriptor, ipmi_recv& message) override {
    return Control(descriptor, IPMICTL_RECEIVE_MSG_TRUNC, &message);
  }
  int Poll(std::span<pollfd> descriptors, std::chrono::milliseconds time) override {
    const int ready = poll(descriptors.data(), descriptors.size(), static_cast<int>(time.count()));
    return ready >= 0 ? ready : -errno;
  }
};

}  // namespace

IIpmiDriver::~IIpmiDriver() = default;

std::shared_ptr<IIpmiDriver> LinuxIpmiDriver() { return std::make_shared<TLinuxIpmiDriver>(); }

std::vector<std::string> IpmiDevicesAmong(const std::vector<std::string>& names) {
  std::vector<std::pair<int, std::string>> found;
  for (const std::string& name : names) {
    if (!name.starts_with(kPrefix)) continue;
    const std::string digits = name.substr(kPrefix.size());
    const bool numeric = std::all_of(digits.begin(), digits.end(), IsDigit);
    if (digits.empty() || digits.size() > kMaxDigits || !numeric) continue;
    found.emplace_back(std::stoi(digits), "/dev/" + name);
  }
  std::sort(found.begin(), found.end());
  std::vector<std::string> devices;
  devices.reserve(found.size());
  for (auto& [number, device] : found) devices.push_back(std::move(device));
  return devices;
}

}  // namespace velhost
