#include "host/base/displaywidth.h"

#include <gtest/gtest.h>

#include <string>

namespace velhost {
namespace {

TEST(ColumnsOf, OneForLettersAndForTheMarksOfControlCharacters) {
  for (const char32_t character : {U'\0', U'\x1b', U'a', U'\x7f', U'\u009b', U'\u00e4', U'\ufffd', U'\ue000'}) {
    EXPECT_EQ(ColumnsOf(character), 1) << static_cast<unsigned int>(character);
  }
}

TEST(ColumnsOf, ZeroForWhatCombinesWithThePreviousCharacter) {
  EXPECT_EQ(ColumnsOf(U'\u0301'), 0) << "combining acute accent";
  EXPECT_EQ(ColumnsOf(U'\u200b'), 0) << "zero width space";
  EXPECT_EQ(ColumnsOf(U'\u200d'), 0) << "zero width joiner";
  EXPECT_EQ(ColumnsOf(U'\ufe0f'), 0) << "variation selector";
}

TEST(ColumnsOf, TwoForWideCharacters) {
  EXPECT_EQ(ColumnsOf(U'\u6f22'), 2) << "a CJK character";
  EXPECT_EQ(ColumnsOf(U'\uac00'), 2) << "a Hangul syllable";
  EXPECT_EQ(ColumnsOf(U'\uff21'), 2) << "a full-width letter";
  EXPECT_EQ(ColumnsOf(U'\U0001f680'), 2) << "a rocket";
}

TEST(ColumnsOf, AddsUpTheCharactersOfAText) {
  EXPECT_EQ(ColumnsOf(""), 0U);
  EXPECT_EQ(ColumnsOf("plain text"), 10U);
  EXPECT_EQ(ColumnsOf("e\u0301\u6f22x"), 4U);
  EXPECT_EQ(ColumnsOf("a\u200bb\U0001f680"), 4U);
}

TEST(StartThatFits, EndsBeforeTheCharacterThatIsTooWide) {
  EXPECT_EQ(StartThatFits("abc", 3), "abc");
  EXPECT_EQ(StartThatFits("abc", 2), "ab");
  EXPECT_EQ(StartThatFits("a\u6f22b", 2), "a");
  EXPECT_EQ(StartThatFits("a\u6f22b", 3), "a\u6f22");
  EXPECT_EQ(StartThatFits("ae\u0301b", 2), "ae\u0301");
}

TEST(StartThatFits, HasAtLeastOneCharacter) {
  EXPECT_EQ(StartThatFits("\u6f22b", 1), "\u6f22");
  EXPECT_EQ(StartThatFits("", 1), "");
}

}  // namespace
}  // namespace velhost
