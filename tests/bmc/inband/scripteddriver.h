// An IPMI driver that follows a script: what each request must be, and its outcome.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <deque>
#include <functional>
#include <map>
#include <utility>

#include "host/bmc/inband/ipmidriver.h"
#include "tests/support/namespaces.h"

namespace tests {

using TBytes = std::vector<std::uint8_t>;

class TScriptedDriver : public IIpmiDriver {
 public:
  struct TSent {
    int descriptor;
    int addressType;
    int channel;
    int lun;
    int networkFunction;
    int command;
    TBytes data;
  };

  ~TScriptedDriver() override {
    EXPECT_TRUE(messages_.empty()) << messages_.size() << " messages were never taken";
    EXPECT_TRUE(open_.empty()) << "a device is still open";
  }

  TScriptedDriver& AddDevice(const std::string& device) {
    devices_.push_back(device);
    return *this;
  }
  TScriptedDriver& Refuse(const std::string& device, int error) {
    refused_[device] = error;
    return *this;
  }
  /// Adds the answer to the `request`th request sent, from 1.
  TScriptedDriver& Answer(long request, const TBytes& data) { return Message(IPMI_RESPONSE_RECV_TYPE, request, data); }
  TScriptedDriver& Message(int type, long number, const TBytes& data) {
    messages_.push_back({type, number, data});
    return *this;
  }
  /// Called instead of the next wait; poll returns its result.
  void OnPoll(std::function<int(std::span<pollfd>)> action) { onPoll_ = std::move(action); }
  void RefuseSending(int error) { sendError_ = error; }
  void FailNextReceive(int error) { receiveError_ = error; }

  const std::vector<TSent>& Sent() const { return sent_; }
  std::chrono::milliseconds LongestWait() const { return longestWait_; }

  std::vector<std::string> Devices() override { return devices_; }
  int Open(const std::string& device) override {
    if (const auto found = refused_.find(device); found != refused_.end()) return -found->second;
    const int descriptor =
        100 + static_cast<int>(std::find(devices_.begin(), devices_.end(), device) - devices_.begin());
    open_.push_back(descriptor);
    return descriptor;
  }
  void Close(int descriptor) override {
    const auto found = std::find(open_.begin(), open_.end(), descriptor);
    ASSERT_NE(found, open_.end()) << "closed twice";
    open_.erase(found);
  }
  int Send(int descriptor, ipmi_req& request) override {
    if (sendError_ != 0) return sendError_;
    const auto& address = *reinterpret_cast<const ipmi_system_interface_addr*>(request.addr);
    sent_.push_back({descriptor, address.addr_type, address.channel, address.lun, request.msg.netfn, request.msg.cmd,
                     TBytes(request.msg.data, request.msg.data + request.msg.data_len)});
    numbers_.push_back(request.msgid);
    return 0;
  }
  int Receive(int, ipmi_recv& message) override {
    if (receiveError_ != 0) return std::exchange(receiveError_, 0);
    if (messages_.empty()) return EAGAIN;
    const TMessage next = messages_.front();
    messages_.pop_front();
    const std::size_t size = std::min<std::size_t>(message.msg.data_len, next.data.size());
    const bool cut = size < next.data.size();
    std::copy_n(next.data.begin(), size, message.msg.data);
    message.msg.data_len = static_cast<unsigned short>(size);
    message.recv_type = next.type;
    const auto index = static_cast<std::size_t>(next.number - 1);
    message.msgid = next.number >= 1 && index < numbers_.size() ? numbers_[index] : -1;
    return cut ? EMSGSIZE : 0;
  }
  int Poll(std::span<pollfd> descriptors, std::chrono::milliseconds time) override {
    longestWait_ = std::max(longestWait_, time);
    if (onPoll_) return std::exchange(onPoll_, nullptr)(descriptors);
    if (messages_.empty() && receiveError_ == 0) return 0;
    descriptors[0].revents = POLLIN;
    return 1;
  }

 private:
  struct TMessage {
    int type;
    long number;
    TBytes data;
  };
  std::vector<std::string> devices_;
  std::map<std::string, int> refused_;
  std::vector<int> open_;
  std::vector<TSent> sent_;
  std::vector<long> numbers_;
  std::deque<TMessage> messages_;
  std::function<int(std::span<pollfd>)> onPoll_;
  int sendError_ = 0;
  int receiveError_ = 0;
  std::chrono::milliseconds longestWait_{0};
};

}  // namespace tests
