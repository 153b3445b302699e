// Requests to a service processor and their answers. The only place that takes requests out of SPLibrary's command
// buffer and puts answers into it.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "host/base/api.h"
#include "nkrovel20/dotcmd.h"
#include "wire/commandbuffer.h"

namespace velhost {

/// The data of a request or an answer, indexed by offset in the command buffer. Reads as zero past the end.
class TCommandData {
 public:
  explicit TCommandData(std::span<const std::uint8_t> data) : data_(data) {}

  std::uint8_t operator[](std::size_t offset) const {
    const std::size_t index = offset - wire::TCommandBuffer::kData;
    return index < data_.size() ? data_[index] : std::uint8_t{0};
  }
  template <std::size_t kSize>
  std::array<std::uint8_t, kSize> Bytes(std::size_t offset) const {
    std::array<std::uint8_t, kSize> bytes{};
    for (std::size_t i = 0; i < kSize; ++i) bytes[i] = (*this)[offset + i];
    return bytes;
  }

 private:
  std::span<const std::uint8_t> data_;
};

/// An IPMI request to a BMC node (from 0). Keeps the command buffer that it came in, because recordings store all of
/// it.
class VELHOST_API TIpmiRequest {
 public:
  TIpmiRequest(int node, const wire::TCommandBuffer& buffer) : node_(node), buffer_(buffer) {}
  /// A request that came over a wire. A command buffer holds 247 bytes of its data; the rest is dropped.
  TIpmiRequest(int node, std::uint8_t networkFunction, std::uint8_t lun, std::uint8_t command,
               std::span<const std::uint8_t> data);

  int Node() const { return node_; }
  std::uint8_t NetworkFunction() const { return buffer_[wire::TCommandBuffer::kNetworkFunction]; }
  std::uint8_t Lun() const { return buffer_[wire::TCommandBuffer::kLun]; }
  std::uint8_t Command() const { return buffer_[wire::TCommandBuffer::kCommand]; }
  /// The data to send: as many bytes as byte 5 of the buffer says, but none from past the buffer's end.
  std::span<const std::uint8_t> Data() const;
  /// The buffer's entire data area; Data() is its beginning. The sender may have put more there than byte 5 says.
  std::span<const std::uint8_t> DataField() const;
  const wire::TCommandBuffer& Buffer() const { return buffer_; }

 private:
  int node_;
  wire::TCommandBuffer buffer_;
};

struct VELHOST_API TIpmiAnswer {
  std::uint8_t completionCode = wire::TCommandBuffer::kSuccess;
  std::vector<std::uint8_t> data{};
  // False lengths, which only recordings and tests set: what the answer claims instead of its true lengths.
  std::optional<std::uint8_t> claimedDataLength{};
  std::optional<int> claimedLength{};

  /// Byte 5 of the buffer: the number of data bytes.
  std::uint8_t DataLength() const;
  /// The length that SPLibrary returns: 9 + the number of data bytes.
  int Length() const;
  /// The request's buffer with the answer in it: bytes 0-3 and 6-8 unchanged, completion code, data length, data,
  /// then zeros. Data that does not fit is cut.
  wire::TCommandBuffer InBufferOf(const TIpmiRequest& request) const;
};

/// A dot command to a service processor (from 0).
struct TDotRequest {
  int serviceProcessor;
  const dotCmd& command;
  std::size_t capacity;  ///< of the caller's buffer, and so the most bytes that an answer may have
};

struct TDotAnswer {
  std::vector<std::uint8_t> data{};
  std::optional<int> claimedLength{};  ///< a false number of bytes; only in tests
  bool failed = false;                 ///< only in tests: SPLibrary returns false although it delivers data

  int Length() const { return claimedLength.value_or(static_cast<int>(data.size())); }
};

/// Why an exchange has no answer.
enum class ENoAnswer {
  kLost,        ///< no answer was received, or the node or driver does not exist
  kNotSent,     ///< the run was stopped before
  kNotRecorded  ///< the recording that answers does not contain the exchange, or is cut before it
};

/// What an exchange is for. The names match the server file's `on` and the failure list.
enum class EExchangeKind { kRegister, kTimestamp, kOpen, kSize, kRead, kClose, kDot, kOther };

/// Which of the collector's requests this is; kOther if it is none of them.
VELHOST_API EExchangeKind KindOfRequest(const TIpmiRequest& request);
/// "register", "timestamp", "open", "size", "read", "close", "dot", "other".
VELHOST_API const char* NameOfKind(EExchangeKind kind);

/// The name of the storage area in a size request, without its trailing zeros.
VELHOST_API std::string AreaInSizeRequest(const TIpmiRequest& request);
/// The size in the answer as the collector reads it: four bytes, whatever length the answer claims.
VELHOST_API std::int32_t SizeInAnswer(const TIpmiAnswer& answer);

}  // namespace velhost
