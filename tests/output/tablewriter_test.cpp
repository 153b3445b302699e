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
    const auto writer = MakeWriter(EOutputForm::kTable, sink, {width, color});
    writer->Begin(Header());
    writer->Instance(*instance, facts);
    return sink.Text();
  }
  static std::string Summary(const TResultSummary& summary, int width = 80, bool color = false) {
    return Written(EOutputForm::kTable, {}, summary, {width, color});
  }
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
  EXPECT_EQ(Block(instance), "KROSG_VO_MEMCTL_StatisticData\n  Status  0xABCDEF  0x0807060504030201\n\n");
}

TEST_F(TableWriter, DoesNotSplitHexNumbers) {
  const std::string name(18, 'N');
  const auto cimClass = Define("KROSG_VO_MEMCTL_StatisticData", "", {Property(name, TType::kUint8, true)});
  const auto instance = Make(cimClass, {{name, Bytes({0xAB, 0xCD, 0xEF, 8, 7, 6, 5, 4, 3, 2, 1, 0, 0, 0})}});
  // 20 of 40 columns are left, which is enough for each number but not for both.
  EXPECT_EQ(Block(instance, 40), "KROSG_VO_MEMCTL_StatisticData\n  " + name + "\n" + std::string(20, ' ') +
                                     "0xABCDEF\n" + std::string(20, ' ') + "0x0807060504030201\n\n");
}

TEST_F(TableWriter, ShowsFourValueBytesBeforeTheMarkerTail) {
  const auto instance =
      Register("KROSG_VO_MEMCTL_StatisticData", "", {0xAB, 0xCD, 0xEF, 0x0C, 7, 6, 5, 0, 0, 0, 0xEF, 0xFE, 0xFE, 0xEF});
  EXPECT_EQ(Block(instance), "KROSG_VO_MEMCTL_StatisticData\n  Status  0xABCDEF  0x0C070605\n\n");
}

TEST_F(TableWriter, ShowsAJfrRegisterWithoutItsEqualsSign) {
  const auto instance = Register("KROSG_J1_MEMCTL_StatisticData", "KROSG_MEMCTL_StatisticData",
                                 {0x0E, 0x06, 0x12, 32, 61, 32, 1, 2, 3, 4, 5, 6, 7, 8});
  EXPECT_EQ(Block(instance), "KROSG_J1_MEMCTL_StatisticData\n  Status  0x0E0612  0x0102030405060708\n\n");
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
            "  cpu_err, node 1, record 0, 2026-01-31T12:34:56+01:00\n"
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
  EXPECT_EQ(Block(instance, 40),
            "KROSG_A\n  " + name + "\n" + std::string(20, ' ') + "v\n  B" + std::string(17, ' ') + "w\n\n");
}

TEST_F(TableWriter, ColoursHeadingsAndFailuresOnlyIfAsked) {
  const auto instance = One(TType::kString, TCIMValue("x"));
  TInstanceFacts facts;
  facts.missing = {{"Log", {}, {EHow::kLost, 0}}};
  EXPECT_EQ(Block(instance, 80, true, facts),
            "\x1b[1mKROSG_One\x1b[0m\n"
            "  \x1b[31mmissing: Log: lost: no answer\x1b[0m\n"
            "  P  x\n\n");
  EXPECT_EQ(Block(instance, 80, false, facts).find('\x1b'), std::string::npos);
}

TEST_F(TableWriter, FlushesEachBlock) {
  TFlushedSink sink;
  const auto writer = MakeWriter(EOutputForm::kTable, sink, {});
  writer->Begin(Header());
  writer->Instance(*One(TType::kString, TCIMValue("x")), {});
  EXPECT_EQ(sink.flushedAt, std::vector<std::size_t>{std::string("KROSG_One\n  P  x\n\n").size()});
}

TEST_F(TableWriter, SummarisesACompleteCollection) {
  const auto one = One(TType::kString, TCIMValue("x"));
  const auto other = Make(Define("KROSG_Other", "", {}), {});
  const std::string text = Written(EOutputForm::kTable, {one, other, one}, Complete());
  EXPECT_EQ(text.substr(text.find("Summary")),
            "Summary\n"
            "  Instances  3\n"
            "    2  KROSG_One\n"
            "    1  KROSG_Other\n"
            "  Exchanges  42, none failed\n"
            "  Elapsed    1.234 s\n"
            "  Result     complete\n");
}

TEST_F(TableWriter, SummarisesAPartialCollection) {
  EXPECT_EQ(Summary(Partial()),
            "Summary\n"
            "  Instances  none\n"
            "  Exchanges  42, 2 failed\n"
            "  Elapsed    1.234 s\n"
            "  Result     partial: interrupted; KROSG_A: said \"no\"\n"
            "    interrupted\n"
            "    KROSG_A: said \"no\"\n");
}

TEST_F(TableWriter, StaysWithinItsWidth) {
  TResultSummary summary = Partial();
  summary.reasons[1].message = std::string(300, 'm');
  for (const int width : {40, 80, 200}) {
    std::string text =
        Written(EOutputForm::kTable, {One(TType::kString, TCIMValue(std::string(500, 'x')))}, summary, {width, false});
    for (std::size_t end = text.find('\n'); end != std::string::npos; end = text.find('\n')) {
      EXPECT_LE(end, static_cast<std::size_t>(width)) << text.substr(0, end);
      text.erase(0, end + 1);
    }
  }
}

}  // namespace
}  // namespace tests
