// Follows the collector through a class whose registers are in the register blocks of the service processors.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "host/result/turnwalk.h"

namespace velhost {

/// One dot command to each service processor, whatever the answers. The instances of all blocks received are
/// committed after the last one, but a block without a valid header drops those of the blocks before it.
class TJfrWalk : public ITurnWalk {
 public:
  explicit TJfrWalk(const TWalkedTurn& turn);

  const TExpected* Next() const override { return blocks_.size() < turn_.plan.blocks ? &next_ : nullptr; }
  void OnMade(EExchangeKind kind, const TOutcome& outcome, TResultReasons& reasons) override;
  std::size_t CandidatesDue() const override;
  TInstanceFacts Commit(const TInstance& instance) override;
  void Finish(TResultReasons& reasons) override;

 private:
  enum class EBlock { kUnread, kUndecodable, kGood };
  struct TBlock {
    EBlock end = EBlock::kUnread;
    std::vector<std::uint8_t> bytes{};  ///< those received
    std::size_t header = 0;             ///< where the header that counts begins
    bool isShort = false;               ///< and something is missing because of it
    bool isDiscarded = false;           ///< a later block has no header

    std::uint32_t CameOf(std::size_t offset, std::size_t size) const;
    /// A byte as the collector reads it.
    std::uint8_t Byte(std::size_t offset) const;
  };

  TBlock BlockOf(const TOutcome& outcome) const;
  void Place(const TBlock& block, int serviceProcessor);
  void NoteFailure(const THow& how, const TOutcome& outcome, TResultReasons& reasons) const;
  bool HasCost(const TBlock& block) const;
  std::size_t OffsetOf(const TBlock& block, const TPlannedRegister& one, int bank) const;
  void AddRegister(const TPlannedRegister& one, const TBlock& block, const TPlace& place, const TInstance& instance,
                   TInstanceFacts& facts) const;
  EUnread CodeOf(const TBlock& block) const;
  void AddUnread(int serviceProcessor, EUnread code, std::size_t& delivered, TResultReasons& reasons) const;

  TWalkedTurn turn_;
  TExpected next_;
  std::vector<TBlock> blocks_;
  std::vector<TPlace> candidates_;
  std::size_t committed_ = 0;
};

}  // namespace velhost
