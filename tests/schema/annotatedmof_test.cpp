// Annotated MOF: what is accepted, and that every wrong annotation is noticed.
#include <gmock/gmock.h>

#include "tests/schema/annotatedmof.h"
#include "tests/support/namespaces.h"

namespace tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// The differences of all cases; malformed annotations come first.
std::vector<std::string> Judge(const std::string& text) {
  const TAnnotatedMof annotated = ParseAnnotatedMof(text);
  std::vector<std::string> found = annotated.malformed;
  for (const TAnnotatedCase& one : annotated.cases) {
    for (const std::string& difference : Differences(one)) found.push_back(difference);
  }
  return found;
}

const std::string kFault = "// case: fault\nclass TST_Fan {\n  uint32 = 5;";  // the annotation of line 3 follows
const std::string kShown = "fault.mof:2:10: error: found '=', expected a name\n    uint32 = 5;\n           ^\n";

TEST(AnnotatedMof, AFindingIsAnnotatedOnItsLine) {
  EXPECT_THAT(Judge(kFault + " // error 10: found '=', expected a name\n};\n"), IsEmpty());
}

TEST(AnnotatedMof, AFindingWithoutAnnotationIsADifference) {
  EXPECT_THAT(Judge(kFault + "\n};\n"), ElementsAre("3: not annotated: " + kShown));
}

TEST(AnnotatedMof, AnAnnotationWithoutFindingIsADifference) {
  EXPECT_THAT(Judge("// case: sound\nclass TST_Fan { }; // warning 1: found it\n//= class TST_Fan\n"),
              ElementsAre("2: not reported: sound.mof:1:1: warning: found it\n  class TST_Fan { };\n  ^\n"));
}

TEST(AnnotatedMof, ColumnSeverityAndEveryWordMatter) {
  EXPECT_THAT(Judge(kFault + " // error 9: found '=', expected a name\n};\n"),
              ElementsAre("3: not reported: fault.mof:2:9: error: found '=', expected a name\n    uint32 = 5;\n"
                          "          ^\n",
                          "3: not annotated: " + kShown));
  EXPECT_THAT(Judge(kFault + " // warning 10: found '=', expected a name\n};\n").size(), 2U);
  EXPECT_THAT(Judge(kFault + " // error 10: found '=', expected a Name\n};\n").size(), 2U);
  EXPECT_THAT(Judge(kFault + "\n}; // error 10: found '=', expected a name\n").size(), 2U);
}

TEST(AnnotatedMof, FurtherFindingsOfALineAreBelowItInTheirOrder) {
  const std::string line = "// case: two\nclass TST_Fan-Tray {";
  const std::string first = " error 14: found the stray character '-', expected a digit after it\n";
  const std::string second = " error 15: found 'Tray', expected ':' or '{'\n";
  EXPECT_THAT(Judge(line + " //" + first + "//^" + second + "};\n"), IsEmpty());
  EXPECT_THAT(Judge(line + " //" + second + "//^" + first + "};\n"), ElementsAre("1: reported in another order"));
}

TEST(AnnotatedMof, BytesLineEndsAndWhatIsShownOfThem) {
  const std::string fault =
      "// case: end, with bytes <XX>, without a last line end\n<09>?<0D> // error 2: found the stray character '?', "
      "expected a name, a value, a comment or punctuation\n";
  EXPECT_EQ(ParseAnnotatedMof(fault).cases.at(0).texts.at(0).text, "\t?\r");
  EXPECT_THAT(Judge(fault + "//|   ?\n//|   ^\n"), IsEmpty());
  EXPECT_THAT(Judge(fault).front(), "2: //| must say how the line above is shown");
}

TEST(AnnotatedMof, ACaseMayHaveSeveralTexts) {
  const std::string text =
      "// case: a\nclass TST_A { };\n#pragma include (\"b.mof\")\n\n// included: b.mof\n\nclass TST_B : TST_C { };\n"
      "// also: c.mof\nclass TST_C { };\nclass TST_A { };";
  EXPECT_THAT(Judge(text + " // error 7: the class 'TST_A' is already declared in a.mof:1\n"), IsEmpty());
  const TAnnotatedMof annotated = ParseAnnotatedMof(text);
  ASSERT_EQ(annotated.cases.at(0).texts.size(), 3U);
  EXPECT_EQ(annotated.cases[0].texts[0].text, "class TST_A { };\n#pragma include (\"b.mof\")\n");
  EXPECT_EQ(annotated.cases[0].texts[1].text, "\nclass TST_B : TST_C { };\n");
  EXPECT_FALSE(annotated.cases[0].texts[1].given);
  EXPECT_TRUE(annotated.cases[0].texts[2].given);
}

