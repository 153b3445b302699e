// The IPMI command buffer as a transport uses it: data out of a request, an answer into it.
#pragma once

#include <algorithm>
#include <cstdint>
#include <span>

#include "nkrovel20/ipmicommandbuffer.h"

namespace NKROVEL20::CommandFrame {

/// The request's data: as many bytes as byte 5 says, but none from beyond the buffer.
inline std::span<const std::uint8_t> RequestData(const TIPMICommandBuffer& request) {
  const std::size_t size = std::min<std::size_t>(request.DataLength(), TIPMICommandBuffer::kMaxData);
  return {request.Data() + TIPMICommandBuffer::kData, size};
}

/// Puts an answer in place of the request, as IServiceProcessor::SendIpmi promises. Data that do not
/// fit are cut; `data` must not lie in `buffer`.
inline void StoreResponse(TIPMICommandBuffer& buffer, int& length, std::uint8_t completionCode,
                          std::span<const std::uint8_t> data) {
  const std::size_t size = std::min(data.size(), TIPMICommandBuffer::kMaxData);
  unsigned char* const out = buffer.Data() + TIPMICommandBuffer::kData;
  std::fill_n(std::copy_n(data.begin(), size, out), TIPMICommandBuffer::kMaxData - size, std::uint8_t{0});
  buffer[TIPMICommandBuffer::kCompletionCode] = completionCode;
  buffer[TIPMICommandBuffer::kDataLength] = static_cast<std::uint8_t>(size);
  length = static_cast<int>(TIPMICommandBuffer::kData + size);
}

}  // namespace NKROVEL20::CommandFrame
