// The system calls of the Linux IPMI driver, as an interface that tests implement without a device.
#pragma once

#include <linux/ipmi.h>
#include <poll.h>

#include <chrono>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "host/base/api.h"

namespace velhost {

class VELHOST_API IIpmiDriver {
 public:
  virtual ~IIpmiDriver();
  /// Every existing /dev/ipmiN, in the order of N.
  virtual std::vector<std::string> Devices() = 0;
  /// Returns a descriptor, or the negative error number.
  virtual int Open(const std::string& device) = 0;
  virtual void Close(int descriptor) = 0;
  /// IPMICTL_SEND_COMMAND and IPMICTL_RECEIVE_MSG_TRUNC; return 0 or the error number. A message longer than its
  /// buffer is truncated, removed from the driver's queue and reported with EMSGSIZE.
  virtual int Send(int descriptor, ipmi_req& request) = 0;
  virtual int Receive(int descriptor, ipmi_recv& message) = 0;
  /// poll(2): returns the number of ready descriptors, 0 on time-out, or the negative error number.
  virtual int Poll(std::span<pollfd> descriptors, std::chrono::milliseconds time) = 0;
};

/// This machine's driver.
VELHOST_API std::shared_ptr<IIpmiDriver> LinuxIpmiDriver();

/// Those of `names` that are "ipmi" and a number, as paths under /dev, in numerical order: device 10 comes after
/// device 9.
VELHOST_API std::vector<std::string> IpmiDevicesAmong(const std::vector<std::string>& names);

}  // namespace velhost
