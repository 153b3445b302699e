#include "host/base/storedbytes.h"
#include "tests/support/bmclanguage.h"
#include "tests/support/namespaces.h"

namespace tests {

namespace {

/// The lines, with a "|" for each newline.
std::vector<std::string> Lines(const std::string& text, std::size_t longest) {
  TLineReader reader(Stored(text), longest);
  std::vector<std::string> lines;
  while (const auto line = reader.Next()) lines.push_back(std::string(line->text) + (line->isWhole ? "|" : ""));
  return lines;
}

using TLines = std::vector<std::string>;

TEST(LineReader, GivesLinesAndAnUnfinishedLastOne) {
  EXPECT_EQ(Lines("", 5), TLines{});
  EXPECT_EQ(Lines("a\n\nbc\n", 5), (TLines{"a|", "|", "bc|"}));
  EXPECT_EQ(Lines("a\nbc", 5), (TLines{"a|", "bc"}));
}

TEST(LineReader, GivesOneByteTooManyOfAnOverlongLine) {
  EXPECT_EQ(Lines("12345\n", 5), (TLines{"12345|"}));
  EXPECT_EQ(Lines("123456\n", 5).front(), "123456|");
  EXPECT_EQ(Lines("1234567", 5).front(), "123456|");
}

TEST(LineReader, ReadsLinesAcrossPieces) {
  const std::string line(65530, 'x');
  EXPECT_EQ(Lines(line + "\n" + line + "\n123", 70000), (TLines{line + "|", line + "|", "123"}));
}

TEST(LineReader, SaysWhereEachLineStarts) {
  const std::string line(65530, 'x');
  TLineReader reader(Stored("a\n\n" + line + "\n" + line + "\n123"), 70000);
  for (const std::size_t start : {0U, 2U, 3U, 65534U, 131065U}) EXPECT_EQ(reader.Next()->start, start);
}

}  // namespace
}  // namespace tests
