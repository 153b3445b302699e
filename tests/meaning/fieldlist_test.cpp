// Several elements of "Fields" together: what each good one adds, and what makes one bad beside those before it.
#include "host/meaning/fieldlist.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/namespaces.h"

namespace tests {
namespace {

// The fields of a register, as one text: "HIGH..LOW NAME {FIRST-LAST TEXT}".
class Fields {
 public:
  Fields(unsigned width, bool isMsb0) : list_(width, isMsb0) {}
  Fields& Add(std::string_view element) {
    const std::optional<TFieldBreach> breach = list_.Add(element);
    breach_ = breach ? std::to_string(breach->offset) + ": " + breach->message : "";
    return *this;
  }
  const std::string& Breach() const { return breach_; }
  std::string Text() {
    std::string text;
    for (const TFieldMeaning& field : list_.Take()) {
      text += std::to_string(field.bits.high) + ".." + std::to_string(field.bits.low) + (field.isHex ? "/hex " : " ") +
              field.name;
      for (const TValueText& value : field.texts) {
        text += " {" + std::to_string(value.first) + "-" + std::to_string(value.last) + " " + value.text + "}";
      }
      text += "; ";
    }
    return text;
  }

 private:
  TFieldList list_;
  std::string breach_;
};

Fields Wide() { return {64, false}; }

TEST(FieldList, FieldsComeFromTheLeastSignificant) {
  EXPECT_EQ(Wide().Add("16 C").Add("5:4 B").Add("63:48/hex D").Add("0 A").Text(),
            "0..0 A; 5..4 B; 16..16 C; 63..48/hex D; ");
}

TEST(FieldList, InMsb0TheSmallestNumberIsTheMostSignificant) {
  EXPECT_EQ(Fields(32, true).Add("0 Top").Add("30:31 Bottom").Text(), "1..0 Bottom; 31..31 Top; ");
  EXPECT_EQ(Fields(64, true).Add("0 Top").Add("30:31 Middle").Text(), "33..32 Middle; 63..63 Top; ");
}

TEST(FieldList, TextsComeFromTheSmallestValue) {
  EXPECT_EQ(Wide().Add("3:0 F").Add("3:0=8-15 c").Add("3:0=0 a").Add("3:0=1-0x2 b").Text(),
            "3..0 F {0-0 a} {1-2 b} {8-15 c}; ");
}

TEST(FieldList, AHexFieldMayHaveTextsAndTextsMayRepeat) {
  EXPECT_EQ(Wide().Add("1:0/hex F").Add("1:0=1 a").Add("1:0=2 a").Text(), "1..0/hex F {1-1 a} {2-2 a}; ");
}

TEST(FieldList, ABitMayBeWrittenAsARange) {
  EXPECT_EQ(Wide().Add("05:5 F").Add("5=1 set").Text(), "5..5 F {1-1 set}; ");
}

TEST(FieldList, BitsBelongToOneField) {
  EXPECT_EQ(Wide().Add("5:3 F").Add("3:0 G").Breach(),
            "0: found bits of the field 'F', expected bits that no earlier field has");
  EXPECT_EQ(Wide().Add("5:3 F").Add("63:5 G").Breach(),
            "0: found bits of the field 'F', expected bits that no earlier field has");
  EXPECT_EQ(Wide().Add("5:3 F").Add("4 G").Add("2 H").Add("6 I").Text(), "2..2 H; 5..3 F; 6..6 I; ")
      << "only the bad element is left out";
}

TEST(FieldList, NamesAreUniqueAndCountCase) {
  EXPECT_EQ(Wide().Add("1 F").Add("2  F").Breach(),
            "3: found the name 'F' again, expected one that no earlier field has");
  EXPECT_EQ(Wide().Add("1 F").Add("2 f").Add("3 F ").Text(), "1..1 F; 2..2 f; 3..3 F ; ");
}

TEST(FieldList, ABadElementTakesNeitherBitsNorName) {
  EXPECT_EQ(Wide().Add("5:3 F").Add("5:0 G").Add("2:0 G").Text(), "2..0 G; 5..3 F; ");
}

TEST(FieldList, TextFollowsItsField) {
  const std::string expected =
      "0: found bits that match no earlier field, expected those of the field that the text is for";
  EXPECT_EQ(Wide().Add("5:4=1 a").Breach(), expected);
  EXPECT_EQ(Wide().Add("5:4 F").Add("5=1 a").Breach(), expected);
  EXPECT_EQ(Wide().Add("5:4 F").Add("5:3=1 a").Breach(), expected);
  EXPECT_EQ(Wide().Add("5:4=1 a").Add("5:4 F").Text(), "5..4 F; ");
}

TEST(FieldList, ValuesLieInTheirField) {
  EXPECT_EQ(Wide().Add("5:4 F").Add("5:4=4 a").Breach(), "4: found the value '4', expected 0 to 3");
  EXPECT_EQ(Wide().Add("5:4 F").Add("5:4=3-0x4 a").Breach(), "6: found the value '0x4', expected 0 to 3");
  EXPECT_EQ(Wide().Add("0 F").Add("0=2 a").Breach(), "2: found the value '2', expected 0 to 1");
  EXPECT_EQ(Wide().Add("63:0 F").Add("63:0=18446744073709551616 a").Breach(),
            "5: found the value '18446744073709551616', expected 0 to 18446744073709551615");
  EXPECT_EQ(Wide().Add("63:0 F").Add("63:0=0-18446744073709551615 a").Text(), "63..0 F {0-18446744073709551615 a}; ");
}

TEST(FieldList, ARangeGoesUpwards) {
  EXPECT_EQ(Wide().Add("3:0 F").Add("3:0=5-4 a").Breach(),
            "4: found a range that ends before it starts, expected the smaller value first");
  EXPECT_EQ(Wide().Add("3:0 F").Add("3:0=5-5 a").Text(), "3..0 F {5-5 a}; ");
}

TEST(FieldList, AValueHasOneText) {
  const auto second = [](std::string_view element) {
    return Wide().Add("7:0 F").Add("7:0=10-20 a").Add("7:0=30 b").Add(element).Breach();
  };
  EXPECT_EQ(second("7:0=10 c"), "4: found a second text for the value 10, expected one for each value");
  EXPECT_EQ(second("7:0=20 c"), "4: found a second text for the value 20, expected one for each value");
  EXPECT_EQ(second("7:0=15-16 c"), "4: found a second text for the value 15, expected one for each value");
  EXPECT_EQ(second("7:0=0-10 c"), "4: found a second text for the value 10, expected one for each value");
  EXPECT_EQ(second("7:0=0-25 c"), "4: found a second text for the value 10, expected one for each value");
  EXPECT_EQ(second("7:0=25-30 c"), "4: found a second text for the value 30, expected one for each value");
  EXPECT_EQ(second("7:0=0-255 c"), "4: found a second text for the value 30, expected one for each value");
  EXPECT_EQ(second("7:0=9 c"), "");
  EXPECT_EQ(second("7:0=21-29 c"), "");
  EXPECT_EQ(second("7:0=31-255 c"), "");
}

TEST(FieldList, BitsAndGrammarAreCheckedFirst) {
  EXPECT_EQ(Fields(32, false).Add("32 F").Breach(), "0: found bit 32, expected 0 to 31");
  EXPECT_EQ(Fields(32, false).Add("31:32=9 F").Breach(), "3: found bit 32, expected 0 to 31");
  EXPECT_EQ(Wide().Add("F").Breach(), "0: found 'F', expected the number of a bit");
}

TEST(FieldList, ALongNameIsCutInMessages) {
  const std::string name(50, 'n');
  EXPECT_EQ(Wide().Add("1 " + name).Add("1 G").Breach(),
            "0: found bits of the field 'nnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnn...', expected bits that no earlier "
            "field has");
}

}  // namespace
}  // namespace tests
