// Follows the collector through a class whose registers are read one by one over IPMI.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/result/turnwalk.h"

namespace velhost {

/// For each instance: all addresses of all registers; then, if some register had exactly one good answer, the
/// timestamp, and if that was good the timestamp again. Such instances are committed after the last exchange. The
/// collector never retries.
class TR8Walk : public ITurnWalk {
 public:
  explicit TR8Walk(const TWalkedTurn& turn);

  const TExpected* Next() const override { return step_ == EStep::kDone ? nullptr : &next_; }
  void OnMade(EExchangeKind kind, const TOutcome& outcome, TResultReasons& reasons) override;
  std::size_t CandidatesDue() const override;
  TInstanceFacts Commit(const TInstance& instance) override;
  void Finish(TResultReasons& reasons) override;

 private:
  enum class EStep { kRegister, kFirstTime, kSecondTime, kDone };
  enum class EEnd : std::uint8_t { kUnmade, kGood, kFailed };

  /// Kept small: there may be more than a hundred thousand.
  struct TRead {
    EEnd end = EEnd::kUnmade;
    EHow how = EHow::kLost;
    std::uint8_t number = 0;
    std::array<std::uint8_t, 8> value{};  ///< as sent, least significant byte first
    THow How() const { return {how, number}; }
  };
  struct TChip {
    bool hasValue = false;              ///< some register had exactly one good answer
    std::optional<THow> timeFailure{};  ///< of the timestamp read that failed
    std::string timeRaw{};
  };
  /// The reads of one register of one instance.
  struct TSlice {
    const TRead* first;
    std::size_t size;
    std::size_t good;
    const TRead* begin() const { return first; }
    const TRead* end() const { return first + size; }
  };

  void OnRegister(const TOutcome& outcome, TResultReasons& reasons);
  void OnTime(const TOutcome& outcome, TResultReasons& reasons);
  void AfterRegisters();
  void BeginInstance();
  void SkipEmptyRegisters();
  void ExpectRegister();
  void ExpectTime(EStep step);
  void NoteFailure(EExchangeKind kind, const THow& how, const TOutcome& outcome, TResultReasons& reasons) const;

  std::uint8_t ChipOf(unsigned instance) const;
  TPlace PlaceOf(unsigned instance) const { return {0, static_cast<int>(instance)}; }
  TSlice SliceOf(unsigned instance, std::size_t number) const;
  THow HowMissing(const TSlice& slice) const;
  TMissing MissingRegister(std::size_t number, const TSlice& slice) const;
  TRegisterFacts FactsOf(std::size_t number, const TSlice& slice, const TInstance& instance) const;
  void AddRegisters(unsigned number, const TInstance& instance, TInstanceFacts& facts) const;
  bool IsAbsentRegister(const TSlice& slice) const;
  static bool IsMade(const TSlice& slice);
  std::uint64_t UnreadRegisters(unsigned instance) const;
  bool IsAbsentInstance(unsigned instance) const;

  TWalkedTurn turn_;
  EStep step_ = EStep::kDone;
  TExpected next_;
  unsigned instance_ = 0;                ///< being read
  std::size_t register_ = 0;             ///< index into TPlannedClass::registers
  std::size_t address_ = 0;              ///< index into its addresses
  std::vector<std::size_t> firstReads_;  ///< of each register, within the reads of its instance
  std::vector<TRead> reads_;
  std::vector<TChip> chips_;
  std::vector<unsigned> candidates_;
  std::size_t committed_ = 0;
};

}  // namespace velhost
