// The IPMI command buffer as a transport uses it: data out of a request, an answer into it.
#pragma once

#include <algorithm>
#include <cstdint>
#include <span>

#include "wire/commandbuffer.h"

namespace velhost::CommandFrame {

/// The request's data: as many bytes as byte 5 says, but none from beyond the buffer.
inline std::span<const std::uint8_t> RequestData(const wire::TCommandBuffer& request) {
  const std::size_t size = std::min<std::size_t>(request.DataLength(), wire::TCommandBuffer::kMaxData);
  return {request.Data() + wire::TCommandBuffer::kData, size};
}

/// Puts an answer in place of the request, as IServiceProcessor::SendIpmi promises. Data that do not
/// fit are cut; `data` must not lie in `buffer`.
inline void StoreResponse(wire::TCommandBuffer& buffer, int& length, std::uint8_t completionCode,
                          std::span<const std::uint8_t> data) {
  const std::size_t size = std::min(data.size(), wire::TCommandBuffer::kMaxData);
  unsigned char* const out = buffer.Data() + wire::TCommandBuffer::kData;
  std::fill_n(std::copy_n(data.begin(), size, out), wire::TCommandBuffer::kMaxData - size, std::uint8_t{0});
  buffer[wire::TCommandBuffer::kCompletionCode] = completionCode;
  buffer[wire::TCommandBuffer::kDataLength] = static_cast<std::uint8_t>(size);
  length = static_cast<int>(wire::TCommandBuffer::kData + size);
}

}  // namespace velhost::CommandFrame
