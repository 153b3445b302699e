#include "host/schema/moftext.h"

#include <gtest/gtest.h>

#include "host/base/utf8.h"
#include "tests/support/namespaces.h"

namespace tests {
namespace {

using namespace Mof;

std::size_t Bad(const std::string& text) { return FindBadByte(text, 0); }

TEST(FindBadByte, WellFormedTextHasNone) {
  for (const std::string& text :
       {std::string(), std::string("plain text of more than eight bytes"), std::string("\x7F\xC2\x80\xDF\xBF"),
        std::string("\xE0\xA0\x80\xED\x9F\xBF\xEF\xBF\xBF"), std::string("\xF0\x90\x80\x80\xF4\x8F\xBF\xBF")}) {
    EXPECT_EQ(Bad(text), text.size());
  }
}

TEST(FindBadByte, IllFormedSequences) {
  EXPECT_EQ(Bad("ab\x80"), 2U) << "continuation without a start";
  EXPECT_EQ(Bad("ab\xC1\x81"), 2U) << "overlong";
  EXPECT_EQ(Bad("\xE0\x9F\xBF"), 0U) << "overlong";
  EXPECT_EQ(Bad("\xED\xA0\x80"), 0U) << "surrogate";
  EXPECT_EQ(Bad("\xF0\x8F\xBF\xBF"), 0U) << "overlong";
  EXPECT_EQ(Bad("\xF4\x90\x80\x80"), 0U) << "past the last character";
  EXPECT_EQ(Bad("\xF5\x80\x80\x80"), 0U);
  EXPECT_EQ(Bad("a\xFF"), 1U);
  EXPECT_EQ(Bad("a\xC3("), 1U) << "cut by another character";
  EXPECT_EQ(Bad("abc\xE2\x82"), 3U) << "cut by the end";
  EXPECT_EQ(Bad(std::string("ab\0c", 4)), 2U);
}

TEST(FindBadByte, AtEveryPlaceOfALongText) {
  for (std::size_t i = 0; i < 40; ++i) {
    std::string text(40, 'x');
    text[i] = '\xFE';
    EXPECT_EQ(Bad(text), i);
    text[i] = '\0';
    EXPECT_EQ(Bad(text), i);
    EXPECT_EQ(FindBadByte(text, i + 1), 40U) << "from the next byte on";
  }
}

TEST(FindStringStop, AtEveryPlaceOfALongText) {
  for (std::size_t i = 0; i < 40; ++i) {
    for (const char stop : {'"', '\\', '\n', '\r'}) {
      std::string text(40, '\xA2');  // the code of a quote with the top bit set
      text[i] = stop;
      EXPECT_EQ(FindStringStop(text, 0), i);
      EXPECT_EQ(FindStringStop(text, i + 1), 40U);
    }
  }
  EXPECT_EQ(FindStringStop("", 0), 0U);
}

TEST(TakeCharacter, SizesAndCodes) {
  const auto taken = [](std::string_view content) { return TakeCharacter(content); };
  EXPECT_EQ(taken("ab").code, 'a');
  EXPECT_EQ(taken("\xF0\x9F\x98\x80").code, 0x1F600U);
  EXPECT_EQ(taken("\\x12345").size, 6U);
  EXPECT_EQ(taken("\\x12345").code, 0x1234U);
  EXPECT_FALSE(taken("\\").good);
  EXPECT_EQ(taken("\\").size, 1U);
  EXPECT_FALSE(taken("\\xz").good);
  EXPECT_EQ(taken("\\xz").size, 2U);
  EXPECT_FALSE(taken("\\N").good) << "escapes are written in lower case, but for X";
}

}  // namespace
}  // namespace tests
