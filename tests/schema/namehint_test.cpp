#include "host/schema/namehint.h"

#include <gtest/gtest.h>

namespace NKROVEL20 {
namespace {

TEST(NameHint, NearestOfTheOffered) {
  TNameHint hint("Levle");
  EXPECT_EQ(hint.Text(), "");
  hint.Offer("Label");
  hint.Offer("Level");
  EXPECT_EQ(hint.Text(), "; did you mean Level?");
}

TEST(NameHint, NothingForAVeryShortName) {
  TNameHint two("ab");
  two.Offer("ac");
  EXPECT_EQ(two.Text(), "");
  TNameHint three("Kye");
  three.Offer("Key");
  EXPECT_EQ(three.Text(), "; did you mean Key?");
}

TEST(NameHint, HugeListsAreNotSearchedToTheirEnd) {
  TNameHint hint("Description");
  for (int i = 0; i < 5000; ++i) hint.Offer("xxxxxxxxxxx");
  hint.Offer("Description");
  EXPECT_EQ(hint.Text(), "");
}

}  // namespace
}  // namespace NKROVEL20
