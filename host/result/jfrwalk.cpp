#include "host/result/jfrwalk.h"

#include <algorithm>
#include <array>
#include <boost/endian/conversion.hpp>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <utility>

#include "wire/registerblock.h"

namespace velhost {

namespace {

namespace Block = wire::RegisterBlock;

constexpr char kTimeProperty[] = "StatisticTime";
constexpr std::size_t kIdentificationSize = Block::kIdentificationSize;
constexpr std::size_t kRecordSize = Block::kRecordSize;

}  // namespace

std::uint32_t TJfrWalk::TBlock::CameOf(std::size_t offset, std::size_t size) const {
  if (bytes.size() <= offset) return 0;
  return static_cast<std::uint32_t>(std::min(bytes.size() - offset, size));
}

std::uint8_t TJfrWalk::TBlock::Byte(std::size_t offset) const {
  return offset < bytes.size() ? bytes[offset] : Block::kFill;
}

TJfrWalk::TJfrWalk(const TWalkedTurn& turn) : turn_(turn), next_{EExchangeKind::kDot, 0, {}} {}

void TJfrWalk::OnMade(EExchangeKind /*kind*/, const TOutcome& outcome, TResultReasons& reasons) {
  TBlock block;
  const auto failure = FailureOf(EExchangeKind::kDot, outcome);
  if (failure) {
    NoteFailure(*failure, outcome, reasons);
  } else {
    block = BlockOf(outcome);
  }
  if (block.isShort) NoteFailure({EHow::kShort, static_cast<std::uint32_t>(block.bytes.size())}, outcome, reasons);
  Place(block, next_.owner);
  blocks_.push_back(std::move(block));
  ++next_.owner;
}

// Without instances the collector never looks at the header.
TJfrWalk::TBlock TJfrWalk::BlockOf(const TOutcome& outcome) const {
  TBlock block;
  const std::size_t size = std::min(outcome.data.size(), Block::kSize);
  block.bytes.assign(outcome.data.begin(), outcome.data.begin() + static_cast<std::ptrdiff_t>(size));
  block.end = EBlock::kGood;
  if (turn_.planned.instances == 0) return block;
  const auto isValid = [&block](std::size_t copy) {
    return block.Byte(copy + Block::kMonth) != 0 && block.Byte(copy + Block::kDay) != 0;
  };
  block.header = isValid(Block::kFirstCopy) ? Block::kFirstCopy : Block::kSecondCopy;
  if (!isValid(block.header)) block.end = EBlock::kUndecodable;
  block.isShort = block.end == EBlock::kGood && HasCost(block);
  return block;
}

void TJfrWalk::Place(const TBlock& block, int serviceProcessor) {
  if (block.end == EBlock::kUndecodable) {
    for (TBlock& earlier : blocks_) earlier.isDiscarded = true;
    candidates_.clear();
  }
  if (block.end != EBlock::kGood) return;
  for (unsigned i = 0; i < turn_.planned.instances; ++i) candidates_.push_back({serviceProcessor, static_cast<int>(i)});
}

void TJfrWalk::NoteFailure(const THow& how, const TOutcome& outcome, TResultReasons& reasons) const {
  if (outcome.WasAttempted()) reasons.AddFailure(turn_.FailureOf(EExchangeKind::kDot, how, next_.owner));
}

// Whether a byte of the header or of a record was not received.
bool TJfrWalk::HasCost(const TBlock& block) const {
  std::size_t end = block.header + Block::kHeaderSize;
  const int last = static_cast<int>(turn_.planned.instances) - 1;
  for (const TPlannedRegister& one : turn_.planned.registers) {
    end = std::max(end, OffsetOf(block, one, last) + kRecordSize);
  }
  return block.bytes.size() < end;
}

// Records of the second copy are counted from the start of the block.
std::size_t TJfrWalk::OffsetOf(const TBlock& block, const TPlannedRegister& one, int bank) const {
  const std::size_t base = block.header == Block::kFirstCopy ? Block::kHeaderSize : 0;
  const std::size_t record = one.index + static_cast<std::size_t>(bank) * Block::kRecordsPerInstance;
  return base + record * Block::kRecordStride;
}

std::size_t TJfrWalk::CandidatesDue() const { return Next() != nullptr ? 0 : candidates_.size() - committed_; }

TInstanceFacts TJfrWalk::Commit(const TInstance& instance) {
  const TPlace place = candidates_[committed_++];
  const TBlock& block = blocks_[static_cast<std::size_t>(place.owner)];
  TInstanceFacts facts;
  facts.key = turn_.Key(place);
  facts.origin = TOrigin{CollectorProfile::EPath::kJfr, place.owner, std::nullopt, place.number, {}};
  facts.registers.emplace();
  for (const TPlannedRegister& one : turn_.planned.registers) AddRegister(one, block, place, instance, facts);
  const std::uint32_t came = block.CameOf(block.header, Block::kHeaderSize);
  if (came < Block::kHeaderSize) facts.missing.push_back({kTimeProperty, {}, {EHow::kShort, came}});
  return facts;
}

void TJfrWalk::AddRegister(const TPlannedRegister& one, const TBlock& block, const TPlace& place,
                           const TInstance& instance, TInstanceFacts& facts) const {
  const std::size_t offset = OffsetOf(block, one, place.number);
  const std::uint32_t came = block.CameOf(offset, kRecordSize);
  if (came < kRecordSize) {
    const std::string& name = turn_.planned.cimClass->Properties()[one.property]->Definition().name;
    TWhere where;
    where.index = one.index;
    facts.missing.push_back({name, where, {EHow::kShort, came}});
    return;
  }
  if (!instance.IsSet(one.property)) return;
  const std::uint8_t* const record = block.bytes.data() + offset;
  TRegisterFacts read;
  read.property = one.property;
  read.isIndex = true;
  read.place = one.index;
  read.value = boost::endian::load_big_u64(record + kIdentificationSize);
  read.identification = {record[0], record[1], record[2]};
  facts.registers->push_back(read);
}

EUnread TJfrWalk::CodeOf(const TBlock& block) const {
  if (block.end == EBlock::kUndecodable) return EUnread::kBlockUndecodable;
  return block.isDiscarded && block.end == EBlock::kGood ? EUnread::kDiscarded : EUnread::kBlockUnread;
}

// The committed candidates are the first ones, in the order of the plan.
void TJfrWalk::AddUnread(int serviceProcessor, EUnread code, std::size_t& delivered, TResultReasons& reasons) const {
  for (int i = 0; i < static_cast<int>(turn_.planned.instances); ++i) {
    const bool isNext = delivered < committed_ && candidates_[delivered].owner == serviceProcessor;
    if (isNext && candidates_[delivered].number == i) {
      ++delivered;
    } else {
      reasons.AddUnread({turn_.number, {serviceProcessor, i}, code});
    }
  }
}

// If the communication check failed, the collector asked none of the service processors.
void TJfrWalk::Finish(TResultReasons& reasons) {
  const TPlanServer& server = turn_.plan.server;
  if (!turn_.planned.hasWay) return;
  const std::size_t asked = server.communicates ? blocks_.size() : std::size_t{0};
  blocks_.resize(static_cast<std::uint8_t>(server.serviceProcessors));
  std::uint64_t unread = 0;
  std::uint64_t cut = 0;
  std::size_t delivered = 0;
  for (std::size_t s = 0; s < blocks_.size(); ++s) {
    const TBlock& block = blocks_[s];
    if (block.end == EBlock::kUnread && (s < asked || !server.communicates)) ++unread;
    if (block.isShort) ++cut;
    if (block.end == EBlock::kUndecodable) {
      reasons.AddReason(turn_.number, EReason::kBlockUndecodable, 1, std::to_string(s));
    }
    AddUnread(static_cast<int>(s), CodeOf(block), delivered, reasons);
  }
  reasons.AddReason(turn_.number, EReason::kBlockUnread, unread);
  reasons.AddReason(turn_.number, EReason::kBlockShort, cut);
}

}  // namespace velhost
