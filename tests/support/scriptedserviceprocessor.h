// A service processor that follows a script, and fails the test if the collector does not.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "host/bmc/iserviceprocessor.h"
#include "tests/support/namespaces.h"
#include "wire/commandbuffer.h"

namespace tests {

using TBytes = std::vector<std::uint8_t>;

inline TBytes operator+(TBytes left, const TBytes& right) {
  left.insert(left.end(), right.begin(), right.end());
  return left;
}

inline std::uint8_t ByteOf(std::uint32_t number, int place) { return static_cast<std::uint8_t>(number >> (8 * place)); }
inline TBytes LittleEndian(std::uint32_t number) {
  return {ByteOf(number, 0), ByteOf(number, 1), ByteOf(number, 2), ByteOf(number, 3)};
}

/// The command buffer of a request: network function, command, and data, whose size goes into byte 5.
inline wire::TCommandBuffer Request(std::uint8_t networkFunction, std::uint8_t command, const TBytes& data) {
  wire::TCommandBuffer buffer;
  buffer[0] = 0x01;
  buffer[1] = 0x20;
  buffer[2] = networkFunction;
  buffer[4] = command;
  buffer[5] = static_cast<std::uint8_t>(data.size());
  for (std::size_t i = 0; i < data.size(); ++i) buffer[9 + i] = data[i];
  return buffer;
}

/// One exchange. A step with neither an answer nor a failure answers with success and no data.
struct TStep {
  bool isDot = false;
  int target = 0;  ///< BMC node, or service processor of a dot command; from 0
  /// IPMI: the command buffer up to its last non-zero byte (the bytes after it must be zero). Dot: the command byte,
  /// the identifier and the parameters.
  TBytes request;

  bool answered = true;
  std::uint8_t completionCode = wire::TCommandBuffer::kSuccess;
  TBytes data;                             ///< from byte 9 on, or the block
  std::optional<std::uint8_t> dataLength;  ///< a false byte 5
  std::optional<int> length;               ///< a false returned length, even if the answer is lost
  std::chrono::milliseconds delay{0};
  std::function<void()> action;  ///< run before the answer

  /// Of an IPMI request.
  operator wire::TCommandBuffer() const {  // NOLINT(google-explicit-constructor): a request is its buffer
    wire::TCommandBuffer buffer;
    for (std::size_t i = 0; i < request.size(); ++i) buffer[i] = request[i];
    return buffer;
  }

  TStep Answers(TBytes bytes) const {
    return Changed([&bytes](TStep& step) { step.data = std::move(bytes); });
  }
  TStep Returns(TBytes bytes) const { return Answers(std::move(bytes)); }
  /// Answers with a completion code and no data.
  TStep Fails(std::uint8_t code) const { return WithCode(code).Answers({}); }
  TStep WithCode(std::uint8_t code) const {
    return Changed([code](TStep& step) { step.completionCode = code; });
  }
  /// No exchange takes place.
  TStep Lost() const {
    return Changed([](TStep& step) { step.answered = false; });
  }
  TStep WithDataLength(std::uint8_t claimed) const {
    return Changed([claimed](TStep& step) { step.dataLength = claimed; });
  }
  TStep WithLength(int claimed) const {
    return Changed([claimed](TStep& step) { step.length = claimed; });
  }
  TStep After(std::chrono::milliseconds time) const {
    return Changed([time](TStep& step) { step.delay = time; });
  }
  TStep Doing(std::function<void()> what) const {
    return Changed([&what](TStep& step) { step.action = std::move(what); });
  }

