#include <fmt/format.h>

#include <string>

#include "host/base/utf8.h"
#include "tests/output/outputfixture.h"
#include "tests/support/namespaces.h"

namespace tests {
namespace {

class TableWriter : public TAwkwardTest {
 protected:
  /// The text of one instance.
  static std::string Block(const TInstancePtr& instance, int width = 80, bool color = false,
                           const TInstanceFacts& facts = {}) {
    TStringSink sink;
    TTableOptions options;
    options.width = width;
    options.color = color;
    const auto writer = MakeWriter(EOutputForm::kTable, sink, options);
    writer->Begin(Header());
    writer->Instance(*instance, facts);
    return sink.Text();
  }
  static std::string Summary(const TResultSummary& summary) { return Written(EOutputForm::kTable, {}, summary); }
  /// A register of an R8 or a JFR class.
  TInstancePtr Register(const std::string& className, const std::string& superClass, const std::vector<int>& bytes) {
    if (!superClass.empty()) Define(superClass, "", {});
    const auto cimClass = Define(className, superClass, {Property("Status", TType::kUint8, true)});
    return Make(cimClass, {{"Status", Bytes(bytes)}});
  }
};

TEST_F(TableWriter, ShowsAnR8RegisterByAddressAndValue) {
  const auto instance =
      Register("KROSG_VO_MEMCTL_StatisticData", "", {0xAB, 0xCD, 0xEF, 8, 7, 6, 5, 4, 3, 2, 1, 0, 0, 0});
  EXPECT_EQ(Block(instance), "KROSG_VO_MEMCTL_StatisticData\n  Status  0xABCDEF  (collector 0x0807060504030201)\n\n");
}

TEST_F(TableWriter, DoesNotSplitHexNumbers) {
  const std::string name(18, 'N');
  const auto cimClass = Define("KROSG_VO_MEMCTL_StatisticData", "", {Property(name, TType::kUint8, true)});
  const auto instance = Make(cimClass, {{name, Bytes({0xAB, 0xCD, 0xEF, 8, 7, 6, 5, 4, 3, 2, 1, 0, 0, 0})}});
  // The value is below the name, in 36 columns: enough for each number but not for both.
  EXPECT_EQ(Block(instance, 40),
            "KROSG_VO_MEMCTL_StatisticData\n  " + name + "\n    0xABCDEF  (collector\n    0x0807060504030201)\n\n");
}

TEST_F(TableWriter, ShowsFourValueBytesBeforeTheMarkerTail) {
  const auto instance =
      Register("KROSG_VO_MEMCTL_StatisticData", "", {0xAB, 0xCD, 0xEF, 0x0C, 7, 6, 5, 0, 0, 0, 0xEF, 0xFE, 0xFE, 0xEF});
  EXPECT_EQ(Block(instance), "KROSG_VO_MEMCTL_StatisticData\n  Status  0xABCDEF  (collector 0x0C070605)\n\n");
}

TEST_F(TableWriter, ShowsAJfrRegisterWithoutItsEqualsSign) {
  const auto instance = Register("KROSG_J1_MEMCTL_StatisticData", "KROSG_MEMCTL_StatisticData",
                                 {0x0E, 0x06, 0x12, 32, 61, 32, 1, 2, 3, 4, 5, 6, 7, 8});
  EXPECT_EQ(Block(instance), "KROSG_J1_MEMCTL_StatisticData\n  Status  0x0E0612  (collector 0x0102030405060708)\n\n");
}

TEST_F(TableWriter, ShowsOtherByteArraysAsNumbers) {
  EXPECT_EQ(Block(Register("KROSG_VO_MEMCTL_StatisticData", "", {1, 2, 255})),
            "KROSG_VO_MEMCTL_StatisticData\n  Status  1, 2, 255\n\n");
  EXPECT_EQ(Block(Register("KROSG_Other", "", {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14})),
            "KROSG_Other\n  Status  1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14\n\n");
}

TEST_F(TableWriter, DumpsACaptureFile) {
  EXPECT_EQ(Block(Capture("0a ff 00 41 ")),
            "KROSG_DCAPFile\n"
            "  RecordID          0\n"
            "  MessageTimestamp  2026-01-31T12:34:56+01:00\n"
            "  FileName          cpu_err\n"
            "  ErrRawData        4 bytes\n"
            "  00000000  0a ff 00 41                                       |...A|\n"
            "  00000004\n"
            "  SourceNode        1\n"
            "\n");
}

TEST_F(TableWriter, DumpsEightBytesPerLineIfSixteenDoNotFit) {
  const std::string block = Block(Capture("41 42 43 44 45 46 47 48 49 "), 79);
  EXPECT_NE(block.find("  ErrRawData        9 bytes\n"
                       "  00000000  41 42 43 44 45 46 47 48  |ABCDEFGH|\n"
                       "  00000008  49                       |I|\n"
                       "  00000009\n"),
            std::string::npos)
      << block;
}

TEST_F(TableWriter, ShowsAnEmptyCaptureFile) {
  EXPECT_NE(Block(Capture("")).find("  ErrRawData        0 bytes\n  SourceNode"), std::string::npos);
}

TEST_F(TableWriter, ShowsCaptureDataThatIsNotHexAsText) {
  const std::string block = Block(Capture("not hex"));
  EXPECT_NE(block.find("KROSG_DCAPFile\n  RecordID          0\n"), std::string::npos) << block;
  EXPECT_NE(block.find("  ErrRawData        not hex\n"), std::string::npos) << block;
}

TEST_F(TableWriter, ShowsAwkwardValuesWithoutDisturbingTheTerminal) {
  EXPECT_EQ(Block(Awkward()),
            "KROSG_Awkward\n"
            "  Quotes    say \"hi\" \\ <&>\n"
            "  Controls  t\\tn\\nr\\re\\x1bz\\x00d\\x7f\n"
            "  NonAscii  Gr\u00fc\u00dfe \u6f22 \U0001F600\n"
            "  Invalid   a\uFFFDb\uFFFD\n"
            "  Empty\n"
            "  Nothing   (null)\n"
            "  Bytes     0, (null), 255\n"
            "  NoBytes   (empty)\n"
            "  Texts     \"a\"b\", (null), \"\"\n"
            "  Lowest    -9223372036854775808\n"
            "  Highest   18446744073709551615\n"
            "  Yes       true\n"
            "  No        false\n"
            "  Tenth     0.1\n"
            "  Huge      1e+300\n"
            "  Endless   inf\n"
            "  Accent    \u00e9\n"
            "  Moment    2026-01-31T12:34:56+01:00\n"
            "  Span      00000001132312.000000:000\n"
            "\n");
}

TEST_F(TableWriter, EscapesBidirectionalControls) {
  std::string text = "a";
  AppendUtf8(text, 0x202E);
  EXPECT_EQ(Block(One(TType::kString, TCIMValue(text + "b\u0085c"))), "KROSG_One\n  P  a\\u202eb\\x85c\n\n");
}

TEST_F(TableWriter, WrapsLongTextAtBlanksUnderItsColumn) {
  const auto instance = One(TType::kString, TCIMValue("one two three four five six seven eight nine ten"));
  EXPECT_EQ(Block(instance, 40), "KROSG_One\n  P  one two three four five six seven\n     eight nine ten\n\n");
}

TEST_F(TableWriter, CutsTextWithoutBlanksAtTheWidth) {
  // 35 of 40 columns are left; a wide character takes two.
  EXPECT_EQ(Block(One(TType::kString, TCIMValue(std::string(40, 'x'))), 40),
            "KROSG_One\n  P  " + std::string(35, 'x') + "\n     xxxxx\n\n");
  EXPECT_EQ(Block(One(TType::kString, TCIMValue(std::string(34, 'x') + "\u6f22y")), 40),
            "KROSG_One\n  P  " + std::string(34, 'x') + "\n     \u6f22y\n\n");
}

TEST_F(TableWriter, PutsTheValueUnderANameBeyondTheMiddle) {
  const std::string name(30, 'N');
  const auto instance = Make(Define("KROSG_A", "", {Property(name, TType::kString), Property("B", TType::kString)}),
                             {{name, TCIMValue("v")}, {"B", TCIMValue("w")}});
  EXPECT_EQ(Block(instance, 56),
            "KROSG_A\n  " + name + "\n" + std::string(28, ' ') + "v\n  B" + std::string(25, ' ') + "w\n\n");
  EXPECT_EQ(Block(instance, 55), "KROSG_A\n  " + name + "\n    v\n  B\n    w\n\n");
}

TEST_F(TableWriter, ColoursHeadingsAndFailuresOnlyIfAsked) {
  const auto instance = One(TType::kString, TCIMValue("x"));
  TInstanceFacts facts;
  facts.missing = {{"P", {}, {EHow::kLost, 0}}};
  EXPECT_EQ(Block(instance, 80, true, facts),
            "\x1b[1mKROSG_One\x1b[0m\n"
            "  P  \x1b[31mmissing: lost: no answer\x1b[0m\n\n");
  EXPECT_EQ(Block(instance, 80, false, facts).find('\x1b'), std::string::npos);
}

TEST_F(TableWriter, FlushesEachBlock) {
  TFlushedSink sink;
  const auto writer = MakeWriter(EOutputForm::kTable, sink, {});
  writer->Begin(Header());
  writer->Instance(*One(TType::kString, TCIMValue("x")), {});
  EXPECT_EQ(sink.flushedAt, std::vector<std::size_t>{std::string("KROSG_One\n  P  x\n\n").size()});
}

TEST_F(TableWriter, CutsADumpAfterItsLimit) {
  std::string raw;
  for (int i = 0; i < 160; ++i) raw += fmt::format("{:02x} ", i);
  const auto instance = Capture(raw);
  TTableOptions options;
  options.dumpLines = 10;
  const std::string text = Written(EOutputForm::kTable, {instance}, Complete(), options);
  EXPECT_NE(text.find("|................|\n  ... 1 more line; --capture-dir writes the file\n  SourceNode        1\n"),
            std::string::npos)
      << text;
  EXPECT_NE(text.find("  00000090  90 91"), std::string::npos);
  options.dumpLines = 11;
  EXPECT_EQ(Written(EOutputForm::kTable, {instance}, Complete(), options).find("more line"), std::string::npos);
  options.dumpLines = 1;
  EXPECT_NE(Written(EOutputForm::kTable, {instance}, Complete(), options).find("  ... 10 more lines; --capture-dir"),
            std::string::npos);
}

TEST_F(TableWriter, SummarisesACompleteCollection) {
  const auto one = One(TType::kString, TCIMValue("x"));
  const auto other = Make(Define("KROSG_Other", "", {}), {});
  const std::string text = Written(EOutputForm::kTable, {one, other, one}, Complete());
  EXPECT_EQ(text.substr(text.find("Summary")),
            "Summary\n"
            "  Source        lan:bmc0\n"
            "  Machine type  6203\n"
            "  Instances     3\n"
            "    2  KROSG_One\n"
            "    1  KROSG_Other\n"
            "  Exchanges     42, none failed\n"
            "  Elapsed       1.234 s\n"
            "  Result        complete\n"
            "  Findings      unknown\n");
}

TEST_F(TableWriter, SummarisesAPartialCollection) {
  EXPECT_EQ(Summary(Partial()),
            "Findings\n"
            "  Unknown: no register was read.\n"
            "  Not everything was collected: there may be errors.\n"
            "\n"
            "Other failed exchanges\n"
            "  KROSG_A\n"
            "    node 0  0x2D0100  register: 0xC3 timeout while processing command\n"
            "\n"
            "Summary\n"
            "  Source        lan:bmc0\n"
            "  Machine type  6203\n"
            "  Instances     none\n"
            "  Exchanges     42, 2 failed\n"
            "  Elapsed       1.234 s\n"
            "  Result        partial\n"
            "    interrupted\n"
            "    KROSG_A\n"
            "      said \"no\"\n"
            "  Findings      unknown\n");
}

TEST_F(TableWriter, SaysWhyAFailedCollectionFailed) {
  TResultSummary summary = Complete();
  summary.status = EResultStatus::kFailed;
  summary.message = "run.jsonl:2:1: found \"a\"\n, expected b";
  EXPECT_NE(Summary(summary).find("  Result        failed: run.jsonl:2:1: found \"a\"\\n, expected b\n"),
            std::string::npos)
      << Summary(summary);
}

TEST_F(TableWriter, NamesTheServerAndTheRecording) {
  TDocument document = {Header(), {}, Complete()};
  document.header.source = {{"replay:run.jsonl"},
                            "replay:run.jsonl",
                            false,
                            "2026-01-31T12:34:56+01:00",
                            "K12",
                            "00112233-4455-6677-8899-aabbccddeeff"};
  document.header.machineType.clear();
  document.header.run.labels = {{"rack", "7"}, {"room", "b\n2"}};
  const std::string text = Written(EOutputForm::kTable, document);
  const std::size_t start = text.find("Summary\n");
  EXPECT_EQ(text.substr(start, text.find("  Instances") - start),
            "Summary\n"
            "  Source        replay:run.jsonl\n"
            "  Recorded      2026-01-31T12:34:56+01:00\n"
            "  Serial        K12\n"
            "  UUID          00112233-4455-6677-8899-aabbccddeeff\n"
            "  Machine type  unknown\n"
            "  Labels        rack=7, room=b\\n2\n");
}

TEST_F(TableWriter, StaysWithinItsWidth) {
  TDocument document = {Header(), {{One(TType::kString, TCIMValue(std::string(500, 'x'))), {}}}, Partial()};
  document.header.source.simulated = true;
  document.header.source.target = std::string(300, 't');
  document.instances[0].second.key = "KROSG_One/node0/" + std::string(30, 'i');
  document.instances[0].second.missing = {{"P", {}, {EHow::kCompletionCode, 0xCB}}, {"Q", {}, {EHow::kShort, 1}}};
  document.summary.reasons[1].message = std::string(300, 'm');
  for (const int width : {40, 80, 200}) {
    TTableOptions options;
    options.width = width;
    std::string text = Written(EOutputForm::kTable, document, options);
    for (std::size_t end = text.find('\n'); end != std::string::npos; end = text.find('\n')) {
      EXPECT_LE(end, static_cast<std::size_t>(width)) << text.substr(0, end);
      text.erase(0, end + 1);
    }
  }
}

}  // namespace
}  // namespace tests
