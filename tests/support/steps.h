// The script of a service processor: what it expects to be sent, and what it answers.
//
//   Register(0, 0xABCDEF).Answers(RegisterData({1, 2, 3, 4, 5, 6, 7, 8}))
//   Open("cpu_err").Fails(0xCB)
//   Timestamp().Lost()
//   DotBlock(0).Returns(block).WithLength(70000)
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "tests/support/namespaces.h"
#include "tests/support/requests.h"

namespace tests {

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

  TStep Answers(TBytes bytes) const;
  TStep Returns(TBytes bytes) const { return Answers(std::move(bytes)); }
  /// Answers with a completion code and no data.
  TStep Fails(std::uint8_t code) const;
  TStep WithCode(std::uint8_t code) const;
  /// No exchange takes place.
  TStep Lost() const;
  TStep WithDataLength(std::uint8_t lie) const;
  TStep WithLength(int lie) const;
  TStep After(std::chrono::milliseconds time) const;
  TStep Doing(std::function<void()> what) const;
};

/// Any IPMI request, given by its command buffer's bytes.
TStep Ipmi(int node, TBytes request);
TStep Ipmi(int node, const wire::TCommandBuffer& request);
/// The dot command for the register block, with a buffer of 4096 bytes.
TStep DotBlock(int serviceProcessor);
TStep Dot(int serviceProcessor, TBytes request);

// The collector's requests, to node 0 unless stated otherwise.
TStep Register(std::uint8_t chip, std::uint32_t address);
TStep Timestamp();
TStep Open(const std::string& name, int node = 0);
TStep Size(const std::string& name, int node = 0);
TStep Read(const TBytes& handle, std::uint32_t offset, std::uint8_t count, int node = 0);
TStep Close(const TBytes& handle, int node = 0);

// Response data.

/// Six header bytes, then the eight value bytes as the BMC sends them.
TBytes RegisterData(const TBytes& value, const TBytes& header = {0, 0, 0, 0, 0, 0});
/// The manufacturer id, then the bytes: a handle or a size.
TBytes OemData(const TBytes& bytes);
/// The manufacturer id, then a size as four bytes, least significant first.
TBytes SizeData(std::int32_t size);
/// The manufacturer id, the count and the bytes read.
TBytes ReadData(const TBytes& bytes);

}  // namespace tests
