#include "host/change/diffwriters.h"

#include <gtest/gtest.h>

#include <string>

#include "host/base/utf8.h"
#include "tests/change/comparison.h"

namespace tests {

namespace {

// One difference of each kind.
TDifferences EachKind() {
  const std::string counter = R"(,"role":"counter","unit":"errors")";
  const std::string field = R"({"bits":"16","name":"Timeout","value":1})";
  const std::string failed = R"({"property":"Lost","address":"0x0000A4","lost":true})";
  const std::string absent = R"({"property":"Gone","address":"0x0000A8","completion_code":203})";
  const std::string before =
      InstanceWith(Register("Status", "0x00000000") + "," + Register("Count", "0x00000002", "", counter) + "," +
                       Register("Gone", "0x00000001"),
                   failed);
  const std::string after =
      InstanceWith(Register("Status", "0x00010000", field) + "," + Register("Count", "0x00000005", "", counter),
                   failed + "," + absent);
  const std::string finding =
      R"({"key":"KROSG_A/node0/instance0","class":"KROSG_A","origin":{"path":"r8","node":0,"chip":0,"instance":0},)"
      R"("register":"Status","bits":"16","name":"Timeout","value":1,"register_value":"0x00010000","severity":"fatal",)"
      R"("masked":false,"first":true,"known":false,"evidence":{},"unknown":[]})";
  return Compared(Document({before, Instance(1, "0x00000001"), CaptureFile("61 0a 62 0a ")}),
                  Document({after, CaptureFile("61 0a 63 0a ")}, kHeader, SummaryWith("", "", finding)));
}

std::string TextOf(const TDifferences& differences, const TTableOptions& options = {}) {
  TStringSink sink;
  WriteDifferencesAsText(differences, sink, options);
  return sink.Text();
}

TEST(DiffText, ShowsEachKindApart) {
  EXPECT_EQ(TextOf(EachKind()),
            "Compared\n"
            "  Before        2026-01-31T12:34:56.789+01:00, lan:10.0.0.1\n"
            "  After         2026-01-31T12:34:56.789+01:00, lan:10.0.0.1\n"
            "\n"
            "Instances\n"
            "  - KROSG_A/node0/instance1: vanished\n"
            "\n"
            "Findings\n"
            "  KROSG_A/node0/instance0\n"
            "    + fatal, first: Status 16 Timeout\n"
            "\n"
            "Registers\n"
            "  KROSG_A/node0/instance0\n"
            "    Status: 0x00000000 -> 0x00010000\n"
            "      + 16 Timeout\n"
            "\n"
            "Counters\n"
            "  KROSG_A/node0/instance0\n"
            "    Count: 2 -> 5, +3 (errors)\n"
            "\n"
            "Files\n"
            "  D/node0/cpu_err\n"
            "    4 bytes -> 4 bytes\n"
            "      - 2: b\n"
            "      + 2: c\n"
            "\n"
            "Missing\n"
            "  KROSG_A/node0/instance0\n"
            "    Gone: is absent now\n"
            "\n"
            "Not compared\n"
            "  KROSG_A/node0/instance0 Lost; before: was not read; after: was not read\n"
            "\n"
            "Summary\n"
            "  Differences   6\n"
            "  Not compared  1\n");
}

TEST(DiffText, FitsEveryWidth) {
  const TDifferences found = EachKind();
  for (int width = 40; width <= 200; ++width) {
    const std::string text = TextOf(found, {.width = width});
    for (std::size_t at = 0; at < text.size(); at = text.find('\n', at) + 1) {
      const std::string line = text.substr(at, text.find('\n', at) - at);
      EXPECT_LE(ColumnsOf(line), static_cast<std::size_t>(width)) << line;
    }
  }
}

TEST(DiffText, ColoursOnlyWhenAsked) {
  EXPECT_EQ(TextOf(EachKind()).find('\x1b'), std::string::npos);
  EXPECT_NE(TextOf(EachKind(), {.color = true}).find('\x1b'), std::string::npos);
}

TEST(DiffText, SaysThatNothingChanged) {
  const std::string text = Document({});
  EXPECT_EQ(TextOf(Compared(text, text)),
            "Compared\n"
            "  Before        2026-01-31T12:34:56.789+01:00, lan:10.0.0.1\n"
            "  After         2026-01-31T12:34:56.789+01:00, lan:10.0.0.1\n"
            "\n"
            "Summary\n"
            "  Differences   none\n"
            "  Not compared  nothing\n");
}

TEST(DiffJson, WritesEachKindApart) {
  TStringSink sink;
  WriteDifferencesAsJson(EachKind(), sink);
  const std::string side = R"("run_id":")" + kRunId +
                           R"(","started":"2026-01-31T12:34:56.789+01:00","target":"lan:10.0.0.1","simulated":false,)"
                           R"("machine_type":"6203","schema_sha256":"ab","status":"complete","cut":false)";
  const std::string place = R"({"class":"KROSG_A","key":"KROSG_A/node0/instance0",)";
  EXPECT_EQ(sink.Text(),
            "{\"kind\":\"diff\",\"format_version\":2,\"exit_status\":1,\n\"before\":{" + side + "},\n\"after\":{" +
                side +
                "},\n\"keys\":[\n"
                R"({"class":"KROSG_A","key":"KROSG_A/node0/instance1","change":"vanished","absent":false})"
                "],\n\"registers\":[\n" +
                place +
                R"("register":"Status","before":"0x00000000","after":"0x00010000","set":[)"
                R"({"bits":"16","name":"Timeout","before":0,"after":1}],"cleared":[],"changed":[]})"
                "],\n\"counters\":[\n" +
                place +
                R"("register":"Count","unit":"errors","before":2,"after":5,"difference":3})"
                "],\n\"files\":[\n"
                R"({"class":"D","key":"D/node0/cpu_err","before_size":4,"after_size":4,"first_difference":2,"lines":[)"
                R"({"change":"removed","line":2,"text":"b"},{"change":"added","line":2,"text":"c"}]})"
                "],\n\"missing\":[\n" +
                place +
                R"("property":"Gone","change":"vanished"})"
                "],\n\"findings\":[\n" +
                place +
                R"("register":"Status","bits":"16","name":"Timeout","change":"new","after":{"severity":"fatal",)"
                R"("masked":false,"first":true,"value":1}})"
                "],\n\"uncompared\":[\n" +
                place +
                R"("property":"Lost","before":"unread","after":"unread"})"
                "],\n\"classes\":[]\n}\n");
}

TEST(DiffJson, WritesWideValuesAsHexText) {
  TDifferences found;
  found.counters.push_back({"C", "C/sp0/instance0", "R", "", "", "", 64, 0x1100000000, 0x1000000000});
  TStringSink sink;
  WriteDifferencesAsJson(found, sink);
  EXPECT_NE(sink.Text().find(R"("before":"0x0000001100000000","after":"0x0000001000000000","reset_or_wrapped":true)"),
            std::string::npos);
}

}  // namespace

}  // namespace tests
