#include "host/base/textdiagnostic.h"

#include <gtest/gtest.h>

#include "tests/support/namespaces.h"

namespace tests {
namespace {

TTextDiagnostic At(std::uint32_t line, std::uint32_t column, const std::string& sourceLine) {
  return {EDiagnosticSeverity::kError, {"a.mof", line, column}, "found \"}\", expected \";\"", sourceLine};
}

const std::string kTitle = "a.mof:3:5: error: found \"}\", expected \";\"\n";

TEST(TextDiagnostic, ShowsPlaceMessageLineAndCaret) {
  EXPECT_EQ(FormatDiagnostic(At(3, 5, "  x }")), kTitle + "    x }\n      ^\n");
}

TEST(TextDiagnostic, AWarningIsLabelled) {
  TTextDiagnostic diagnostic = At(3, 1, "x");
  diagnostic.severity = EDiagnosticSeverity::kWarning;
  EXPECT_EQ(FormatDiagnostic(diagnostic), "a.mof:3:1: warning: found \"}\", expected \";\"\n  x\n  ^\n");
}

TEST(TextDiagnostic, WithoutALineOnlyTheFileIsNamed) {
  EXPECT_EQ(FormatDiagnostic(At(0, 0, "ignored")), "a.mof: error: found \"}\", expected \";\"\n");
}

TEST(TextDiagnostic, WithoutASourceLineThereIsNoCaret) { EXPECT_EQ(FormatDiagnostic(At(3, 5, "")), kTitle); }

TEST(TextDiagnostic, ATabShowsAsOneBlank) {
  EXPECT_EQ(FormatDiagnostic(At(3, 5, "\tx\t y")), kTitle + "   x  y\n      ^\n");
}

TEST(TextDiagnostic, ColumnsCountBytesWhileTheCaretCountsCharacters) {
  // An accented e is two bytes, the euro sign three: column 6 is the sixth byte, but the third character.
  TTextDiagnostic diagnostic = At(3, 6, "\xC3\xA9\xE2\x82\xAC}");
  EXPECT_EQ(FormatDiagnostic(diagnostic),
            "a.mof:3:6: error: found \"}\", expected \";\"\n  \xC3\xA9\xE2\x82\xAC}\n    ^\n");
}

TEST(TextDiagnostic, ACaretMayFollowTheLastCharacterButGoNoFurther) {
  EXPECT_EQ(FormatDiagnostic(At(3, 5, "abcd")), kTitle + "  abcd\n      ^\n");
  EXPECT_EQ(FormatDiagnostic(At(3, 5, "ab")), kTitle + "  ab\n    ^\n");
}

TEST(TextDiagnostic, AnUnknownColumnPointsAtTheStart) {
  EXPECT_EQ(FormatDiagnostic(At(3, 0, "ab")), "a.mof:3:0: error: found \"}\", expected \";\"\n  ab\n  ^\n");
}

TEST(TextDiagnostic, ControlCharactersShowAsQuestionMarks) {
  const std::string line("\x1B[2J\0\r\x7F", 7);
  EXPECT_EQ(FormatDiagnostic(At(3, 5, line)), kTitle + "  ?[2J???\n      ^\n");
}

TEST(TextDiagnostic, ALineOfTheGreatestWidthIsShownWhole) {
  const std::string line(78, 'x');
  EXPECT_EQ(FormatDiagnostic(At(3, 78, line)),
            "a.mof:3:78: error: found \"}\", expected \";\"\n  " + line + "\n  " + std::string(77, ' ') + "^\n");
}

TEST(TextDiagnostic, ALongLineIsCutAroundTheColumn) {
  const std::string line = std::string(1000, 'a') + "}" + std::string(1000, 'b');
  EXPECT_EQ(FormatDiagnostic(At(3, 1001, line)), "a.mof:3:1001: error: found \"}\", expected \";\"\n  ..." +
                                                     std::string(35, 'a') + "}" + std::string(36, 'b') + "...\n  " +
                                                     std::string(38, ' ') + "^\n");
}

TEST(TextDiagnostic, KeepsOnlyTheShownPartOfALongLine) {
  const std::string line = std::string(1000, 'a') + "}" + std::string(1000000, 'b');
  TTextDiagnostic diagnostic = At(3, 1001, "");
  SetSourceLine(diagnostic, line);
  EXPECT_EQ(diagnostic.sourceLine.size(), 78U);
  EXPECT_EQ(FormatDiagnostic(diagnostic), "a.mof:3:1001: error: found \"}\", expected \";\"\n  ..." +
                                              std::string(35, 'a') + "}" + std::string(36, 'b') + "...\n  " +
                                              std::string(38, ' ') + "^\n");
}

TEST(TextDiagnostic, TheKeptPartIsEnoughAtEachColumn) {
  std::string line;
  for (int i = 0; i < 60; ++i) line += i % 3 == 0 ? "\xC3\xA9x" : "\xE2\x82\xAC";
  for (std::uint32_t column = 0; column < line.size() + 3; ++column) {
    TTextDiagnostic kept = At(3, column, "");
    SetSourceLine(kept, line);
    EXPECT_EQ(FormatDiagnostic(kept), FormatDiagnostic(At(3, column, line))) << column;
  }
}

TEST(TextDiagnostic, ALongLineShowsItsBeginningOrEndIfTheColumnIsThere) {
  const std::string line = "{" + std::string(300, 'a') + "}";
  EXPECT_EQ(FormatDiagnostic(At(3, 5, line)), kTitle + "  {" + std::string(74, 'a') + "...\n      ^\n");
  EXPECT_EQ(FormatDiagnostic(At(3, 302, line)), "a.mof:3:302: error: found \"}\", expected \";\"\n  ..." +
                                                    std::string(74, 'a') + "}\n  " + std::string(77, ' ') + "^\n");
}

// One byte, then two-byte characters, the first at an odd offset (from 0). The 78-byte window around column 101
// covers offsets 62 to 139; without the two marks, 65 to 136. These are 36 characters, 17 of them before the one
// whose second byte is at column 101, offset 100.
TEST(TextDiagnostic, ALongLineIsNotCutInsideACharacter) {
  std::string line = "x";
  std::string shown;
  for (int i = 0; i < 200; ++i) line += "\xC3\xA9";
  for (int i = 0; i < 36; ++i) shown += "\xC3\xA9";
  EXPECT_EQ(FormatDiagnostic(At(3, 101, line)), "a.mof:3:101: error: found \"}\", expected \";\"\n  ..." + shown +
                                                    "...\n  " + std::string(3 + 18, ' ') + "^\n");
}

// With one more byte in front, both cuts fall inside characters and move inwards.
TEST(TextDiagnostic, ALongLineOmitsCharactersThatWouldBeCut) {
  std::string line = "xy";
  std::string shown;
  for (int i = 0; i < 200; ++i) line += "\xC3\xA9";
  for (int i = 0; i < 35; ++i) shown += "\xC3\xA9";
  EXPECT_EQ(FormatDiagnostic(At(3, 101, line)), "a.mof:3:101: error: found \"}\", expected \";\"\n  ..." + shown +
                                                    "...\n  " + std::string(3 + 17, ' ') + "^\n");
}

TEST(TextDiagnostic, ALineOfStrayContinuationBytesIsStillCut) {
  const std::string text = FormatDiagnostic(At(3, 5000, std::string(10000, '\x80')));
  EXPECT_LT(text.size(), 250U);
}

TEST(LineOf, CountsFromOne) {
  EXPECT_EQ(LineOf("a\nb\nc", 1), "a");
  EXPECT_EQ(LineOf("a\nb\nc", 2), "b");
  EXPECT_EQ(LineOf("a\nb\nc", 3), "c");
}

TEST(LineOf, IsEmptyPastTheLastLine) {
  EXPECT_EQ(LineOf("a\nb", 3), "");
  EXPECT_EQ(LineOf("a\n", 2), "");
  EXPECT_EQ(LineOf("", 1), "");
  EXPECT_EQ(LineOf("", 4000000000U), "");
}

TEST(LineOf, OmitsEitherLineEnd) {
  EXPECT_EQ(LineOf("a\r\nb\r\n", 1), "a");
  EXPECT_EQ(LineOf("a\r\nb\r\n", 2), "b");
  EXPECT_EQ(LineOf("\r\n\r\n", 2), "");
  EXPECT_EQ(LineOf("a\rb\n", 1), "a\rb");
}

}  // namespace
}  // namespace tests
