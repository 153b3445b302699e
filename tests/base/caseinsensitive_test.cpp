#include "host/base/caseinsensitive.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/support/namespaces.h"

namespace tests {
namespace {

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
