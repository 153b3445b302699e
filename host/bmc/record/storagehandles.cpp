#include "host/bmc/record/storagehandles.h"

#include <array>
#include <boost/endian/conversion.hpp>

#include "wire/storagearea.h"

namespace velhost {

namespace Wire = wire::StorageArea;
using boost::endian::load_little_u32;

void TStorageHandles::OnAnswer(const TIpmiRequest& request, const TIpmiAnswer& answer) {
  if (KindOfRequest(request) != EExchangeKind::kOpen) return;
  if (answer.completionCode != wire::TCommandBuffer::kSuccess) return;
  const auto handle = TCommandData(answer.data).Bytes<Wire::kHandleSize>(Wire::kResponseHandle);
  const auto name = TCommandData(request.DataField()).Bytes<Wire::kNameSize>(Wire::kOpenName);
  areas_[{request.Node(), load_little_u32(handle.data())}] = std::string(name.begin(), name.end());
}

std::optional<std::string> TStorageHandles::AreaRead(const TIpmiRequest& request) const {
  if (KindOfRequest(request) != EExchangeKind::kRead) return std::nullopt;
  const auto handle = TCommandData(request.DataField()).Bytes<Wire::kHandleSize>(Wire::kHandle);
  const auto found = areas_.find({request.Node(), load_little_u32(handle.data())});
  return found == areas_.end() ? std::nullopt : std::optional(found->second);
}

}  // namespace velhost