const std::string kSound =
    "// case: sound\nQualifier Level : uint8 = 0, Scope(class);\n[Level(1)] class TST_Fan { uint8 A = 2; };\n"
    "instance of TST_Fan { A = 3; };\n";

TEST(AnnotatedMof, StatementsHold) {
  EXPECT_THAT(Judge(kSound + "//= class TST_Fan\n//= property TST_Fan.A uint8 = 2 origin TST_Fan\n"
                             "//= declaration Level uint8 = 0 scope(class) flavor(enableoverride, tosubclass)\n"
                             "//= qualifier TST_Fan: Level = 1\n//= no-qualifier TST_Fan.A: Level\n"
                             "//= instance 1: TST_Fan\n//= value 1.A = 3\n"),
              IsEmpty());
}

TEST(AnnotatedMof, StatementsThatDoNotHoldAreDifferences) {
  EXPECT_THAT(Judge(kSound), ElementsAre("1: classes: annotated {}, found { \"TST_Fan\" }",
                                         "1: instances: annotated {}, found { \"1: TST_Fan\" }"));
  EXPECT_THAT(
      Judge(kSound + "//= class TST_Fan\n//= property TST_Fan.A uint8 = 3 origin TST_Fan\n//= declaration Level uint8\n"
                     "//= method TST_Fan.A uint8 () origin TST_Fan\n//= qualifier TST_Fan: Level = 2\n"
                     "//= no-qualifier TST_Fan: Level\n//= no-qualifier TST_Fan: Levle\n//= instance 1: TST_Fan\n"
                     "//= value 1.A = 2\n"),
      ElementsAre("1: properties: annotated { \"TST_Fan.A uint8 = 3 origin TST_Fan\" }, found { "
                  "\"TST_Fan.A uint8 = 2 origin TST_Fan\" }",
                  "1: methods: annotated { \"TST_Fan.A uint8 () origin TST_Fan\" }, found {}",
                  "1: declarations: annotated { \"Level uint8\" }, found { "
                  "\"Level uint8 = 0 scope(class) flavor(enableoverride, tosubclass)\" }",
                  "9: qualifier TST_Fan: Level = 2, found { \"TST_Fan: Level = 1\" }",
                  "10: no-qualifier TST_Fan: Level, found { \"TST_Fan: Level = 1\" }",
                  "11: no-qualifier TST_Fan: Levle, found { \"TST_Fan: Level = 1\" }",
                  "13: value 1.A = 2, found { \"1.A = 3\" }"));
}

TEST(AnnotatedMof, MalformedAnnotationsAreReported) {
  const auto malformed = [](const std::string& text) { return ParseAnnotatedMof(text).malformed; };
  EXPECT_THAT(malformed("// a head\n\n"), ElementsAre("2: a file without a case"));
  EXPECT_THAT(malformed("class A { };\n// case: a\n"), ElementsAre("1: before the first case: class A { };"));
  EXPECT_THAT(malformed("// Case: a\n// case: b\n"), ElementsAre("1: before the first case: // Case: a"));
  EXPECT_THAT(malformed("// case: a, upside down\n"), ElementsAre("1: unknown option: upside down"));
  EXPECT_THAT(malformed("// case: a\n//^ error 1: x\n"), ElementsAre("2: an annotation without a line"));
  EXPECT_THAT(malformed("// case: a\n//|  x\n"), ElementsAre("2: no annotation above: //|  x"));
  EXPECT_THAT(malformed("// case: a\n//= thing A\n"), ElementsAre("2: unknown statement: thing"));
  EXPECT_THAT(malformed("// case: a\nx // error 1: y\n//= class A\n"),
              ElementsAre("3: statements of a case with errors or registers: a"));
  for (const std::string line : {"x // error: y", "x //error 1: y", "x // Warning 1: y", "x // error 1:y",
                                 "//^error 1: y", "//=class A", "//:", "// case:b", "// also:", "//included: b.mof"}) {
    EXPECT_THAT(malformed("// case: a\n" + line + "\n"), ElementsAre("2: not an annotation: " + line));
  }
}

}  // namespace
}  // namespace tests
