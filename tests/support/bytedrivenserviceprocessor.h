// A service processor whose every answer comes out of a run of bytes, for the fuzz targets. Header
// only: it is built without the tests.
#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

#include "host/bmc/iserviceprocessor.h"
#include "tests/support/namespaces.h"

namespace tests {

/// Bytes from the front; zeros behind the end.
class TByteStream {
 public:
  TByteStream(const std::uint8_t* data, std::size_t size) : data_(data), size_(size) {}

  bool AtEnd() const { return place_ >= size_; }
  std::uint8_t Next() { return AtEnd() ? std::uint8_t{0} : data_[place_++]; }
  std::uint16_t Next16() {
    const unsigned int low = Next();
    return static_cast<std::uint16_t>(low | static_cast<unsigned int>(Next()) << 8U);
  }
  std::int32_t Next32() {
    const std::uint32_t low = Next16();
    return static_cast<std::int32_t>(low | static_cast<std::uint32_t>(Next16()) << 16U);
  }

 private:
  const std::uint8_t* data_;
  std::size_t size_;
  std::size_t place_ = 0;
};

/// Each exchange takes a control byte: 0 answers well, and its bits ask for a lost answer (1), a
/// completion code (2), a lie in byte 5 (4) and a lie in the length (8). When the bytes are used up
/// every exchange is lost, so that every collection ends.
class TByteDrivenServiceProcessor : public velhost::IServiceProcessor {
 public:
  explicit TByteDrivenServiceProcessor(TByteStream& bytes) : bytes_(bytes) {}

  int nodes = 1;
  int serviceProcessors = 0;

  int BmcNodeCount() override { return nodes; }
  bool IpmiDriverPresent() override { return true; }
  bool TakesDotCommands() override { return serviceProcessors != 0; }
  bool CheckCommunication() override { return true; }
  int DiscoverServiceProcessors() override { return serviceProcessors; }

  bool SendIpmi(int /*node*/, wire::TCommandBuffer& buffer, int& length,
                const velhost::TStopSignal& /*stop*/) override {
    using TBuffer = wire::TCommandBuffer;
    if (bytes_.AtEnd()) return false;
    const unsigned int control = bytes_.Next();
    if ((control & 1U) != 0) return false;
    const std::size_t size = std::min<std::size_t>(bytes_.Next(), TBuffer::kMaxData);
    buffer[TBuffer::kCompletionCode] = (control & 2U) != 0 ? bytes_.Next() : TBuffer::kSuccess;
    buffer[TBuffer::kDataLength] = (control & 4U) != 0 ? bytes_.Next() : static_cast<std::uint8_t>(size);
    length = (control & 8U) != 0 ? bytes_.Next32() : static_cast<int>(TBuffer::kData + size);
    std::fill_n(buffer.Data() + TBuffer::kData, TBuffer::kMaxData, std::uint8_t{0});
    for (std::size_t i = 0; i < size; ++i) buffer[TBuffer::kData + i] = bytes_.Next();
    return true;
  }

  bool SendDot(int /*serviceProcessor*/, const NKROVEL20::dotCmd& /*command*/, std::span<std::uint8_t> response,
               int& length, const velhost::TStopSignal& /*stop*/) override {
    if (bytes_.AtEnd()) return false;
    const unsigned int control = bytes_.Next();
    const std::size_t size = std::min<std::size_t>(bytes_.Next16(), response.size());
    length = (control & 8U) != 0 ? bytes_.Next32() : static_cast<int>(size);
    for (std::size_t i = 0; i < size; ++i) response[i] = bytes_.Next();
    return (control & 1U) == 0;
  }

 private:
  TByteStream& bytes_;
};

}  // namespace tests
