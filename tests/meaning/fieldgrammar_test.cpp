// One element of "Fields": what its parts are, and for bad ones where the breach is and what it says.
#include "host/meaning/fieldgrammar.h"

#include <gtest/gtest.h>

#include <regex>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "tests/support/namespaces.h"

namespace tests {
namespace {

TFieldElement Good(std::string_view element) {
  const auto parsed = ParseFieldElement(element);
  const auto* const field = std::get_if<TFieldElement>(&parsed);
  EXPECT_NE(field, nullptr) << element;
  return field ? *field : TFieldElement();
}

// "OFFSET: MESSAGE"; empty for a good element.
std::string BreachOf(std::string_view element) {
  const auto parsed = ParseFieldElement(element);
  const auto* const breach = std::get_if<TFieldBreach>(&parsed);
  return breach ? std::to_string(breach->offset) + ": " + breach->message : "";
}

TEST(FieldGrammar, OneBitAndItsName) {
  const TFieldElement field = Good("16 Unexpected completion");
  EXPECT_EQ(field.bits.first, 16U);
  EXPECT_EQ(field.bits.last, 16U);
  EXPECT_FALSE(field.isHex);
  EXPECT_FALSE(field.values);
  EXPECT_EQ(field.text, "Unexpected completion");
  EXPECT_EQ(field.textAt, 3U);
}

TEST(FieldGrammar, ARangeOfBitsAsItIsWritten) {
  const TFieldElement field = Good("05:4   Link speed  ");
  EXPECT_EQ(field.bits.first, 5U);
  EXPECT_EQ(field.bits.last, 4U);
  EXPECT_EQ(field.bits.lastAt, 3U);
  EXPECT_EQ(field.text, "Link speed  ") << "blanks at the end belong to the name";
  EXPECT_EQ(field.textAt, 7U);
}

TEST(FieldGrammar, AHexField) {
  const TFieldElement field = Good("47:32/hex Device");
  EXPECT_EQ(field.bits.first, 47U);
  EXPECT_EQ(field.bits.last, 32U);
  EXPECT_TRUE(field.isHex);
  EXPECT_EQ(field.text, "Device");
}

TEST(FieldGrammar, TheTextOfAValue) {
  const TFieldElement field = Good("5:4=1 2.5 GT/s");
  EXPECT_EQ(field.bits.first, 5U);
  ASSERT_TRUE(field.values);
  EXPECT_EQ(field.values->first.value, 1U);
  EXPECT_EQ(field.values->last.value, 1U);
  EXPECT_EQ(field.values->last.at, 4U);
  EXPECT_EQ(field.text, "2.5 GT/s");
}

TEST(FieldGrammar, TheTextOfARangeOfValues) {
  const TFieldElement field = Good("3:0=8-0x0F reserved");
  ASSERT_TRUE(field.values);
  EXPECT_EQ(field.values->first.value, 8U);
  EXPECT_EQ(field.values->last.value, 15U);
  EXPECT_EQ(field.values->last.text, "0x0F");
  EXPECT_EQ(field.values->last.at, 6U);
  EXPECT_EQ(field.text, "reserved");
}

TEST(FieldGrammar, TheLargestValuesAndThoseBeyond) {
  EXPECT_EQ(Good("63:0=18446744073709551615 a").values->first.value, 0xFFFFFFFFFFFFFFFF);
  EXPECT_EQ(Good("63:0=0xFFFFFFFFffffffff a").values->first.value, 0xFFFFFFFFFFFFFFFF);
  EXPECT_EQ(Good("63:0=000000000000000000000000000018 a").values->first.value, 18U);
  EXPECT_EQ(Good("63:0=18446744073709551616 a").values->first.value, std::nullopt);
  EXPECT_EQ(Good("63:0=0x10000000000000000 a").values->first.value, std::nullopt);
  EXPECT_EQ(Good("63:0=99999999999999999999999990 a").values->first.value, std::nullopt) << "does not wrap around";
}

TEST(FieldGrammar, EverythingAfterTheBlanksIsText) {
  EXPECT_EQ(Good("1 =5").text, "=5");
  EXPECT_EQ(Good("1 /hex 2:1 x").text, "/hex 2:1 x");
  EXPECT_EQ(Good("1=0 \xC3\xBC \"\\\t\r").text, "\xC3\xBC \"\\\t\r");
  EXPECT_EQ(Good("1 \xC2\xA0").text, "\xC2\xA0") << "only white space of ASCII is white space";
}

TEST(FieldGrammar, SaysWhatIsMissing) {
  EXPECT_EQ(BreachOf(""), "0: found the end of the string, expected the number of a bit");
  EXPECT_EQ(BreachOf(" 1 a"), "0: found a blank, expected the number of a bit");
  EXPECT_EQ(BreachOf("-1 a"), "0: found '-', expected the number of a bit");
  EXPECT_EQ(BreachOf("Name"), "0: found 'N', expected the number of a bit");
  EXPECT_EQ(BreachOf("5"), "1: found the end of the string, expected ':', '/hex', '=' or a blank");
  EXPECT_EQ(BreachOf("100 a"), "2: found '0', expected ':', '/hex', '=' or a blank");
  EXPECT_EQ(BreachOf("5\ta"), "1: found a character with code 9, expected ':', '/hex', '=' or a blank");
  EXPECT_EQ(BreachOf("5: a"), "2: found a blank, expected the number of a bit");
  EXPECT_EQ(BreachOf("5:4:3 a"), "3: found ':', expected '/hex', '=' or a blank");
  EXPECT_EQ(BreachOf("5:4-3 a"), "3: found '-', expected '/hex', '=' or a blank");
  EXPECT_EQ(BreachOf("5 "), "2: found the end of the string, expected a name");
  EXPECT_EQ(BreachOf("5  \ta"), "3: found a character with code 9, expected a name");
  EXPECT_EQ(BreachOf("5 a\nb"), "3: found a character with code 10, expected a name of one line");
}

TEST(FieldGrammar, SaysWhatIsMissingInAHexField) {
  EXPECT_EQ(BreachOf("5/HEX a"), "2: found 'H', expected 'hex'");
  EXPECT_EQ(BreachOf("5/he"), "2: found 'h', expected 'hex'");
  EXPECT_EQ(BreachOf("5/hex"), "5: found the end of the string, expected a blank");
  EXPECT_EQ(BreachOf("5/hex=1 a"), "5: found '=', expected a blank");
  EXPECT_EQ(BreachOf("5 /hex"), "") << "its name is /hex";
}

TEST(FieldGrammar, SaysWhatIsMissingInTheTextOfAValue) {
  EXPECT_EQ(BreachOf("5= a"), "2: found a blank, expected a value");
  EXPECT_EQ(BreachOf("5=x a"), "2: found 'x', expected a value");
  EXPECT_EQ(BreachOf("5=1"), "3: found the end of the string, expected '-' or a blank");
  EXPECT_EQ(BreachOf("5=1f a"), "3: found 'f', expected '-' or a blank");
  EXPECT_EQ(BreachOf("5=0x a"), "4: found a blank, expected a hexadecimal digit");
  EXPECT_EQ(BreachOf("5=0X1 a"), "3: found 'X', expected '-' or a blank");
  EXPECT_EQ(BreachOf("5=0xG a"), "4: found 'G', expected a hexadecimal digit");
  EXPECT_EQ(BreachOf("5=1- a"), "4: found a blank, expected a value");
  EXPECT_EQ(BreachOf("5=1-2"), "5: found the end of the string, expected a blank");
  EXPECT_EQ(BreachOf("5=1-2-3 a"), "5: found '-', expected a blank");
  EXPECT_EQ(BreachOf("5=1 "), "4: found the end of the string, expected a text");
  EXPECT_EQ(BreachOf("5=1 a\n"), "5: found a character with code 10, expected a text of one line");
}

TEST(FieldGrammar, QuotesAWholeCharacter) {
  EXPECT_EQ(BreachOf("5\xC3\xBC"), "1: found '\xC3\xBC', expected ':', '/hex', '=' or a blank");
}

// The same language, as a regular expression.
bool Matches(const std::string& element) {
  static const std::string number = "(0x[0-9A-Fa-f]+|[0-9]+)";
  static const std::regex pattern("[0-9]{1,2}(:[0-9]{1,2})?(/hex|=" + number + "(-" + number +
                                  ")?)? +[^ \\t\\n\\r\\f\\v][^\\n]*");
  return std::regex_match(element, pattern);
}

const std::vector<std::string> kGoodElements = {"16 Unexpected completion",
                                                "5:4 Link",
                                                "47:32/hex Dev",
                                                "5:4=1 2.5 GT",
                                                "3:0=8-15 res",
                                                "7=0x1F a",
                                                "7=0-0xa  b c",
                                                "0 x"};

TEST(FieldGrammar, EveryCharacterReplacedByEveryByte) {
  int good = 0;
  int bad = 0;
  for (const std::string& element : kGoodElements) {
    for (std::size_t at = 0; at < element.size(); ++at) {
      for (int byte = 0; byte < 256; ++byte) {
        std::string changed = element;
        changed[at] = static_cast<char>(byte);
        const auto parsed = ParseFieldElement(changed);
        ASSERT_EQ(std::holds_alternative<TFieldElement>(parsed), Matches(changed)) << changed;
        if (const auto* const breach = std::get_if<TFieldBreach>(&parsed)) {
          ASSERT_LE(breach->offset, changed.size()) << changed;
          ++bad;
        } else {
          ++good;
        }
      }
    }
  }
  EXPECT_GT(good, 1000);
  EXPECT_GT(bad, 1000);
}

TEST(FieldGrammar, EveryCharacterLeftOutOrDoubledAndEveryTruncation) {
  for (const std::string& element : kGoodElements) {
    for (std::size_t at = 0; at < element.size(); ++at) {
      std::string shorter = element;
      shorter.erase(at, 1);
      std::string longer = element;
      longer.insert(at, 1, element[at]);
      for (const std::string& changed : {shorter, longer, element.substr(0, at)}) {
        ASSERT_EQ(BreachOf(changed).empty(), Matches(changed)) << changed;
      }
    }
  }
}

std::string BitsText(const std::variant<TBits, TFieldBreach>& result) {
  if (const auto* const breach = std::get_if<TFieldBreach>(&result)) {
    return std::to_string(breach->offset) + ": " + breach->message;
  }
  const TBits bits = std::get<TBits>(result);
  return std::to_string(bits.high) + ".." + std::to_string(bits.low);
}

TEST(FieldBits, CountFromTheLeastSignificantInLsb0) {
  EXPECT_EQ(BitsText(BitsOf({5, 4, 0, 2}, 32, false)), "5..4");
  EXPECT_EQ(BitsText(BitsOf({31, 0, 0, 3}, 32, false)), "31..0");
  EXPECT_EQ(BitsText(BitsOf({63, 63, 0, 0}, 64, false)), "63..63");
}

TEST(FieldBits, CountFromTheMostSignificantInMsb0) {
  EXPECT_EQ(BitsText(BitsOf({4, 5, 0, 2}, 32, true)), "27..26");
  EXPECT_EQ(BitsText(BitsOf({4, 5, 0, 2}, 64, true)), "59..58");
  EXPECT_EQ(BitsText(BitsOf({0, 31, 0, 2}, 32, true)), "31..0");
  EXPECT_EQ(BitsText(BitsOf({63, 63, 0, 0}, 64, true)), "0..0");
}

TEST(FieldBits, AreInsideTheRegister) {
  EXPECT_EQ(BitsText(BitsOf({32, 31, 0, 3}, 32, false)), "0: found bit 32, expected 0 to 31");
  EXPECT_EQ(BitsText(BitsOf({31, 32, 0, 3}, 32, true)), "3: found bit 32, expected 0 to 31");
  EXPECT_EQ(BitsText(BitsOf({64, 64, 0, 0}, 64, false)), "0: found bit 64, expected 0 to 63");
  EXPECT_EQ(BitsText(BitsOf({99, 0, 0, 3}, 64, true)), "0: found bit 99, expected 0 to 63");
}

TEST(FieldBits, HaveTheMoreSignificantEndFirst) {
  EXPECT_EQ(BitsText(BitsOf({4, 5, 0, 2}, 64, false)),
            "0: found 4:5 in a register of the numbering lsb0, expected the more significant end first, 5:4");
  EXPECT_EQ(BitsText(BitsOf({5, 4, 0, 2}, 64, true)),
            "0: found 5:4 in a register of the numbering msb0, expected the more significant end first, 4:5");
}

std::string RangeText(std::string_view text, std::size_t at) {
  const auto parsed = ParseBitRange(text, at);
  if (const auto* const breach = std::get_if<TFieldBreach>(&parsed)) {
    return std::to_string(breach->offset) + ": " + breach->message;
  }
  const auto& bits = std::get<TWrittenBits>(parsed);
  return std::to_string(bits.first) + ":" + std::to_string(bits.last);
}

TEST(BitRange, HasBothEndsAndNothingElse) {
  EXPECT_EQ(RangeText("R 12:8", 2), "12:8");
  EXPECT_EQ(RangeText("3:3", 0), "3:3");
  EXPECT_EQ(RangeText("R ", 2), "2: found the end of the string, expected the number of a bit");
  EXPECT_EQ(RangeText("R 5", 2), "3: found the end of the string, expected ':'");
  EXPECT_EQ(RangeText("5:", 0), "2: found the end of the string, expected the number of a bit");
  EXPECT_EQ(RangeText("5:4 ", 0), "3: found a blank, expected the end of the string");
  EXPECT_EQ(RangeText("5:123", 0), "4: found '3', expected the end of the string");
  EXPECT_EQ(RangeText("x:4", 0), "0: found 'x', expected the number of a bit");
}

}  // namespace
}  // namespace tests
