#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

#include "host/base/names.h"
#include "tests/support/namespaces.h"

namespace tests {
namespace {

constexpr std::array<std::string_view, 4> kNames = {"machine_type", "bmc_node", "dot", "data"};

TEST(NearestName, ForgivesOneSlipInAShortName) {
  EXPECT_EQ(NearestName("dto", kNames), "dot");
  EXPECT_EQ(NearestName("dat", kNames), "dot") << "the first of two as near";
  EXPECT_EQ(NearestName("datta", kNames), "data");
  EXPECT_EQ(NearestName("dxx", kNames), "");
}

TEST(NearestName, ForgivesASlipInEveryThreeLetters) {
  EXPECT_EQ(NearestName("machinetyp", kNames), "machine_type");
  EXPECT_EQ(NearestName("mahcien_tpye", kNames), "machine_type");
  EXPECT_EQ(NearestName("mxxxxxe_type", kNames), "");
}

TEST(NearestName, IgnoresCase) {
  EXPECT_EQ(NearestName("BMC_NODE", kNames), "bmc_node");
  EXPECT_EQ(NearestName("Dot", kNames), "dot");
}

TEST(NearestName, FindsTheOnlyNameThatContinues) {
  constexpr std::array<std::string_view, 3> kLong = {"machine_type", "delta_one_and_more", "delta_two_and_more"};
  EXPECT_EQ(NearestName("mach", kLong), "machine_type");
  EXPECT_EQ(NearestName("DELTA_T", kLong), "delta_two_and_more");
  EXPECT_EQ(NearestName("delta_", kLong), "") << "two go on from there";
  EXPECT_EQ(NearestName("mac", kLong), "") << "too short to tell";
}

TEST(NearestName, FindsNothingForAnEmptyOrALongText) {
  EXPECT_EQ(NearestName("", kNames), "");
  EXPECT_EQ(NearestName("dot", {}), "");
  EXPECT_EQ(NearestName(std::string(1'000'000, 'd'), kNames), "");
}

// "kitten" against "sitten": six rows of six columns.
TEST(NearestName, TakesAStepForEachComparison) {
  constexpr std::array<std::string_view, 2> kTwo = {"sitten", "mitten"};
  std::size_t steps = 100;
  EXPECT_EQ(NearestName("kitten", kTwo, steps), "sitten");
  EXPECT_EQ(steps, 100U - 36 - 12) << "the second cannot be nearer, which two rows show";
}

TEST(NearestName, SkipsCandidatesThatExceedTheSteps) {
  constexpr std::array<std::string_view, 2> kTwo = {"xxxxxx", "mitten"};
  std::size_t steps = 36 + 24;
  EXPECT_EQ(NearestName("kitten", kTwo, steps), "mitten");
  steps = 36;
  EXPECT_EQ(NearestName("kitten", kTwo, steps), "");
}

TEST(NearestName, TakesBoundedTimeAmongManySimilarNames) {
  const std::string name = std::string(84, 'a') + std::string(44, 'b');
  const std::string other = std::string(84, 'a') + std::string(44, 'c');
  const std::vector<std::string_view> many(20'000, other);
  std::size_t steps = 1'000'000;
  EXPECT_EQ(NearestName(name, many, steps), "");
  EXPECT_LT(steps, 128U) << "all of them would take 300 million";
}

TEST(Suggestion, SuggestsTheNameIfThereIsOne) {
  EXPECT_EQ(Suggestion("Level"), "; did you mean Level?");
  EXPECT_EQ(Suggestion("level", "\""), "; did you mean \"level\"?");
  EXPECT_EQ(Suggestion(""), "");
  EXPECT_EQ(Suggestion("", "\""), "");
}

TEST(NamePattern, IsAWordWithAStarOrAQuestionMark) {
  EXPECT_TRUE(IsNamePattern("KROSG_*"));
  EXPECT_TRUE(IsNamePattern("?"));
  EXPECT_FALSE(IsNamePattern("KROSG_DCAPFile"));
  EXPECT_FALSE(IsNamePattern(""));
}

TEST(NamePattern, WithoutThemMatchesTheNameAlone) {
  EXPECT_TRUE(MatchesNamePattern("abc", "abc"));
  EXPECT_FALSE(MatchesNamePattern("abc", "ab"));
  EXPECT_FALSE(MatchesNamePattern("ab", "abc"));
  EXPECT_FALSE(MatchesNamePattern("abc", ""));
  EXPECT_TRUE(MatchesNamePattern("", ""));
}

TEST(NamePattern, AStarStandsForAnyNumberOfCharacters) {
  EXPECT_TRUE(MatchesNamePattern("", "*"));
  EXPECT_TRUE(MatchesNamePattern("abc", "*"));
  EXPECT_TRUE(MatchesNamePattern("abc", "**"));
  EXPECT_TRUE(MatchesNamePattern("abc", "abc*"));
  EXPECT_TRUE(MatchesNamePattern("abc", "*abc"));
  EXPECT_TRUE(MatchesNamePattern("abc", "a*c"));
  EXPECT_FALSE(MatchesNamePattern("abc", "a*b"));
  EXPECT_FALSE(MatchesNamePattern("abc", "b*"));
  EXPECT_TRUE(MatchesNamePattern("KROSG_VO_MEMCTL_StatisticData", "*_MEMCTL_*"));
  EXPECT_TRUE(MatchesNamePattern("abcabd", "*abd")) << "the first abc is not the end";
  EXPECT_TRUE(MatchesNamePattern("abab", "*ab*ab"));
  EXPECT_FALSE(MatchesNamePattern("abab", "*ab*ab*ab"));
}

TEST(NamePattern, AQuestionMarkStandsForOneCharacter) {
  EXPECT_TRUE(MatchesNamePattern("abc", "a?c"));
  EXPECT_TRUE(MatchesNamePattern("abc", "???"));
  EXPECT_FALSE(MatchesNamePattern("abc", "??"));
  EXPECT_FALSE(MatchesNamePattern("abc", "????"));
  EXPECT_TRUE(MatchesNamePattern("abc", "*?"));
  EXPECT_FALSE(MatchesNamePattern("", "?"));
  EXPECT_FALSE(MatchesNamePattern("", "*?"));
}

TEST(NamePattern, IgnoresCase) {
  EXPECT_TRUE(MatchesNamePattern("KROSG_DCAPFile", "krosg_dcap*"));
  EXPECT_TRUE(MatchesNamePattern("krosg_dcapfile", "*FILE"));
}

TEST(NamePattern, ManyStarsTakeNoLongerThanFew) {
  const std::string name(10000, 'a');
  std::string pattern;
  for (int i = 0; i < 1000; ++i) pattern += "*a";
  EXPECT_TRUE(MatchesNamePattern(name, pattern));
  EXPECT_FALSE(MatchesNamePattern(name, pattern + "b"));
}

}  // namespace
}  // namespace tests
