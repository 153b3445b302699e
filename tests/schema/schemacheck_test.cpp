// The two formats of a check's findings, and its exit status.
#include "host/schema/schemacheck.h"

#include "tests/schema/schemafixture.h"
#include "tests/support/memoryreader.h"
#include "tests/support/namespaces.h"

namespace tests {
namespace {

std::string Text(const TCheckFindings& findings) {
  TStringSink sink;
  WriteFindingsAsText(findings, sink);
  return sink.Text();
}

std::string Json(const TCheckFindings& findings) {
  TStringSink sink;
  WriteFindingsAsJson(findings, sink);
  return sink.Text();
}

TCheckFindings Check(const std::string& text) {
  TMemoryReader reader;
  reader.Add("a.mof", text);
  return CheckSchema({"a.mof"}, reader);
}

const std::string kClean =
    "class R {};\nclass KROSG_PCIIOBRIDGE_StatisticData : R {}; class KROSG_MEMCTL_StatisticData : R {};\n"
    "class KROSG_L3Cache_StatisticData : R {}; class KROSG_DCAPFile { string FileName; string ErrRawData;\n"
    "datetime MessageTimestamp; string SourceNode; string CreationClassName; string LogCreationClassName;\n"
    "string LogName; string RecordID; };\n";

TEST(SchemaCheck, NoFindings) {
  const TCheckFindings findings = Check(kClean);
  EXPECT_EQ(Text(findings), "no findings\n");
  EXPECT_EQ(Json(findings),
            "{\"kind\":\"schemacheck\",\"format_version\":1,\"findings\":[],\"errors\":0,\"warnings\":0}\n");
}

TEST(SchemaCheck, ErrorsOfTheSchemaItself) {
  const TCheckFindings findings = Check("class A : B {};\n#pragma \"x\"\n#pragma p(\"\")\n");
  EXPECT_EQ(Text(findings),
            "a.mof:1:11: error: the class 'B' is not declared\n  class A : B {};\n            ^\n"
            "a.mof:2:9: error: found '\"x\"', expected a name\n  #pragma \"x\"\n          ^\n"
            "2 errors, 0 warnings\n")
      << "what the collector needs is not asked for";
  EXPECT_EQ(Json(findings),
            "{\"kind\":\"schemacheck\",\"format_version\":1,\"findings\":["
            "{\"severity\":\"error\",\"file\":\"a.mof\",\"line\":1,\"column\":11,\"message\":\"the class 'B' is not "
            "declared\"},"
            "{\"severity\":\"error\",\"file\":\"a.mof\",\"line\":2,\"column\":9,\"message\":\"found '\\\"x\\\"', "
            "expected a name\"}"
            "],\"errors\":2,\"warnings\":0}\n");
}

TEST(SchemaCheck, NeedsOfTheCollector) {
  const TCheckFindings findings = Check("#pragma p(\"\")\nclass A {};");
  EXPECT_EQ(findings.errors, 4U);
  EXPECT_EQ(findings.warnings, 1U);
  const std::string text = Text(findings);
  EXPECT_THAT(text, testing::StartsWith("a.mof:1:9: warning: the pragma 'p' is unknown and has no effect\n"));
  EXPECT_THAT(text,
              testing::HasSubstr(
                  "\na.mof: error: the class 'KROSG_DCAPFile', which holds the capture files, is not declared\n"));
  EXPECT_THAT(text, testing::EndsWith("\n4 errors, 1 warning\n"));
  EXPECT_THAT(Json(findings),
              testing::HasSubstr("{\"severity\":\"error\",\"file\":\"a.mof\",\"line\":null,\"column\":null,"
                                 "\"message\":\"the class 'KROSG_DCAPFile', which holds the capture files"));
}

TEST(SchemaCheck, AWarningIsAFinding) {
  const TCheckFindings findings = Check("#pragma p(\"\")\n" + kClean);
  EXPECT_EQ(Text(findings),
            "a.mof:1:9: warning: the pragma 'p' is unknown and has no effect\n  #pragma p(\"\")\n          ^\n"
            "0 errors, 1 warning\n");
}

TEST(SchemaCheck, CountsWhatIsNotShown) {
  std::string text;
  for (int i = 0; i < 105; ++i) text += "class A" + std::to_string(i) + " : X {};\n";
  const TCheckFindings findings = Check(text);
  EXPECT_EQ(findings.errors, 105U);
  EXPECT_THAT(Text(findings), testing::EndsWith("\na.mof: error: and 5 more errors\n105 errors, 0 warnings\n"));
}

TEST(SchemaCheck, PathsWithoutALineAreAllNamed) {
  TMemoryReader reader;
  reader.Add("a.mof", "class A {};");
  reader.Add("b.mof", "");
  EXPECT_EQ(CheckSchema({"a.mof", "b.mof"}, reader).findings.at(0).location.file, "a.mof, b.mof");
}

}  // namespace
}  // namespace tests
