#include "host/result/turnwalk.h"

#include <algorithm>
#include <boost/endian/conversion.hpp>

#include "host/base/digits.h"
#include "host/base/text.h"
#include "host/result/capturewalk.h"
#include "host/result/jfrwalk.h"
#include "host/result/r8walk.h"
#include "wire/registerread.h"
#include "wire/storagearea.h"

namespace velhost {

namespace {

namespace Area = wire::StorageArea;

std::string NameIn(const wire::TCommandBuffer& request, std::size_t offset) {
  const auto* const name = reinterpret_cast<const char*>(request.Data() + offset);
  return SafeText({name, std::find(name, name + Area::kNameSize, '\0')});
}

std::string RegisterReadText(const wire::TCommandBuffer& request) {
  namespace Read = wire::RegisterRead;
  std::string text = "the register read of chip " + std::to_string(request[Read::kChipSelector]) + " at ";
  return text + HexNumber({request.Data() + Read::kAddress, Read::kAddressSize});
}

std::string AreaReadText(const wire::TCommandBuffer& request) {
  return "the read of " + std::to_string(boost::endian::load_little_u16(request.Data() + Area::kReadCount)) +
         " bytes at offset " + std::to_string(boost::endian::load_little_u32(request.Data() + Area::kReadOffset)) +
         " of a storage area";
}

std::string RequestText(const TExpected& exchange) {
  switch (exchange.kind) {
    case EExchangeKind::kRegister: return RegisterReadText(exchange.request);
    case EExchangeKind::kTimestamp: return "the timestamp read";
    case EExchangeKind::kOpen: return "the request to open storage area " + NameIn(exchange.request, Area::kOpenName);
    case EExchangeKind::kSize: return "the size query for storage area " + NameIn(exchange.request, Area::kQueryName);
    case EExchangeKind::kRead: return AreaReadText(exchange.request);
    case EExchangeKind::kClose: return "the request to close a storage area";
    case EExchangeKind::kDot: return "the dot command for a register block";
    case EExchangeKind::kOther: break;
  }
  return "a request of unknown purpose";
}

}  // namespace

TExchangeFailure TWalkedTurn::FailureOf(EExchangeKind kind, const THow& how, int owner,
                                        const std::optional<TPlace>& place) const {
  TExchangeFailure failure;
  failure.turn = number;
  failure.kind = kind;
  failure.isPlaced = place.has_value();
  failure.how = how;
  failure.owner = owner;
  failure.place = place.value_or(TPlace{});
  return failure;
}

ITurnWalk::~ITurnWalk() = default;

std::string Described(const TExpected& exchange) {
  const std::string owner = exchange.kind == EExchangeKind::kDot ? " to service processor " : " on node ";
  return RequestText(exchange) + owner + std::to_string(exchange.owner);
}

std::unique_ptr<ITurnWalk> MakeTurnWalk(const TWalkedTurn& turn) {
  if (turn.planned.turn != ETurn::kPlanned) return nullptr;
  switch (turn.planned.path) {
    case CollectorProfile::EPath::kR8: return std::make_unique<TR8Walk>(turn);
    case CollectorProfile::EPath::kJfr: return std::make_unique<TJfrWalk>(turn);
    case CollectorProfile::EPath::kCapture: return std::make_unique<TCaptureWalk>(turn);
    case CollectorProfile::EPath::kNone: break;
  }
  return nullptr;
}

}  // namespace velhost
