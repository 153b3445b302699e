#include "host/result/r8walk.h"

#include <algorithm>
#include <boost/endian/conversion.hpp>
#include <memory>

#include "host/base/digits.h"
#include "wire/registerread.h"

namespace velhost {

namespace {

namespace Read = wire::RegisterRead;

constexpr char kTimeProperty[] = "StatisticTime";

TExpected RegisterRead(std::uint8_t chip, std::uint32_t address) {
  TExpected expected = {EExchangeKind::kRegister, 0, {Read::kNetworkFunction, Read::kRegisterRead, Read::kRequestSize}};
  expected.request[Read::kChipSelector] = chip;
  boost::endian::store_big_u24(expected.request.Data() + Read::kAddress, address);
  return expected;
}

// The collector's four value bytes of a narrow register.
std::optional<std::uint32_t> CollectedNumber(const TCIMValue& value) {
  const auto split = CollectorProfile::SplitRegisterValue(CollectorProfile::EPath::kR8, value);
  if (!split) return std::nullopt;
  return boost::endian::load_big_u32(split->value.data());
}

}  // namespace

TR8Walk::TR8Walk(const TWalkedTurn& turn)
    : turn_(turn), reads_(turn.planned.readsOfInstance * turn.planned.instances), chips_(turn.planned.instances) {
  std::size_t first = 0;
  for (const TPlannedRegister& one : turn.planned.registers) {
    firstReads_.push_back(first);
    first += one.addresses.size();
  }
  BeginInstance();
}

void TR8Walk::OnMade(EExchangeKind kind, const TOutcome& outcome, TResultReasons& reasons) {
  if (kind == EExchangeKind::kRegister) {
    OnRegister(outcome, reasons);
  } else {
    OnTime(outcome, reasons);
  }
}

void TR8Walk::OnRegister(const TOutcome& outcome, TResultReasons& reasons) {
  TRead& read = reads_[instance_ * turn_.planned.readsOfInstance + firstReads_[register_] + address_];
  if (const auto failure = FailureOf(EExchangeKind::kRegister, outcome)) {
    read = {EEnd::kFailed, failure->how, static_cast<std::uint8_t>(failure->number), {}};
    NoteFailure(EExchangeKind::kRegister, *failure, outcome, reasons);
  } else {
    read = {EEnd::kGood, {}, 0, TCommandData(outcome.data).Bytes<Read::kValueSize>(Read::kValue)};
  }
  ++address_;
  SkipEmptyRegisters();
  if (register_ < firstReads_.size()) {
    ExpectRegister();
  } else {
    AfterRegisters();
  }
}

void TR8Walk::AfterRegisters() {
  TChip& chip = chips_[instance_];
  for (std::size_t i = 0; i < firstReads_.size(); ++i) chip.hasValue = chip.hasValue || SliceOf(instance_, i).good == 1;
  if (chip.hasValue) {
    candidates_.push_back(instance_);
    ExpectTime(EStep::kFirstTime);
  } else {
    ++instance_;
    BeginInstance();
  }
}

// Only the second timestamp is kept, and only a good first one is followed by it.
void TR8Walk::OnTime(const TOutcome& outcome, TResultReasons& reasons) {
  TChip& chip = chips_[instance_];
  chip.timeFailure = FailureOf(EExchangeKind::kTimestamp, outcome);
  if (chip.timeFailure) {
    NoteFailure(EExchangeKind::kTimestamp, *chip.timeFailure, outcome, reasons);
  } else if (step_ == EStep::kFirstTime) {
    ExpectTime(EStep::kSecondTime);
    return;
  } else {
    chip.timeRaw = FormatHexPairs(TCommandData(outcome.data).Bytes<Read::kTimestampSize>(Read::kTimestamp));
  }
  ++instance_;
  BeginInstance();
}

void TR8Walk::BeginInstance() {
  register_ = 0;
  address_ = 0;
  SkipEmptyRegisters();
  const bool isLeft = instance_ < turn_.planned.instances && register_ < firstReads_.size();
  step_ = isLeft ? EStep::kRegister : EStep::kDone;
  if (isLeft) ExpectRegister();
}

// To the next address, which may be that of a later register.
void TR8Walk::SkipEmptyRegisters() {
  const auto& registers = turn_.planned.registers;
  while (register_ < registers.size() && address_ >= registers[register_].addresses.size()) {
    ++register_;
    address_ = 0;
  }
}

void TR8Walk::ExpectRegister() {
  next_ = RegisterRead(ChipOf(instance_), turn_.planned.registers[register_].addresses[address_]);
}

void TR8Walk::ExpectTime(EStep step) {
  step_ = step;
  next_ = {EExchangeKind::kTimestamp, 0, {Read::kNetworkFunction, Read::kTimestampRead, 0}};
}

// An exchange that was refused because of a stop is not a failure of the service processor.
void TR8Walk::NoteFailure(EExchangeKind kind, const THow& how, const TOutcome& outcome, TResultReasons& reasons) const {
  if (!outcome.WasAttempted()) return;
  TExchangeFailure failure = turn_.FailureOf(kind, how, 0, PlaceOf(instance_));
  if (kind == EExchangeKind::kRegister) {
    failure.registerIndex = static_cast<std::int32_t>(register_);
    failure.address = turn_.planned.registers[register_].addresses[address_];
  }
  reasons.AddFailure(failure);
}

std::uint8_t TR8Walk::ChipOf(unsigned instance) const {
  return turn_.planned.isBridge ? static_cast<std::uint8_t>(instance + 1) : std::uint8_t{0};
}

TR8Walk::TSlice TR8Walk::SliceOf(unsigned instance, std::size_t number) const {
  const TRead* const first = reads_.data() + instance * turn_.planned.readsOfInstance + firstReads_[number];
  TSlice slice = {first, turn_.planned.registers[number].addresses.size(), 0};
  slice.good = static_cast<std::size_t>(
      std::count_if(slice.begin(), slice.end(), [](const TRead& read) { return read.end == EEnd::kGood; }));
  return slice;
}

std::size_t TR8Walk::CandidatesDue() const { return Next() != nullptr ? 0 : candidates_.size() - committed_; }

TInstanceFacts TR8Walk::Commit(const TInstance& instance) {
  const unsigned number = candidates_[committed_++];
  const TChip& chip = chips_[number];
  TInstanceFacts facts;
  facts.key = turn_.Key(PlaceOf(number));
  facts.origin = TOrigin{CollectorProfile::EPath::kR8, 0, ChipOf(number), static_cast<int>(number), chip.timeRaw};
  AddRegisters(number, instance, facts);
  if (chip.timeFailure) facts.missing.push_back({kTimeProperty, {}, *chip.timeFailure});
  return facts;
}

void TR8Walk::AddRegisters(unsigned number, const TInstance& instance, TInstanceFacts& facts) const {
  facts.registers.emplace();
  for (std::size_t i = 0; i < firstReads_.size(); ++i) {
    const TSlice slice = SliceOf(number, i);
    if (slice.good != 1) {
      facts.missing.push_back(MissingRegister(i, slice));
    } else if (instance.IsSet(turn_.planned.registers[i].property)) {
      facts.registers->push_back(FactsOf(i, slice, instance));
    }
  }
}

TRegisterFacts TR8Walk::FactsOf(std::size_t number, const TSlice& slice, const TInstance& instance) const {
  const TPlannedRegister& planned = turn_.planned.registers[number];
  const TRead* const read =
      std::find_if(slice.begin(), slice.end(), [](const TRead& one) { return one.end == EEnd::kGood; });
  TRegisterFacts facts;
  facts.property = planned.property;
  facts.place = planned.addresses[static_cast<std::size_t>(read - slice.first)];
  facts.isNarrow = planned.isNarrow;
  facts.value = boost::endian::load_little_u64(read->value.data());
  if (!planned.isNarrow) return facts;
  const auto upper = static_cast<std::uint32_t>(facts.value >> 32U);
  if (upper != 0) facts.upper = upper;
  facts.value &= 0xFFFFFFFF;
  const auto collected = CollectedNumber(instance.Value(planned.property));
  if (collected && *collected != facts.value) facts.folded = collected;
  return facts;
}

TMissing TR8Walk::MissingRegister(std::size_t number, const TSlice& slice) const {
  const TPlannedRegister& planned = turn_.planned.registers[number];
  TMissing missing;
  missing.property = turn_.planned.cimClass->Properties()[planned.property]->Definition().name;
  if (planned.addresses.size() == 1) {
    missing.where.address = planned.addresses[0];
  } else {
    missing.where.addresses = planned.addresses;
  }
  missing.how = HowMissing(slice);
  return missing;
}

// Several addresses that all failed alike failed that way; otherwise their number of good answers was not one.
THow TR8Walk::HowMissing(const TSlice& slice) const {
  const bool isCommon = slice.size > 0 && std::all_of(slice.begin(), slice.end(), [&slice](const TRead& read) {
                          return read.end == EEnd::kFailed && read.How() == slice.first->How();
                        });
  if (isCommon) return slice.first->How();
  return {EHow::kAnswered, static_cast<std::uint32_t>(slice.good)};
}

bool TR8Walk::IsAbsentRegister(const TSlice& slice) const {
  return IsAbsent(EExchangeKind::kRegister, HowMissing(slice));
}

bool TR8Walk::IsMade(const TSlice& slice) {
  return std::none_of(slice.begin(), slice.end(), [](const TRead& read) { return read.end == EEnd::kUnmade; });
}

// Those that a failure cost, not those that were never asked for. A register without an address is asked for with the
// others of its instance.
std::uint64_t TR8Walk::UnreadRegisters(unsigned instance) const {
  const std::size_t reads = turn_.planned.readsOfInstance;
  const bool isInstanceMade = IsMade({reads_.data() + instance * reads, reads, 0});
  std::uint64_t unread = 0;
  for (std::size_t i = 0; i < firstReads_.size(); ++i) {
    const TSlice slice = SliceOf(instance, i);
    const bool isMade = slice.size > 0 ? IsMade(slice) : isInstanceMade;
    if (isMade && slice.good != 1 && !IsAbsentRegister(slice)) ++unread;
  }
  return unread;
}

bool TR8Walk::IsAbsentInstance(unsigned instance) const {
  for (std::size_t i = 0; i < firstReads_.size(); ++i) {
    if (!IsAbsentRegister(SliceOf(instance, i))) return false;
  }
  return true;
}

void TR8Walk::Finish(TResultReasons& reasons) {
  if (!turn_.planned.hasWay || firstReads_.empty()) return;
  std::uint64_t registers = 0;
  std::uint64_t times = 0;
  for (unsigned i = 0; i < turn_.planned.instances; ++i) {
    registers += UnreadRegisters(i);
    if (chips_[i].timeFailure && !IsAbsent(EExchangeKind::kTimestamp, *chips_[i].timeFailure)) ++times;
    const auto committedEnd = candidates_.begin() + static_cast<std::ptrdiff_t>(committed_);
    if (std::binary_search(candidates_.begin(), committedEnd, i)) continue;
    reasons.AddUnread({turn_.number, PlaceOf(i), IsAbsentInstance(i) ? EUnread::kAbsent : EUnread::kRegisterUnread});
  }
  reasons.AddReason(turn_.number, EReason::kRegisterUnread, registers);
  reasons.AddReason(turn_.number, EReason::kTimeUnread, times);
}

}  // namespace velhost
