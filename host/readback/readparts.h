// The parts that instances and summaries have in common.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/readback/jsoncursor.h"
#include "host/readback/readresult.h"

namespace velhost {

/// "0x" and so many upper-case digits: 6, 8 or 16; any of `sizes`.
struct THexText {
  std::uint64_t value = 0;
  std::size_t digits = 0;
};
THexText ReadHex(TJsonCursor& json, std::initializer_list<std::size_t> sizes);

std::string ReadText(TJsonCursor& json);
std::vector<std::string> ReadTexts(TJsonCursor& json);
std::map<std::string, std::string> ReadLabels(TJsonCursor& json);

[[noreturn]] void FailAtWord(const TJsonCursor& json, std::string_view word,
                             const std::vector<std::string_view>& words);

/// One of the words that `name` gives for the enumerators from 0 to `last`.
template <typename TEnum, typename TName>
TEnum ReadWord(TJsonCursor& json, TEnum last, const TName& name) {
  const std::string_view word = json.Text("a word");
  std::vector<std::string_view> words;
  for (int i = 0; i <= static_cast<int>(last); ++i) {
    words.emplace_back(name(static_cast<TEnum>(i)));
    if (words.back() == word) return static_cast<TEnum>(i);
  }
  FailAtWord(json, word, words);
}

/// CLASS/node0/instance2, CLASS/sp1/instance0#2, CLASS/node0/cpu_err; with `mayBeUnknown` CLASS/?1 too. The class must
/// be the same, without regard to case.
std::string ReadKey(TJsonCursor& json, bool mayBeUnknown);
/// Whether the place in a key that was read is unknown.
bool HasUnknownPlace(std::string_view key);

/// The inverse of BitsText; empty unless the text is N or HIGH:LOW inside the width.
std::optional<TBits> BitsOf(std::string_view text, unsigned width, bool isMsb0);

TOrigin ReadOrigin(TJsonCursor& json);

/// A field's value: a number of up to 32 bits, or hex text.
struct TFieldValue {
  std::uint64_t value = 0;
  bool isWide = false;
};
TFieldValue ReadFieldValue(TJsonCursor& json);

/// The members that say how a read ended. Exactly one of them has to be there.
class THowReader {
 public:
  /// Reads the member if it is one of those.
  bool Take(TJsonCursor& json, std::string_view name);
  /// Fails at the object's place unless there was exactly one.
  THow How(const TJsonCursor& json, const TJsonPlace& place) const;

 private:
  THow how_;
  int count_ = 0;
};
inline constexpr std::array<std::string_view, 6> kHowMembers = {"completion_code", "lost",         "short",
                                                                "not_sent",        "not_recorded", "answered"};

/// Fails if a list has more than kMostReadEntries.
void CheckEntries(const TJsonCursor& json, std::size_t count);
template <typename TRead>
void ReadList(TJsonCursor& json, std::string_view what, const TRead& read) {
  json.EnterArray(what);
  for (std::size_t count = 0; json.NextElement(); CheckEntries(json, ++count)) read();
}

/// Reads {"kind":"instance",...}, with run_id and labels if `ofLine`.
struct TLineIdentity {
  std::string runId;
  std::map<std::string, std::string> labels;
};
/// What is read of the properties.
enum class EProperties {
  kAll,
  kCaptureBytes,  ///< the others are checked
  kCheckedBefore  ///< the capture bytes, of a text that has been checked
};
void ReadInstance(TJsonCursor& json, EProperties properties, TLineIdentity* ofLine, TReadInstance& instance);

/// Reads the value of a member of a summary or of the document, other than its instances.
void ReadResultMember(TJsonCursor& json, std::string_view name, bool keepAll, TReadResult& result);
/// Those members: the header's first.
const std::vector<std::string_view>& ResultMembers();

}  // namespace velhost
