// Follows the collector through the storage areas of the BMC nodes, which hold the capture files.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/result/turnwalk.h"

namespace velhost {

/// For each area of kCaptureAreas and each node: open, size, reads, close, commit. A file that cannot be opened has no
/// further exchange, one without a size is not even closed, and one of negative size is closed without a read.
class TCaptureWalk : public ITurnWalk {
 public:
  explicit TCaptureWalk(const TWalkedTurn& turn);

  const TExpected* Next() const override { return current_ < files_.size() ? &next_ : nullptr; }
  bool Accepts(const TExpected& other) const override;
  void OnMade(EExchangeKind kind, const TOutcome& outcome, TResultReasons& reasons) override;
  void OnSizeRefused(const std::string& sentence, TResultReasons& reasons) override;
  std::size_t CandidatesDue() const override { return candidate_ ? 1 : 0; }
  TInstanceFacts Commit(const TInstance& instance) override;
  void Finish(TResultReasons& reasons) override;

 private:
  enum class EFile : std::uint8_t { kUnmade, kAbsent, kUnread, kRefused, kCollected, kCommitted };
  struct TFile {
    EFile end = EFile::kUnmade;
    std::int32_t size = 0;
    std::uint64_t received = 0;
    bool hasFailedRead = false;         ///< or one that brought less than it should
    std::optional<TMissing> missing{};  ///< from the first byte that was not received
  };
  /// The reads of the file, counted as the collector counts them.
  struct TReads {
    int offset = 0;
    int count = 0;
    int chunk = 0;
    bool Advance(int size);
  };

  TPlace PlaceOf(std::size_t file) const;
  TPlace Place() const { return PlaceOf(current_); }
  wire::TCommandBuffer HandleRequest(std::uint8_t subCommand, std::uint8_t length) const;
  void ExpectOpen();
  void ExpectSize();
  void ExpectRead();
  void ExpectClose();
  void NextFile(EFile end);
  void OnOpen(const std::optional<THow>& failure, const TOutcome& outcome);
  void OnSize(const std::optional<THow>& failure, const TOutcome& outcome);
  void OnRead(const std::optional<THow>& failure, const TOutcome& outcome, TResultReasons& reasons);
  void Miss(std::int64_t brought, const THow& how);
  void OnClose();
  void NoteFailure(EExchangeKind kind, const THow& how, const TOutcome& outcome, TResultReasons& reasons) const;

  TWalkedTurn turn_;
  std::size_t nodes_ = 0;
  std::vector<TFile> files_;  ///< by area, then node
  std::size_t current_ = 0;
  TExpected next_;
  std::array<std::uint8_t, 4> handle_{};
  TReads reads_;
  std::optional<std::size_t> candidate_;
};

}  // namespace velhost
