#include "host/schema/schemaunit.h"

#include <gtest/gtest.h>

#include "tests/support/namespaces.h"

namespace tests {
namespace {

TEST(NameHint, NearestOfThoseOffered) {
  std::size_t steps = 1000;
  TNameHint hint("Levle", steps);
  EXPECT_EQ(hint.Text(), "");
  hint.Offer("Label");
  hint.Offer("Level");
  EXPECT_EQ(hint.Text(), "; did you mean Level?");
}

TEST(NameHint, NothingForAVeryShortName) {
  std::size_t steps = 1000;
  TNameHint two("ab", steps);
  two.Offer("ac");
  EXPECT_EQ(two.Text(), "");
  TNameHint three("Kye", steps);
  three.Offer("Key");
  EXPECT_EQ(three.Text(), "; did you mean Key?");
}

TEST(NameHint, HugeListsAreNotSearchedToTheirEnd) {
  std::size_t steps = 1'000'000;
  TNameHint hint("Description", steps);
  for (int i = 0; i < 5000; ++i) hint.Offer("xxxxxxxxxxx");
  hint.Offer("Description");
  EXPECT_EQ(hint.Text(), "");
}

TEST(NameHint, ManySearchesShareTheirSteps) {
  std::size_t steps = 60;
  TNameHint first("Levle", steps);
  first.Offer("Level");
  EXPECT_EQ(first.Text(), "; did you mean Level?");
  EXPECT_EQ(steps, 35U);
  TNameHint second("Descripiton", steps);
  EXPECT_TRUE(second.Wants());
  second.Offer("Description");
  EXPECT_EQ(second.Text(), "") << "eleven rows of eleven characters";
}

TEST(NameHint, WantsNothingWhenNoStepsAreLeft) {
  std::size_t steps = 0;
  EXPECT_FALSE(TNameHint("Level", steps).Wants());
}

}  // namespace
}  // namespace tests
