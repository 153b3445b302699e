// One side of a comparison: a result, with what it says of each key.
#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "host/base/sourcereader.h"
#include "host/base/storedbytes.h"
#include "host/readback/resultreader.h"

namespace velhost {

/// What a result says of a key.
enum class EKeyState {
  kDelivered,
  kAbsent,        ///< it was tried, and does not exist
  kUnread,        ///< it was tried, and failed
  kUnknownPlace,  ///< it may be one of the instances whose place is unknown
  kNotCollected,  ///< the run did not reach its class, or could not serve it
  kCut,           ///< it may come after the cut
  kNotAskedFor,   ///< its class was not asked for
  kNotThere       ///< this server does not have it
};

/// A key that can be looked up: its class without regard to case.
std::string FoldedKey(std::string_view key);
/// "krosg_a", or "krosg_a#2" for a key of its class's second collection.
std::string TurnOf(std::string_view foldedKey);

class TComparedSide {
 public:
  /// Reads and checks the whole result. Throws THostError (kMalformed) if it cannot be compared.
  TComparedSide(const std::string& path, TStoredBytes text, ISourceReader* reader);

  TResultReader& Reader() { return reader_; }
  const TReadResult& Result() const { return reader_.Result(); }
  EKeyState StateOf(const std::string& foldedKey) const;

  /// The delivered instances are numbered from 0, in their order.
  std::size_t Instances() const { return entries_.size(); }
  /// Empty for a key that was not delivered.
  std::optional<std::size_t> Find(const std::string& foldedKey) const;
  /// Null if the place of the instance is unknown.
  const std::string* FoldedKeyOf(std::size_t number) const { return entries_[number].foldedKey; }
  /// The same for two instances that do not differ in anything that is compared; empty if something was not read.
  const std::string& FingerprintOf(std::size_t number) const { return entries_[number].fingerprint; }
  /// Valid until the next call.
  const TReadInstance& ReadAt(std::size_t number) { return reader_.ReadAt(entries_[number].place); }

  /// How the result spells each class that it says anything of, by its folded name; "#2" follows that of a second
  /// collection.
  const std::map<std::string, std::string>& Turns() const { return turns_; }
  /// Of the turns, those of which some instance has an unknown place.
  const std::set<std::string>& UnknownPlaces() const { return unknownPlaces_; }

 private:
  void Add(const TReadInstance& instance, const TJsonPlace& place);
  void AddSummary();
  void NoteTurn(const std::string& className, std::string_view key);

  std::string path_;
  struct TEntry {
    TJsonPlace place;
    const std::string* foldedKey = nullptr;  // in delivered_
    std::string fingerprint;
  };
  std::vector<TEntry> entries_;
  std::unordered_map<std::string, std::size_t> delivered_;
  std::unordered_map<std::string, EUnread> unread_;
  std::map<std::string, std::string> turns_;
  std::set<std::string> unknownPlaces_;
  std::set<std::string> uncollected_;
  bool isUnfinished_ = false;  // the run ended before it had come to all classes
  TResultReader reader_;       // fills the others while it checks
};

}  // namespace velhost