 private:
  template <typename TChange>
  TStep Changed(TChange change) const {
    TStep copy = *this;
    change(copy);
    return copy;
  }
};

/// Any IPMI request, given by its command buffer's bytes.
inline TStep Ipmi(int node, TBytes request) {
  TStep step;
  step.target = node;
  step.request = std::move(request);
  return step;
}
inline TStep Ipmi(int node, const wire::TCommandBuffer& request) {
  return Ipmi(node, TBytes(request.Data(), request.Data() + wire::TCommandBuffer::kSize));
}

inline TStep Dot(int serviceProcessor, TBytes request) {
  TStep step = Ipmi(serviceProcessor, std::move(request));
  step.isDot = true;
  return step;
}
/// The dot command for the register block, with a buffer of 4096 bytes.
inline TStep DotBlock(int serviceProcessor) {
  return Dot(serviceProcessor, {0x02, 0x0E, 0x06, 0x00, 0x00, 0x00, 0x10});
}

// The collector's requests, to node 0 unless stated otherwise.
inline TStep Register(std::uint8_t chip, std::uint32_t address) {
  return Ipmi(0, Request(0x3A, 0x62, {chip, ByteOf(address, 2), ByteOf(address, 1), ByteOf(address, 0)}));
}
inline TStep Timestamp() { return Ipmi(0, Request(0x3A, 0x6F, {})); }

/// A request whose last field is a name, of which only 25 bytes are sent; byte 5 counts all of it.
inline TStep NamedRequest(const TBytes& before, const std::string& name, int node) {
  const std::string field = name.substr(0, 25);
  wire::TCommandBuffer buffer = Request(0x2E, 0x90, before + TBytes(field.begin(), field.end()));
  buffer[5] = static_cast<std::uint8_t>(before.size() + name.size());
  return Ipmi(node, buffer);
}
inline TStep Open(const std::string& name, int node = 0) {
  return NamedRequest({0x39, 0x30, 0x00, 0x01, 0x01, 0, 0, 0, 0, 0, 0, 0}, name, node);
}
inline TStep Size(const std::string& name, int node = 0) { return NamedRequest({0x39, 0x30, 0x00, 0x06}, name, node); }
inline TStep Read(const TBytes& handle, std::uint32_t offset, std::uint16_t count, int node = 0) {
  return Ipmi(node, Request(0x2E, 0x90,
                            TBytes{0x39, 0x30, 0x00, 0x02} + handle + LittleEndian(offset) +
                                TBytes{ByteOf(count, 0), ByteOf(count, 1)}));
}
inline TStep Read(std::uint32_t handle, std::uint32_t offset, std::uint16_t count) {
  return Read(LittleEndian(handle), offset, count);
}
inline TStep Close(const TBytes& handle, int node = 0) {
  return Ipmi(node, Request(0x2E, 0x90, TBytes{0x39, 0x30, 0x00, 0x05} + handle));
}
inline TStep Close(std::uint32_t handle) { return Close(LittleEndian(handle)); }

// Response data.

/// Six header bytes, then the eight value bytes as the BMC sends them.
inline TBytes RegisterData(const TBytes& value, const TBytes& header = {0, 0, 0, 0, 0, 0}) { return header + value; }
/// The manufacturer id, then the bytes: a handle or a size.
inline TBytes OemData(const TBytes& bytes) { return TBytes{0x39, 0x30, 0x00} + bytes; }
/// The manufacturer id, then a size as four bytes, least significant first.
inline TBytes SizeData(std::int32_t size) { return OemData(LittleEndian(static_cast<std::uint32_t>(size))); }
/// The manufacturer id, the count and the bytes read.
inline TBytes ReadData(const TBytes& bytes) {
  return OemData(TBytes{static_cast<std::uint8_t>(bytes.size()), 0x00} + bytes);
}

/// Every exchange must be the script's next step, byte for byte; any other is reported and gets no answer. Steps left
/// over at the end fail the test in the destructor.
class TScriptedServiceProcessor : public velhost::IServiceProcessor {
 public:
  TScriptedServiceProcessor() = default;
  ~TScriptedServiceProcessor() override;
  TScriptedServiceProcessor(const TScriptedServiceProcessor&) = delete;
  TScriptedServiceProcessor& operator=(const TScriptedServiceProcessor&) = delete;

  // Discovery finds one BMC node with a driver and no dot commands, unless set otherwise.
  int nodes = 1;
  bool driverPresent = true;
  bool takesDotCommands = false;
  bool communicates = true;
  int serviceProcessors = 0;

  /// Adds steps to the script.
  void Expect(const TStep& step) { script_.push_back(step); }
  void Expect(const std::vector<TStep>& steps) { script_.insert(script_.end(), steps.begin(), steps.end()); }
  std::size_t StepsLeft() const { return script_.size(); }
  /// How many times discovery was requested: once by each such operation of SPLibrary.
  int Discoveries() const { return discoveries_; }

  velhost::TDiscovery Discover() override;
  std::optional<velhost::TIpmiAnswer> SendIpmi(const velhost::TIpmiRequest& request,
                                               const velhost::TStopSignal& stop) override;
  std::optional<velhost::TDotAnswer> SendDot(const velhost::TDotRequest& request,
                                             const velhost::TStopSignal& stop) override;

 private:
  std::optional<TStep> Advance(bool isDot, int target, const TBytes& request);

  std::deque<TStep> script_;
  int discoveries_ = 0;
};

}  // namespace tests
