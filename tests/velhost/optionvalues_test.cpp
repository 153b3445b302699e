#include "host/velhost/optionvalues.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <optional>
#include <string>

#include "host/base/hosterror.h"
#include "tests/support/namespaces.h"

namespace tests {
namespace {

using testing::Pair;
using testing::UnorderedElementsAre;

TEST(Time, HasAUnitOrIsInSeconds) {
  EXPECT_EQ(SecondsOf("90"), 90.0);
  EXPECT_EQ(SecondsOf("90s"), 90.0);
  EXPECT_EQ(SecondsOf("5m"), 300.0);
  EXPECT_EQ(SecondsOf("2h"), 7200.0);
  EXPECT_EQ(SecondsOf("1.5h"), 5400.0);
  EXPECT_EQ(SecondsOf("0.25"), 0.25);
  EXPECT_EQ(SecondsOf("0.001"), 0.001);
  EXPECT_EQ(SecondsOf("1e9"), 1e9);
}

TEST(Time, IsNothingElse) {
  for (const char* const text :
       {"", "s", "abc", "5x", "5 m", "5ms", "5S", "m5", "5m3s", "nan", "inf", "infs", "nanh", "0x10"}) {
    EXPECT_EQ(SecondsOf(text), std::nullopt) << text;
  }
}

TEST(Time, IsInRange) {
  for (const char* const text : {"0", "0s", "0m", "0h", "0.0009", "-1", "-5m", "2e9", "1e9m", "277778h"}) {
    EXPECT_EQ(SecondsOf(text), std::nullopt) << text;
  }
  EXPECT_EQ(SecondsOf("277777h"), 999997200.0);
}

class Labels : public testing::Test {
 protected:
  std::string Refusal(const std::string& given) {
    try {
      AddLabel(labels_, given);
    } catch (const THostError& error) {
      EXPECT_EQ(error.Kind(), EFailure::kInvalidArgument);
      return error.what();
    }
    return "not refused";
  }

  std::map<std::string, std::string> labels_;
};

TEST_F(Labels, AreKeysWithValues) {
  AddLabel(labels_, "rack=7");
  AddLabel(labels_, "_a1=x=y z");
  AddLabel(labels_, "Empty=");
  AddLabel(labels_, std::string(64, 'k') + "=\xC3\xA9");
  EXPECT_THAT(labels_, UnorderedElementsAre(Pair("rack", "7"), Pair("_a1", "x=y z"), Pair("Empty", ""),
                                            Pair(std::string(64, 'k'), "\xC3\xA9")));
}

TEST_F(Labels, NeedAnEqualsSign) { EXPECT_EQ(Refusal("rack"), "--label takes KEY=VALUE, not \"rack\""); }

TEST_F(Labels, HaveKeysOfLettersDigitsAndUnderscores) {
  const std::string why =
      ": a key has letters, digits and _, at most 64 of them, and begins neither with a digit nor with __";
  for (const std::string& key : {std::string(), std::string("7a"), std::string("a-b"), std::string("a b"),
                                 std::string("__name"), std::string("\xC3\xA4"), std::string(65, 'k')}) {
    EXPECT_EQ(Refusal(key + "=1"), "--label cannot use the key \"" + key + "\"" + why);
  }
}

TEST_F(Labels, HaveValuesWithoutControlCharacters) {
  const std::string why = "--label cannot use the value of the key k: it has a control character";
  for (const char* const value : {"\t", "a\nb", "\x7F", "\xC2\x80", "\xC2\x9F", "\x1b[1m"}) {
    EXPECT_EQ(Refusal(std::string("k=") + value), why);
  }
  EXPECT_EQ(Refusal("k=\xFF"), "--label cannot use the value of the key k: it is not UTF-8 text");
  EXPECT_EQ(Refusal("k=\xC2\xA0"), "not refused") << "the first character after the controls";
}

TEST_F(Labels, HaveEachKeyOnce) {
  AddLabel(labels_, "rack=7");
  AddLabel(labels_, "Rack=7");
  EXPECT_EQ(Refusal("rack=8"), "--label gives the key rack twice");
}

}  // namespace
}  // namespace tests
