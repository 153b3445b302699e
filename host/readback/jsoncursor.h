// JSON (RFC 8259), read value by value in the order of the text. The caller says what it expects next; anything else is
// an error at its line and column. Nothing recurses, and memory does not grow with the text, only with its longest
// string.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "host/base/sourcereader.h"
#include "host/base/storedbytes.h"
#include "host/base/textdiagnostic.h"

namespace velhost {

/// The text ended inside a value, or where one should begin.
class TEndOfJson : public TDiagnosedError {
 public:
  using TDiagnosedError::TDiagnosedError;
  TEndOfJson(const TEndOfJson&) = default;
  TEndOfJson& operator=(const TEndOfJson&) = default;
  ~TEndOfJson() override;
};

/// A place in the text, from which it can also be read again.
struct TJsonPlace {
  std::uint64_t offset = 0;
  std::uint64_t lineStart = 0;  ///< offset of the line's first byte
  std::uint32_t line = 1;
};

struct TJsonNumber {
  bool isInteger = true;  ///< no fraction and no exponent, and it fits into 64 bits
  bool isNegative = false;
  std::uint64_t magnitude = 0;  ///< of an integer
  double real = 0;              ///< of any other number
};

class TJsonCursor {
 public:
  static constexpr std::size_t kLongestText = std::size_t{128} << 20U;
  static constexpr int kDeepest = 32;

  enum class EKind { kObject, kArray, kString, kNumber, kBoolean, kNull };

  /// `file` is the name in diagnostics. `reader` (may be null) is asked now and then whether to go on; neither is
  /// owned.
  TJsonCursor(const std::string& file, TStoredBytes text, ISourceReader* reader = nullptr);

  /// Goes to a place where a value begins.
  void GoTo(const TJsonPlace& place);
  /// Of the next value, after white space; otherwise of whatever is there.
  TJsonPlace Place();
  /// Of the value that was read last.
  const TJsonPlace& LastPlace() const { return last_; }
  /// Whether nothing but white space follows.
  bool IsAtEnd();

  // All of these throw TDiagnosedError (kMalformed) for a syntax error or if the next value is of another kind.
  // `what` is what is expected: "an array of strings". The texts are valid until the next call.

  EKind Kind();
  void EnterObject(std::string_view what);
  /// Reads the name of the next member and its colon. False after the object's end.
  bool NextMember(std::string_view& name);
  void EnterArray(std::string_view what);
  /// False after the array's end.
  bool NextElement();
  std::string_view Text(std::string_view what);
  TJsonNumber Number(std::string_view what);
  bool Boolean();
  void Null();
  std::uint64_t Unsigned(std::uint64_t least, std::uint64_t most);
  std::int64_t Signed(std::int64_t least, std::int64_t most);
  /// Reads any value, checks its syntax, and drops it.
  void Skip();
  /// Drops any value of a text whose syntax has been checked before; of any other it may drop more or less.
  void SkipChecked();

  /// At the value (or the name) that was read last.
  [[noreturn]] void Fail(const std::string& message) const { FailAt(last_, message); }
  [[noreturn]] void FailAt(const TJsonPlace& place, const std::string& message) const;

 private:
  static constexpr std::size_t kBufferSize = std::size_t{256} << 10U;

  std::uint64_t Offset() const { return start_ + at_; }
  bool Refill();
  /// The next byte, or -1 at the end.
  int Peek() { return at_ < buffer_.size() || Refill() ? static_cast<unsigned char>(buffer_[at_]) : -1; }
  void SkipSpace();
  /// After white space.
  int PeekToken();
  void BeginValue(bool isExpected, std::string_view what);
  void Enter(char open, std::string_view what);
  bool Next(char close, std::string_view what);
  void Word(std::string_view word);
  void SkipString();
  std::string_view QuotedText();
  bool TakePlain(bool& isAscii);
  void TakeEscape();
  char32_t HexEscape();
  void CheckUtf8(std::string_view text) const;
  TJsonNumber LongNumber();
  [[noreturn]] void FailHere(std::string_view expected);
  std::string Found();

  std::string file_;
  TStoredBytes text_;
  ISourceReader* reader_;
  std::vector<char> buffer_;
  std::uint64_t start_ = 0;  // of the buffer, in the text
  std::size_t at_ = 0;       // in the buffer
  std::uint64_t lineStart_ = 0;
  std::uint32_t line_ = 1;
  bool isAfterValue_ = false;  // a comma or an end has to come before the next one
  TJsonPlace last_;
  std::string scratch_;
};

/// Reads an object whose members are known: each at most once, and no other.
class TJsonObject {
 public:
  /// At most 64 names. Neither is owned. `what` names the object in messages: "an instance".
  TJsonObject(TJsonCursor& json, const std::vector<std::string_view>& names, std::string_view what);

  /// The name of the next member, whose value must be read or skipped then; empty after the last one.
  std::string_view Next();
  bool Has(std::string_view name) const;
  /// After the last member: fails at the object's place if one of these is not there.
  void Require(std::initializer_list<std::string_view> names) const;
  const TJsonPlace& Place() const { return place_; }

 private:
  std::size_t Find(std::string_view name) const;

  TJsonCursor& json_;
  const std::vector<std::string_view>& names_;
  std::string_view what_;
  TJsonPlace place_;
  std::uint64_t seen_ = 0;
  std::size_t expected_ = 0;  // the member after the last one, as velhost writes them
};

}  // namespace velhost
