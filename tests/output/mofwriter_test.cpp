#include "tests/output/smallserver.h"

#include <sstream>

namespace tests {
namespace {

class MofWriter : public TAwkwardTest {
 protected:
  /// The text between "P = " and the semicolon for a property with that type and value.
  std::string Mof(TType type, const TCIMValue& value) {
    const std::string text = Written(EOutputForm::kMof, {One(type, value)}, Complete());
    const std::string before = "instance of KROSG_One {\n  P = ";
    const std::size_t start = text.find(before) + before.size();
    return text.substr(start, text.find(";\n};\n") - start);
  }
};

constexpr const char* kHeader =
    "// Instances collected by velhost 2.0, run 0f8fad5b-d9cb-4d9f-a165-70867728950e, started "
    "2026-01-31T12:34:56.789+01:00, on collector\n"
    "// source: lan:bmc0\n"
    "// machine type 6203, Engineering Information Collector 1.0 (interface version 1.1)\n"
    "// schema: schema, SHA-256 aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa\n"
    "\n";

TEST_F(MofWriter, WritesOneInstanceAfterAnother) {
  const auto cimClass = Define("KROSG_A", "", {Property("Name", TType::kString), Property("N", TType::kUint16)});
  EXPECT_EQ(Written(EOutputForm::kMof,
                    {Make(cimClass, {{"N", TCIMValue(7)}}), Make(cimClass, {{"Name", TCIMValue("x")}})}, Complete()),
            std::string(kHeader) +
                "// KROSG_A/?1\n"
                "instance of KROSG_A {\n"
                "  N = 7;\n"
                "};\n"
                "\n"
                "// KROSG_A/?1\n"
                "instance of KROSG_A {\n"
                "  Name = \"x\";\n"
                "};\n"
                "\n"
                "// status: complete\n"
                "// exit status: 0\n"
                "// exchanges: 42, none failed\n"
                "// elapsed: 1.234 s\n");
}

TEST_F(MofWriter, ReportsWhatIsMissingInComments) {
  EXPECT_EQ(Written(EOutputForm::kMof, {}, Partial()), std::string(kHeader) +
                                                           "// status: partial\n"
                                                           "// exit status: 3\n"
                                                           "// reason: interrupted\n"
                                                           "// reason: KROSG_A: said \"no\"\n"
                                                           "// exchanges: 42, 2 failed\n"
                                                           "// elapsed: 1.234 s\n");
}

using MofOfSmallServer = TSmallServer;

TEST_F(MofOfSmallServer, SaysInCommentsWhatItCannotSayInInstances) {
  std::string comments;
  std::istringstream text(Written(EOutputForm::kMof, document_));
  for (std::string line; std::getline(text, line);) {
    if (line.starts_with("//") || line.starts_with("instance of")) comments += line + "\n";
  }
  EXPECT_EQ(comments,
            "// SIMULATED: sim:small.toml, not a real service processor\n"
            "// Instances collected by velhost 2.0, run 0f8fad5b-d9cb-4d9f-a165-70867728950e, started "
            "2026-01-31T12:34:56.789+01:00, on collector\n"
            "// source: sim:small.toml\n"
            "// label rack=7\n"
            "// machine type 6203, Engineering Information Collector 1.0 (interface version 1.0)\n"
            "// schema: small.mof, SHA-256 aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa\n"
            "// KROSG_VO_PCIIOBRIDGE_StatisticData/node0/instance0\n"
            "// missing: Log at 0xABCDF0: 0xCB requested sensor, data, or record not present\n"
            "instance of KROSG_VO_PCIIOBRIDGE_StatisticData {\n"
            "// KROSG_X_MEMCTL_StatisticData/sp0/instance0\n"
            "instance of KROSG_X_MEMCTL_StatisticData {\n"
            "// KROSG_X_MEMCTL_StatisticData/sp1/instance0\n"
            "// missing: First at index 0: 0 bytes received\n"
            "// missing: StatisticTime: 1 byte received\n"
            "instance of KROSG_X_MEMCTL_StatisticData {\n"
            "// KROSG_DCAPFile/node0/cpu_err\n"
            "// missing: ErrRawData at offset 3: 3 bytes received\n"
            "instance of KROSG_DCAPFile {\n"
            "// status: partial\n"
            "// exit status: 3\n"
            "// reason: KROSG_X_MEMCTL_StatisticData: 1 of 2 register blocks was too short\n"
            "// reason: KROSG_DCAPFile: 1 of 3 capture files is missing or incomplete\n"
            "// unread: KROSG_VO_PCIIOBRIDGE_StatisticData/node0/instance1: absent\n"
            "// unread: KROSG_DCAPFile/node0/ioh_err: absent\n"
            "// unread: KROSG_DCAPFile/node0/zyn_err: absent\n"
            "// exchanges: 15, 8 failed\n"
            "// elapsed: 0.004 s\n");
}

TEST_F(MofWriter, SaysWhichServerAndRecordingItWasAndWhyItFailed) {
  TDocument document = {Header(), {}, Complete()};
  document.header.source.recorded = "2026-01-31T12:34:56+01:00";
  document.header.source.serial = "K12";
  document.header.source.uuid = "00112233-4455-6677-8899-aabbccddeeff";
  document.summary.status = EResultStatus::kUnreachable;
  document.summary.exitStatus = 69;
  document.summary.message = "no answer";
  const std::string text = Written(EOutputForm::kMof, document);
  EXPECT_NE(text.find("// source: lan:bmc0, recorded 2026-01-31T12:34:56+01:00, serial number K12, UUID "
                      "00112233-4455-6677-8899-aabbccddeeff\n"),
            std::string::npos)
      << text;
  EXPECT_NE(text.find("// status: unreachable: no answer\n// exit status: 69\n"), std::string::npos) << text;
}

TEST_F(MofWriter, KeepsAMessageOfSeveralLinesInsideItsComment) {
  TResultSummary summary = Partial();
  summary.reasons[1].message = "one\ninstance of X {};";
  EXPECT_NE(Written(EOutputForm::kMof, {}, summary).find("KROSG_A: one\\ninstance of X {};\n"), std::string::npos);
}

TEST_F(MofWriter, WritesAnAwkwardInstance) {
  const std::string text = Written(EOutputForm::kMof, {Awkward()}, Complete());
  const std::size_t start = text.find("instance of");
  EXPECT_EQ(text.substr(start, text.find("\n};\n") + 4 - start),
            "instance of KROSG_Awkward {\n"
            "  Quotes = \"say \\\"hi\\\" \\\\ <&>\";\n"
            "  Controls = \"t\\tn\\nr\\re\\x001bz\\x0000d\\x007f\";\n"
            "  NonAscii = \"Gr\u00fc\u00dfe \u6f22 \U0001F600\";\n"
            "  Invalid = \"a\uFFFDb\uFFFD\";\n"
            "  Empty = \"\";\n"
            "  Nothing = NULL;\n"
            "  Bytes = {0, NULL, 255};\n"
            "  NoBytes = {};\n"
            "  Texts = {\"a\\\"b\", NULL, \"\"};\n"
            "  Lowest = -9223372036854775808;\n"
            "  Highest = 18446744073709551615;\n"
            "  Yes = TRUE;\n"
            "  No = FALSE;\n"
            "  Tenth = 0.1;\n"
            "  Huge = 1.0e+300;\n"
            "  Endless = NULL /* inf */;\n"
            "  Accent = '\\x00e9';\n"
            "  Moment = \"20260131123456.000000+060\";\n"
            "  Span = \"00000001132312.000000:000\";\n"
            "};\n");
}

TEST_F(MofWriter, EscapesChar16Values) {
  EXPECT_EQ(Mof(TType::kChar16, TCIMValue::FromInteger(TType::kChar16, 'A')), "'A'");
  EXPECT_EQ(Mof(TType::kChar16, TCIMValue::FromInteger(TType::kChar16, '"')), "'\"'");
  EXPECT_EQ(Mof(TType::kChar16, TCIMValue::FromInteger(TType::kChar16, '\'')), "'\\''");
  EXPECT_EQ(Mof(TType::kChar16, TCIMValue::FromInteger(TType::kChar16, '\\')), "'\\\\'");
  EXPECT_EQ(Mof(TType::kChar16, TCIMValue::FromInteger(TType::kChar16, '\n')), "'\\n'");
  EXPECT_EQ(Mof(TType::kChar16, TCIMValue::FromInteger(TType::kChar16, 0xD800)), "'\\xd800'");
}

TEST_F(MofWriter, EscapesC1ControlCharacters) {
  EXPECT_EQ(Mof(TType::kString, TCIMValue("\u0085\u00a0")), "\"\\x0085\u00a0\"");
}

TEST_F(MofWriter, SplitsALongStringBetweenItsCharacters) {
  // 96 bytes per literal: the first euro sign (three bytes) starts at byte 95 and must not be split.
  const std::string text = std::string(95, 'x') + "\u20ac\u20acend";
  EXPECT_EQ(Mof(TType::kString, TCIMValue(text)), "\"" + std::string(95, 'x') + "\u20ac\"\n    \"\u20acend\"");
  EXPECT_EQ(Mof(TType::kString, TCIMValue(std::string(96, 'x'))), '"' + std::string(96, 'x') + '"');
}

TEST_F(MofWriter, WritesNullForATimeThatDoesNotExist) {
  EXPECT_EQ(Mof(TType::kDateTime, TCIMValue(TCIMDateTime(2026, 13, 1, 0, 0, 0, 0, 0))),
            "NULL /* not a valid datetime: 20261301000000.000000+000 */");
  EXPECT_EQ(Mof(TType::kDateTime, TCIMValue(TCIMDateTime(2026, 1, 255, 0, 0, 0, 0, 0))),
            "NULL /* not a valid datetime: 202601255000000.000000+000 */");
  EXPECT_EQ(Mof(TType::kDateTime, TCIMValue(TCIMDateTime(2026, 1, 31, 24, 0, 0, 0, 0))),
            "NULL /* not a valid datetime: 20260131240000.000000+000 */");
}

TEST_F(MofWriter, WritesReferencesAsStrings) {
  EXPECT_EQ(Mof(TType::kReference, TCIMValue::FromText(TType::kReference, "A.K=\"v\"")), R"("A.K=\"v\"")");
}

TEST_F(MofWriter, SaysWhatIsMissingFromAnInstance) {
  TDocument document = {Header(), {{One(TType::kString, TCIMValue("x")), {}}}, Complete()};
  TInstanceFacts& facts = document.instances[0].second;
  facts.key = "KROSG_One/node0/instance0";
  facts.missing = {
      {"Log", {.address = 0xABCDF0, .addresses = {}, .index = {}, .offset = {}}, {EHow::kCompletionCode, 0xCB}},
      {"StatisticTime", {}, {EHow::kShort, 3}}};
  EXPECT_NE(Written(EOutputForm::kMof, document)
                .find("// KROSG_One/node0/instance0\n"
                      "// missing: Log at 0xABCDF0: 0xCB requested sensor, data, or record not present\n"
                      "// missing: StatisticTime: 3 bytes received\n"
                      "instance of KROSG_One {\n  P = \"x\";\n};\n"),
            std::string::npos);
}

}  // namespace
}  // namespace tests
