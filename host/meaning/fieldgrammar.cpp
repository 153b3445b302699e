#include "host/meaning/fieldgrammar.h"

#include "host/base/digits.h"
#include "host/base/text.h"
#include "host/base/utf8.h"

namespace velhost {

namespace {

constexpr std::string_view kWhiteSpace = " \t\n\r\f\v";

std::string Found(std::string_view text, std::size_t at) {
  if (at >= text.size()) return "the end of the string";
  const TCodePoint next = NextCodePoint(text, at);
  if (next.value == ' ') return "a blank";
  if (next.valid && IsUnsafe(next.value)) return "a character with code " + std::to_string(next.value);
  return SingleQuoted(text.substr(at, next.size));
}

// Reads an element from left to right. Once something is missing, nothing more is taken.
class TReader {
 public:
  TReader(std::string_view text, std::size_t at) : text_(text), at_(at) {}

  std::size_t At() const { return at_; }
  const std::optional<TFieldBreach>& Breach() const { return breach_; }
  bool Fail(std::size_t at, std::string_view expected) {
    if (!breach_) breach_ = {at, "found " + Found(text_, at) + ", expected " + std::string(expected)};
    return false;
  }
  bool Take(std::string_view token) {
    if (breach_ || !text_.substr(at_).starts_with(token)) return false;
    at_ += token.size();
    return true;
  }

  bool TakeBit(unsigned& bit, std::size_t& at) {
    at = at_;
    bit = 0;
    while (at_ < text_.size() && at_ < at + 2 && IsDigit(text_[at_])) {
      bit = bit * 10 + static_cast<unsigned>(text_[at_++] - '0');
    }
    return at_ > at || Fail(at_, "the number of a bit");
  }

  bool TakeBits(TWrittenBits& bits) {
    if (!TakeBit(bits.first, bits.firstAt)) return false;
    bits.last = bits.first;
    bits.lastAt = bits.firstAt;
    return !Take(":") || TakeBit(bits.last, bits.lastAt);
  }

  bool TakeValue(TWrittenValue& value) {
    value.at = at_;
    const bool isHex = Take("0x");
    const std::size_t digitsAt = at_;
    const unsigned base = isHex ? 16 : 10;
    value.value = 0;
    for (; at_ < text_.size(); ++at_) {
      const int digit = HexDigitValue(text_[at_]);
      if (digit < 0 || static_cast<unsigned>(digit) >= base) break;
      Append(value.value, base, static_cast<unsigned>(digit));
    }
    value.text = text_.substr(value.at, at_ - value.at);
    return at_ > digitsAt || Fail(at_, isHex ? "a hexadecimal digit" : "a value");
  }

  bool TakeValues(TWrittenValues& values) {
    if (!TakeValue(values.first)) return false;
    values.last = values.first;
    return !Take("-") || TakeValue(values.last);
  }

  // `others` are what else could have come before the blanks.
  bool TakeText(TFieldElement& element, std::string_view others) {
    const std::size_t blanksAt = at_;
    while (Take(" ")) {
    }
    if (at_ == blanksAt) return Fail(at_, std::string(others) + "a blank");
    const std::string what = element.values ? "a text" : "a name";
    const bool isWhite = at_ < text_.size() && kWhiteSpace.find(text_[at_]) != std::string_view::npos;
    if (at_ == text_.size() || isWhite) return Fail(at_, what);
    const std::size_t lineEnd = text_.find('\n', at_);
    if (lineEnd != std::string_view::npos) return Fail(lineEnd, what + " of one line");
    element.text = text_.substr(at_);
    element.textAt = at_;
    return true;
  }

  bool TakeElement(TFieldElement& element) {
    if (!TakeBits(element.bits)) return false;
    if (Take("/")) {
      element.isHex = Take("hex");
      return (element.isHex || Fail(at_, "'hex'")) && TakeText(element, "");
    }
    if (Take("=")) {
      TWrittenValues values;
      if (!TakeValues(values)) return false;
      const bool isRange = values.last.at != values.first.at;
      element.values = values;
      return TakeText(element, isRange ? "" : "'-' or ");
    }
    const bool isRange = element.bits.lastAt != element.bits.firstAt;
    return TakeText(element, isRange ? "'/hex', '=' or " : "':', '/hex', '=' or ");
  }

 private:
  static void Append(std::optional<std::uint64_t>& value, unsigned base, unsigned digit) {
    if (!value) return;
    if (*value > (~std::uint64_t{0} - digit) / base) {
      value.reset();
    } else {
      value = *value * base + digit;
    }
  }

  std::string_view text_;
  std::size_t at_;
  std::optional<TFieldBreach> breach_;
};

TFieldBreach OutsideRegister(unsigned bit, std::size_t at, unsigned width) {
  return {at, "found bit " + std::to_string(bit) + ", expected 0 to " + std::to_string(width - 1)};
}

}  // namespace

std::variant<TFieldElement, TFieldBreach> ParseFieldElement(std::string_view element) {
  TReader reader(element, 0);
  TFieldElement parsed;
  if (!reader.TakeElement(parsed)) return *reader.Breach();
  return parsed;
}

std::variant<TWrittenBits, TFieldBreach> ParseBitRange(std::string_view text, std::size_t at) {
  TReader reader(text, at);
  TWrittenBits bits;
  const bool isGood = reader.TakeBit(bits.first, bits.firstAt) &&
                      (reader.Take(":") || reader.Fail(reader.At(), "':'")) && reader.TakeBit(bits.last, bits.lastAt) &&
                      (reader.At() == text.size() || reader.Fail(reader.At(), "the end of the string"));
  if (!isGood) return *reader.Breach();
  return bits;
}

std::variant<TBits, TFieldBreach> BitsOf(const TWrittenBits& written, unsigned width, bool isMsb0) {
  if (written.first >= width) return OutsideRegister(written.first, written.firstAt, width);
  if (written.last >= width) return OutsideRegister(written.last, written.lastAt, width);
  const auto placeOf = [width, isMsb0](unsigned bit) { return isMsb0 ? width - 1 - bit : bit; };
  const TBits bits{placeOf(written.first), placeOf(written.last)};
  if (bits.high >= bits.low) return bits;
  const std::string first = std::to_string(written.first);
  const std::string last = std::to_string(written.last);
  return TFieldBreach{written.firstAt, "found " + first + ":" + last + " in a register of the numbering " +
                                           (isMsb0 ? "msb0" : "lsb0") + ", expected the more significant end first, " +
                                           last + ":" + first};
}

}  // namespace velhost
