#include "host/schema/nearestname.h"

#include <gtest/gtest.h>

namespace NKROVEL20 {
namespace {

std::string Nearest(const std::string& name, std::initializer_list<const char*> candidates) {
  TNearestName nearest(name);
  for (const char* candidate : candidates) nearest.Offer(candidate);
  return nearest.Best();
}

TEST(NearestName, EveryKindOfSlip) {
  EXPECT_EQ(Nearest("Descrption", {"Override", "Description"}), "Description");
  EXPECT_EQ(Nearest("Descriptionn", {"Override", "Description"}), "Description");
  EXPECT_EQ(Nearest("Dascription", {"Override", "Description"}), "Description");
  EXPECT_EQ(Nearest("Key", {"kEY"}), "kEY");
  EXPECT_EQ(Nearest("Kye", {"Keys", "Key"}), "Key") << "two neighbours swapped are one change";
}

TEST(NearestName, CloserOneWinsAndTheFirstOfEquals) {
  EXPECT_EQ(Nearest("Maximum", {"Minimum", "Maximun", "Maxinum"}), "Maximun");
  EXPECT_EQ(Nearest("Maximum", {"Maxinum", "Maximun"}), "Maxinum");
}

TEST(NearestName, FarOnesAreNoHelp) {
  EXPECT_EQ(Nearest("Key", {"Max", "Kxx", "Keys12"}), "");
  EXPECT_EQ(Nearest("ab", {"ac"}), "") << "of two characters one is too many";
  EXPECT_EQ(Nearest("ABCDEFGHIJKL", {"ABCDEFGHxxxx"}), "");
  EXPECT_EQ(Nearest("ABCDEFGHIJKL", {"ABCDEFGHIxxx"}), "ABCDEFGHIxxx");
  EXPECT_EQ(Nearest("", {"", "a"}), "");
}

TEST(NearestName, HugeListsAreNotSearchedToTheirEnd) {
  TNearestName nearest("Description");
  for (int i = 0; i < 5000; ++i) nearest.Offer("xxxxxxxxxxx");
  nearest.Offer("Description");
  EXPECT_EQ(nearest.Best(), "");
}

TEST(NearestName, Hint) {
  TNearestName nearest("Levle");
  EXPECT_EQ(nearest.Hint(), "");
  nearest.Offer("Level");
  EXPECT_EQ(nearest.Hint(), "; did you mean Level?");
}

}  // namespace
}  // namespace NKROVEL20
