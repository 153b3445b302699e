#include "host/change/textdiff.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/namespaces.h"

namespace tests {

namespace {

// "-2 b" for each removed line and "+2 c" for each added one.
std::vector<std::string> Changes(const std::string& before, const std::string& after) {
  std::vector<std::string> changes;
  for (const TLineChange& line : CompareLines(before, after)) {
    changes.push_back((line.isAdded ? "+" : "-") + std::to_string(line.number) + " " + line.text);
  }
  return changes;
}

using TChanges = std::vector<std::string>;

TEST(TextDiff, NamesTheLinesThatOnlyOneTextHas) {
  EXPECT_EQ(Changes("a\nb\nc\n", "a\nx\nc\n"), (TChanges{"-2 b", "+2 x"}));
  EXPECT_EQ(Changes("a\nb\n", "a\nb\nc\n"), (TChanges{"+3 c"}));
  EXPECT_EQ(Changes("a\nb\nc\n", "b\n"), (TChanges{"-1 a", "-3 c"}));
  EXPECT_EQ(Changes("", "a"), (TChanges{"+1 a"}));
  EXPECT_EQ(Changes("a\nb\nc\nd\n", "b\nx\nd\ny\n"), (TChanges{"-1 a", "-3 c", "+2 x", "+4 y"}));
}

TEST(TextDiff, FindsNoLinesIfOnlyTheLastNewlineDiffers) { EXPECT_EQ(Changes("a\n", "a"), TChanges{}); }

TEST(TextDiff, ReplacesAllThatDiffersOfTextsThatAreTooLong) {
  std::string before = "first\n";
  std::string after = "first\n";
  for (int i = 0; i < 2100; ++i) {
    before += "b" + std::to_string(i) + "\n";
    after += (i == 5 ? "b5" : "a" + std::to_string(i)) + "\n";
  }
  const TChanges changes = Changes(before + "last\n", after + "last\n");
  ASSERT_EQ(changes.size(), 4200U);
  EXPECT_EQ(changes[0], "-2 b0");
  EXPECT_EQ(changes[2100], "+2 a0");
  EXPECT_EQ(changes[2105], "+7 b5");
}

TEST(TextDiff, TellsTextFromOtherBytes) {
  EXPECT_TRUE(IsPrintableText("a\tb\r\nc\xC3\xA9"));
  EXPECT_TRUE(IsPrintableText(""));
  EXPECT_FALSE(IsPrintableText(std::string_view("a\0b", 3)));
  EXPECT_FALSE(IsPrintableText("\x1b[1m"));
  EXPECT_FALSE(IsPrintableText("\xff"));
}

TEST(TextDiff, SaysWhereOtherBytesDiffer) {
  const TFileChange change = CompareBytes("\x01\x02\x03", "\x01\x02\x04\x05");
  EXPECT_FALSE(change.isText);
  EXPECT_EQ(change.beforeSize, 3U);
  EXPECT_EQ(change.afterSize, 4U);
  EXPECT_EQ(change.firstDifference, 2U);
  EXPECT_TRUE(change.lines.empty());
  EXPECT_EQ(CompareBytes("\x01", "\x01\x02").firstDifference, 1U);
}

}  // namespace

}  // namespace tests
