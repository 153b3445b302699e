#include "host/result/capturewalk.h"

#include <algorithm>
#include <boost/endian/conversion.hpp>
#include <memory>
#include <string_view>

#include "wire/storagearea.h"

namespace velhost {

namespace {

namespace Area = wire::StorageArea;

constexpr char kFileProperty[] = "ErrRawData";
constexpr int kChunk = 10;
// Data bytes of a read's answer before the file's: manufacturer id and count.
constexpr std::int64_t kBeforeData = Area::kResponseData - Area::kManufacturer;
static_assert(kBeforeData == 5);

wire::TCommandBuffer AreaRequest(std::uint8_t subCommand, std::size_t length) {
  wire::TCommandBuffer request(Area::kNetworkFunction, Area::kCommand, static_cast<std::uint8_t>(length));
  std::copy(Area::kManufacturerId.begin(), Area::kManufacturerId.end(), request.Data() + Area::kManufacturer);
  request[Area::kSubCommand] = subCommand;
  return request;
}

std::int64_t Brought(const TOutcome& outcome, int chunk) {
  const auto counted = TCommandData(outcome.data).Bytes<2>(Area::kResponseCount);
  const std::int64_t sent = std::max<std::int64_t>(static_cast<std::int64_t>(outcome.dataLength) - kBeforeData, 0);
  return std::min<std::int64_t>({sent, boost::endian::load_little_u16(counted.data()), chunk});
}

}  // namespace

TCaptureWalk::TCaptureWalk(const TWalkedTurn& turn) : turn_(turn) {
  const TPlanServer& server = turn.plan.server;
  nodes_ = static_cast<std::size_t>(std::max(server.bmcNodes, 0));
  files_.resize(kCaptureAreas.size() * nodes_);
  if (!server.ipmiDriver) current_ = files_.size();
  if (current_ < files_.size()) ExpectOpen();
}

TPlace TCaptureWalk::PlaceOf(std::size_t file) const {
  return {static_cast<int>(file % nodes_), static_cast<int>(file / nodes_)};
}

// If it has no memory for the file, the collector closes the area without a read.
bool TCaptureWalk::Accepts(const TExpected& other) const {
  if (next_.kind != EExchangeKind::kRead || reads_.count > 0 || Next() == nullptr) return false;
  return other == TExpected{EExchangeKind::kClose, next_.owner, HandleRequest(Area::kClose, Area::kCloseLength)};
}

void TCaptureWalk::OnMade(EExchangeKind kind, const TOutcome& outcome, TResultReasons& reasons) {
  const auto failure = FailureOf(kind, outcome);
  if (failure) NoteFailure(kind, *failure, outcome, reasons);
  switch (kind) {
    case EExchangeKind::kOpen: return OnOpen(failure, outcome);
    case EExchangeKind::kSize: return OnSize(failure, outcome);
    case EExchangeKind::kRead: return OnRead(failure, outcome, reasons);
    default: return OnClose();
  }
}

void TCaptureWalk::OnOpen(const std::optional<THow>& failure, const TOutcome& outcome) {
  if (failure) {
    NextFile(IsAbsent(EExchangeKind::kOpen, *failure) ? EFile::kAbsent : EFile::kUnread);
    return;
  }
  handle_ = TCommandData(outcome.data).Bytes<Area::kHandleSize>(Area::kResponseHandle);
  ExpectSize();
}

void TCaptureWalk::OnSize(const std::optional<THow>& failure, const TOutcome& outcome) {
  if (failure) {
    NextFile(EFile::kUnread);
    return;
  }
  TFile& file = files_[current_];
  file.size = boost::endian::load_little_s32(TCommandData(outcome.data).Bytes<4>(Area::kResponseSize).data());
  reads_ = {0, 0, kChunk};
  if (file.size < 0) {
    ExpectClose();
  } else {
    ExpectRead();
  }
}

// The answer was good, but the collector never saw it.
void TCaptureWalk::OnSizeRefused(const std::string& sentence, TResultReasons& reasons) {
  if (Next() == nullptr || next_.kind != EExchangeKind::kRead || reads_.count > 0) return;
  if (turn_.planned.hasWay) reasons.AddReason(turn_.number, EReason::kFileUnread, 1, sentence);
  NextFile(EFile::kRefused);
}

void TCaptureWalk::OnRead(const std::optional<THow>& failure, const TOutcome& outcome, TResultReasons& reasons) {
  TFile& file = files_[current_];
  file.end = EFile::kCollected;
  if (failure) {
    Miss(0, *failure);
    ExpectClose();
    return;
  }
  const std::int64_t brought = Brought(outcome, reads_.chunk);
  file.received += static_cast<std::uint64_t>(brought);
  if (brought < std::min<std::int64_t>(reads_.chunk, std::int64_t{file.size} - reads_.offset)) {
    const THow how = {EHow::kShort, static_cast<std::uint32_t>(brought)};
    Miss(brought, how);
    NoteFailure(EExchangeKind::kRead, how, outcome, reasons);
  }
  if (reads_.Advance(file.size)) {
    ExpectRead();
  } else {
    ExpectClose();
  }
}

// The read that is made brought this much. Nothing is missing from an empty file.
void TCaptureWalk::Miss(std::int64_t brought, const THow& how) {
  TFile& file = files_[current_];
  file.hasFailedRead = true;
  const std::int64_t from = reads_.offset + brought;
  if (file.missing || from >= file.size) return;
  file.missing = TMissing{kFileProperty, {}, how};
  file.missing->where.offset = static_cast<std::uint64_t>(from);
}

// Whether another read follows. A size below one chunk takes one whole chunk, and the rest that the last chunk has
// comes after the count of whole ones.
bool TCaptureWalk::TReads::Advance(int size) {
  const int full = size / kChunk;
  const int rest = size - full * kChunk;
  offset += chunk;
  ++count;
  if (count == full) {
    if (rest == 0) return false;
    chunk = rest;
  }
  return full >= count;
}

void TCaptureWalk::OnClose() {
  if (files_[current_].end != EFile::kCollected) {
    NextFile(EFile::kUnread);
    return;
  }
  candidate_ = current_;
  NextFile(EFile::kCollected);
}

void TCaptureWalk::NextFile(EFile end) {
  files_[current_].end = end;
  ++current_;
  if (current_ < files_.size()) ExpectOpen();
}

void TCaptureWalk::ExpectOpen() {
  const std::string_view name = kCaptureAreas.at(static_cast<std::size_t>(Place().number));
  next_ = {EExchangeKind::kOpen, Place().owner, AreaRequest(Area::kOpen, Area::kOpenLength + name.size())};
  next_.request[Area::kBody] = Area::kOpenMode;
  std::copy(name.begin(), name.end(), next_.request.Data() + Area::kOpenName);
}

void TCaptureWalk::ExpectSize() {
  const std::string_view name = kCaptureAreas.at(static_cast<std::size_t>(Place().number));
  next_ = {EExchangeKind::kSize, Place().owner, AreaRequest(Area::kQuerySize, Area::kQueryLength + name.size())};
  std::copy(name.begin(), name.end(), next_.request.Data() + Area::kQueryName);
}

void TCaptureWalk::ExpectRead() {
  next_ = {EExchangeKind::kRead, Place().owner, HandleRequest(Area::kRead, Area::kReadLength)};
  boost::endian::store_little_s32(next_.request.Data() + Area::kReadOffset, reads_.offset);
  boost::endian::store_little_u16(next_.request.Data() + Area::kReadCount, static_cast<std::uint16_t>(reads_.chunk));
}

void TCaptureWalk::ExpectClose() {
  next_ = {EExchangeKind::kClose, Place().owner, HandleRequest(Area::kClose, Area::kCloseLength)};
}

wire::TCommandBuffer TCaptureWalk::HandleRequest(std::uint8_t subCommand, std::uint8_t length) const {
  wire::TCommandBuffer request = AreaRequest(subCommand, length);
  std::copy(handle_.begin(), handle_.end(), request.Data() + Area::kHandle);
  return request;
}

void TCaptureWalk::NoteFailure(EExchangeKind kind, const THow& how, const TOutcome& outcome,
                               TResultReasons& reasons) const {
  if (outcome.WasAttempted()) reasons.AddFailure(turn_.FailureOf(kind, how, Place().owner, Place()));
}

TInstanceFacts TCaptureWalk::Commit(const TInstance& /*instance*/) {
  TFile& file = files_[*candidate_];
  const TPlace place = PlaceOf(*candidate_);
  candidate_.reset();
  file.end = EFile::kCommitted;
  TInstanceFacts facts;
  facts.key = turn_.Key(place);
  facts.origin = TOrigin{CollectorProfile::EPath::kCapture, place.owner, std::nullopt, std::nullopt, {}};
  const auto area = static_cast<std::size_t>(place.number);
  facts.file = TFileFacts{std::string(kCaptureAreas.at(area)), file.size, file.received};
  if (file.missing) facts.missing.push_back(*file.missing);
  facts.isCut = file.hasFailedRead;
  return facts;
}

void TCaptureWalk::Finish(TResultReasons& reasons) {
  if (!turn_.planned.hasWay) return;
  const bool hasDriver = turn_.plan.server.ipmiDriver;
  std::uint64_t unread = 0;
  for (std::size_t i = 0; i < files_.size(); ++i) {
    const TFile& file = files_[i];
    if (file.end == EFile::kUnread || file.missing || !hasDriver) ++unread;
    if (file.end == EFile::kCommitted) continue;
    const EUnread code = file.end == EFile::kAbsent ? EUnread::kAbsent : EUnread::kFileUnread;
    reasons.AddUnread({turn_.number, PlaceOf(i), code});
  }
  reasons.AddReason(turn_.number, EReason::kFileUnread, unread);
}

}  // namespace velhost
