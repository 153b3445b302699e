// One MOF text of a schema (a file, or the content of a string in a file), and its names: duplicates in a list, and
// "did you mean" for an undeclared one.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/model/cimclass.h"
#include "host/schema/mofsyntax.h"
#include "host/schema/schemalog.h"

namespace velhost {

class TEmbeddedText;

/// One text and its parse result.
struct TSchemaUnit {
  std::uint32_t number;  ///< of the file
  const TSchemaSource* source;
  const Mof::TMofFile* file;
  const TEmbeddedText* embedding;  ///< the string that contains the text; null for a file

  std::string_view Text(Mof::TSpan span) const { return source->Text(span); }
  /// See Mof::Quoted.
  std::string Quoted(Mof::TSpan span) const;
  /// The place in the file, also for an embedded text.
  TSchemaPlace Place(std::uint32_t offset) const;
  TSchemaPlace Place(Mof::TSpan span) const { return Place(span.begin); }
  /// For the text of a file only.
  TSourceLocation Locate(Mof::TSpan span) const { return source->Locate(span.begin); }
};

/// The value of a string literal: its pieces joined, and their escapes resolved.
std::string StringOf(const TSchemaUnit& unit, const Mof::TLiteral& literal);

/// Most lists are short, and for a few names a linear search is faster than a set.
class TSeenNames {
 public:
  /// Whether the name is new, ignoring case. The text must outlive this.
  bool Add(std::string_view name) {
    if (few_.size() == kFew) return many_.insert(name).second && !IsFew(name);
    if (IsFew(name)) return false;
    few_.push_back(name);
    return true;
  }

 private:
  static constexpr std::size_t kFew = 24;

  bool IsFew(std::string_view name) const {
    return std::any_of(few_.begin(), few_.end(), [name](std::string_view seen) { return EqualNames(seen, name); });
  }

  std::vector<std::string_view> few_;
  Mof::TNameSet many_;
};

/// Takes the declared names one by one. Gives no hint for very short names, because everything is close to them, and
/// looks at only the first few thousand names of a huge schema.
class TNameHint {
 public:
  /// `steps`: see NearestName.
  TNameHint(std::string_view name, std::size_t& steps) : name_(name), steps_(steps) {}
  /// Whether another candidate could still matter.
  bool Wants() const { return name_.size() >= kShortest && candidates_.size() < kMost && steps_ > 0; }
  /// The candidate must outlive this.
  void Offer(std::string_view candidate);
  /// "; did you mean NAME?", or empty if no candidate is close.
  std::string Text() const;

 private:
  static constexpr std::size_t kShortest = 3;
  static constexpr std::size_t kMost = 5000;

  std::string_view name_;
  std::size_t& steps_;
  std::vector<std::string_view> candidates_;
};

/// Offers those names of a class's properties that may be shown.
void OfferProperties(const TCIMClass& cimClass, const TSchemaLog& log, TNameHint& hint);

}  // namespace velhost
