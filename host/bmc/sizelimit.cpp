#include "host/bmc/sizelimit.h"

#include <utility>

#include "host/bmc/exchange.h"
#include "wire/storagearea.h"

namespace velhost {

namespace {

/// As the collector reads it: four bytes, whatever length the answer claims.
std::int64_t ReportedSize(const wire::TCommandBuffer& response) {
  std::uint32_t size = 0;
  for (std::size_t i = 4; i > 0; --i) size = size << 8U | response[wire::StorageArea::kResponseSize + i - 1];
  return static_cast<std::int32_t>(size);
}

std::string NameOfArea(const wire::TCommandBuffer& request) {
  std::string name;
  for (std::size_t i = 0; i < wire::StorageArea::kNameSize; ++i) {
    const char c = static_cast<char>(request[wire::StorageArea::kQueryName + i]);
    if (c == '\0') break;
    name += c;
  }
  return name;
}

std::string MiB(std::int64_t bytes) { return std::to_string(bytes >> 20) + " MiB"; }

}  // namespace

bool TSizeLimit::SendIpmi(int node, wire::TCommandBuffer& buffer, int& length, const TStopSignal& stop) {
  if (KindOfRequest(buffer) != EExchangeKind::kSize) return inner_.SendIpmi(node, buffer, length, stop);
  const wire::TCommandBuffer request = buffer;
  const int lengthBefore = length;
  if (!inner_.SendIpmi(node, buffer, length, stop)) return false;
  if (buffer.CompletionCode() != wire::TCommandBuffer::kSuccess) return true;
  if (Accept(node, request, ReportedSize(buffer))) return true;
  buffer = request;
  length = lengthBefore;
  return false;
}

bool TSizeLimit::Accept(int node, const wire::TCommandBuffer& request, std::int64_t size) {
  if (size <= 0) return true;
  std::string limit;
  if (size > kLargestArea) {
    limit = "over the limit of " + MiB(kLargestArea);
  } else if (size > kLargestAreasOfRequest - accepted_) {
    limit = "with those before it over the limit of " + MiB(kLargestAreasOfRequest) + " for one request";
  } else {
    accepted_ += size;
    return true;
  }
  refusals_.push_back("node " + std::to_string(node) + ", storage area " + NameOfArea(request) + " reports " +
                      std::to_string(size) + " bytes, " + limit + ": not read");
  return false;
}

std::vector<std::string> TSizeLimit::TakeRefusals() { return std::exchange(refusals_, {}); }

}  // namespace velhost
