// What the table says of the meaning of registers, and of what is wrong.
#include <gmock/gmock.h>

#include "tests/output/foundserver.h"
#include "tests/support/namespaces.h"

namespace tests {
namespace {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class TableFindings : public TFoundServer {
 protected:
  std::string Table(int width = 80, bool color = false) {
    TTableOptions options;
    options.width = width;
    options.color = color;
    return Written(EOutputForm::kTable, document_, options);
  }
  /// From the findings to the end.
  std::string Ending(int width = 80, bool color = false) {
    const std::string text = Table(width, color);
    return text.substr(text.find("Findings"));
  }
  void RemoveFindings() {
    for (auto& [instance, facts] : document_.instances) facts.findings.clear();
    document_.summary.findings.clear();
  }
};

TEST_F(TableFindings, RegistersShowTheirFieldsInWords) {
  EXPECT_THAT(
      Table(132),
      StartsWith("KROSG_VO_PCIIOBRIDGE_StatisticData  node0/instance0\n"
                 "  ErrorStatus        0x2D0100  0x00150000  Unexpected completion; Malformed TLP; Unsupported "
                 "request\n"
                 "  ErrorMask          0x2D0108  0x00100000  mask: Unsupported request\n"
                 "  ErrorSeverity      0x2D0110  0x00140000  severity: bit 18 (not described); bit 20 (not described)\n"
                 "  FirstErrorPointer  0x2D0118  0xFFFFFFF2\n"
                 "  HeaderLog          0x2D0120  0x4A00000104000004  Requester: 0x0004; Rest: 317827580164\n"
                 "  CorrectableStatus  0x2D0128  0x00000081  Receiver error; bit 7 (not described)\n"
                 "  ReplayCount        0x2D0130  0x00000011  17 packets\n"
                 "  LinkStatus         0x2D0138  0x00000041  Speed: 2.5 GT/s; Lanes: 4\n"
                 "\n"));
}

TEST_F(TableFindings, AFieldStaysInOneLine) {
  EXPECT_THAT(Table(60), HasSubstr("  ErrorStatus        0x2D0100  0x00150000\n"
                                   "                     Unexpected completion; Malformed TLP;\n"
                                   "                     Unsupported request\n"));
  EXPECT_THAT(Table(40), HasSubstr("  ErrorStatus\n"
                                   "    0x2D0100  0x00150000\n"
                                   "    Unexpected completion;\n"
                                   "    Malformed TLP; Unsupported request\n"));
}

TEST_F(TableFindings, AZeroSaysNothingUnlessItHasAText) {
  const std::string text = Table(132);
  EXPECT_THAT(text, HasSubstr("  CorrectableStatus  0x2D0128  0x00000000\n"
                              "  ReplayCount        0x2D0130  0x00000000\n"
                              "  LinkStatus         0x2D0138  0x00000000  Speed: no link\n"));
}

TEST_F(TableFindings, ZerosAreDimAndErrorsHaveTheColourOfTheWorst) {
  const std::string text = Table(132, true);
  EXPECT_THAT(text, HasSubstr("  ErrorStatus        \x1b[1;31m0x2D0100  0x00150000  Unexpected completion;"));
  EXPECT_THAT(text, HasSubstr("  ErrorMask          0x2D0108"));
  EXPECT_THAT(text, HasSubstr("  CorrectableStatus  \x1b[33m0x2D0128  0x00000081"));
  EXPECT_THAT(text, HasSubstr("  ErrorStatus        \x1b[31m0x2D0100  0x00010000"));
  EXPECT_THAT(text, HasSubstr("  \x1b[2mReplayCount\x1b[0m        \x1b[2m0x2D0130  0x00000000\x1b[0m\n"));
}

TEST_F(TableFindings, AMaskedErrorHasNoColour) {
  document_.instances[0].second.findings.erase(document_.instances[0].second.findings.begin(),
                                               document_.instances[0].second.findings.begin() + 2);
  EXPECT_THAT(Table(132, true), HasSubstr("  ErrorStatus        0x2D0100  0x00150000"));
}

TEST_F(TableFindings, AreListedFromTheWorstAndCountedAtTheEnd) {
  document_.instances[1].second.missing.clear();
  EXPECT_EQ(Ending(),
            "Findings: 1 fatal, 2 errors, 2 corrected; 1 masked\n"
            "  FATAL      Malformed TLP (occurred first)\n"
            "             KROSG_VO_PCIIOBRIDGE_StatisticData node0/instance0, chip 1\n"
            "             ErrorStatus bit 18 of 0x00150000\n"
            "             HeaderLog  0x4A00000104000004  Requester: 0x0004;\n"
            "                        Rest: 317827580164\n"
            "  ERROR      Unexpected completion\n"
            "             KROSG_VO_PCIIOBRIDGE_StatisticData node0/instance0, chip 1\n"
            "             ErrorStatus bit 16 of 0x00150000\n"
            "  ERROR      Unexpected completion\n"
            "             KROSG_VO_PCIIOBRIDGE_StatisticData node0/instance1, chip 2\n"
            "             ErrorStatus bit 16 of 0x00010000\n"
            "             HeaderLog  not read\n"
            "             judged without ErrorMask and FirstErrorPointer, which could not be\n"
            "             read\n"
            "  CORRECTED  Receiver error\n"
            "             KROSG_VO_PCIIOBRIDGE_StatisticData node0/instance0, chip 1\n"
            "             CorrectableStatus bit 0 of 0x00000081\n"
            "             ReplayCount  0x00000011  17 packets\n"
            "  CORRECTED  bit 7 (not described)\n"
            "             KROSG_VO_PCIIOBRIDGE_StatisticData node0/instance0, chip 1\n"
            "             CorrectableStatus bit 7 of 0x00000081\n"
            "  MASKED     Unsupported request (fatal, but masked: does not count)\n"
            "             KROSG_VO_PCIIOBRIDGE_StatisticData node0/instance0, chip 1\n"
            "             ErrorStatus bit 20 of 0x00150000\n"
            "\n"
            "Summary\n"
            "  Source        lan:bmc0\n"
            "  Machine type  6203\n"
            "  Instances     2\n"
            "    2  KROSG_VO_PCIIOBRIDGE_StatisticData\n"
            "  Exchanges     42, none failed\n"
            "  Elapsed       1.234 s\n"
            "  Result        complete\n"
            "  Findings      1 fatal, 2 errors, 2 corrected; 1 masked\n"
            "    FATAL      Malformed TLP: KROSG_VO_PCIIOBRIDGE_StatisticData\n"
            "               node0/instance0, chip 1\n"
            "    ERROR      Unexpected completion: KROSG_VO_PCIIOBRIDGE_StatisticData\n"
            "               node0/instance0, chip 1\n"
            "    ERROR      Unexpected completion: KROSG_VO_PCIIOBRIDGE_StatisticData\n"
            "               node0/instance1, chip 2\n"
            "    and 2 more, listed above\n");
}

TEST_F(TableFindings, HaveTheColourOfTheirSeverity) {
  const std::string text = Ending(80, true);
  EXPECT_THAT(text, HasSubstr("\n  \x1b[1;31mFATAL\x1b[0m      \x1b[1;31mMalformed TLP (occurred first)\x1b[0m\n"));
  EXPECT_THAT(text, HasSubstr("\n  \x1b[31mERROR\x1b[0m      \x1b[31mUnexpected completion\x1b[0m\n"));
  EXPECT_THAT(text, HasSubstr("\n  \x1b[33mCORRECTED\x1b[0m  \x1b[33mReceiver error\x1b[0m\n"));
  EXPECT_THAT(text, HasSubstr("\n  \x1b[2mMASKED\x1b[0m     \x1b[2mUnsupported request"));
}

TEST_F(TableFindings, BeginBelowTheirLabelInFortyColumns) {
  EXPECT_THAT(Ending(40), StartsWith("Findings: 1 fatal, 2 errors, 2\n"
                                     "corrected; 1 masked\n"
                                     "  FATAL  Malformed TLP (occurred first)\n"
                                     "    KROSG_VO_PCIIOBRIDGE_StatisticData\n"
                                     "    node0/instance0, chip 1\n"
                                     "    ErrorStatus bit 18 of 0x00150000\n"
                                     "    HeaderLog  0x4A00000104000004\n"
                                     "               Requester: 0x0004;\n"
                                     "               Rest: 317827580164\n"
                                     "  ERROR  Unexpected completion\n"));
}

TEST_F(TableFindings, AreLegibleAtTheEndOfFortyColumns) {
  EXPECT_TRUE(
      Ending(40).ends_with("  Findings      1 fatal, 2 errors, 2\n"
                           "                corrected; 1 masked\n"
                           "    FATAL  Malformed TLP:\n"
                           "    KROSG_VO_PCIIOBRIDGE_StatisticData\n"
                           "    node0/instance0, chip 1\n"
                           "    ERROR  Unexpected completion:\n"
                           "    KROSG_VO_PCIIOBRIDGE_StatisticData\n"
                           "    node0/instance0, chip 1\n"
                           "    ERROR  Unexpected completion:\n"
                           "    KROSG_VO_PCIIOBRIDGE_StatisticData\n"
                           "    node0/instance1, chip 2\n"
                           "    and 2 more, listed above\n"));
}

TEST_F(TableFindings, FitEachWidth) {
  for (const int width : {40, 80, 132, 200}) {
    std::string text = Table(width);
    for (std::size_t end = text.find('\n'); end != std::string::npos; end = text.find('\n')) {
      EXPECT_LE(end, static_cast<std::size_t>(width)) << text.substr(0, end);
      text.erase(0, end + 1);
    }
  }
  EXPECT_THAT(Ending(132),
              HasSubstr("             HeaderLog  0x4A00000104000004  Requester: 0x0004; Rest: 317827580164\n"));
  EXPECT_THAT(Ending(200),
              HasSubstr("    FATAL      Malformed TLP: KROSG_VO_PCIIOBRIDGE_StatisticData node0/instance0, "
                        "chip 1\n"));
}

TEST_F(TableFindings, SayWhatCouldNotBeRead) {
  document_.summary.status = EResultStatus::kPartial;
  EXPECT_THAT(Ending(), HasSubstr("  3 values could not be read: there may be more errors.\n\nMissing\n"));
  document_.instances[1].second.missing.resize(1);
  document_.summary.unread = {{0, {0, 0}, EUnread::kRegisterUnread}, {0, {0, 1}, EUnread::kAbsent}};
  document_.summary.plan = &plan_;
  EXPECT_THAT(Ending(), HasSubstr("  1 value and 1 instance could not be read: there may be more errors.\n"));
  document_.instances[1].second.missing.clear();
  document_.summary.unread.clear();
  EXPECT_THAT(Ending(), HasSubstr("  Not everything was collected: there may be more errors.\n"));
}

TEST_F(TableFindings, NoneIsSaidInASentence) {
  RemoveFindings();
  document_.instances[1].second.missing.clear();
  EXPECT_THAT(Ending(), StartsWith("Findings\n"
                                   "  No error is set in the 4 error registers that were read.\n"
                                   "\n"
                                   "Summary\n"));
  EXPECT_THAT(Ending(), HasSubstr("  Findings      none\n"));
}

TEST_F(TableFindings, NoneIsNotCertainIfSomethingWasNotRead) {
  RemoveFindings();
  EXPECT_THAT(Ending(), StartsWith("Findings\n"
                                   "  No error is set in the 4 error registers that were read.\n"
                                   "  3 values could not be read: there may be errors.\n"
                                   "\n"
                                   "Missing\n"));
}

TEST_F(TableFindings, AreUnknownWithoutAnErrorRegister) {
  RemoveFindings();
  for (auto& [instance, facts] : document_.instances) {
    for (TRegisterFacts& one : *facts.registers) one.meaning = nullptr;
  }
  EXPECT_THAT(Ending(),
              StartsWith("Findings\n  Unknown: no register was read that the schema describes as one of errors.\n"));
  document_.instances.clear();
  EXPECT_THAT(Ending(), StartsWith("Findings\n  Unknown: no register was read.\n"));
  EXPECT_THAT(Ending(), HasSubstr("  Findings      unknown\n"));
}

TEST_F(TableFindings, MaskedOnesDoNotCount) {
  auto& findings = document_.summary.findings;
  findings.erase(findings.begin(), findings.begin() + 5);
  const std::string text = Ending();
  EXPECT_THAT(text, StartsWith("Findings: none; 1 masked\n  MASKED     Unsupported request"));
  EXPECT_TRUE(text.ends_with("  Findings      none; 1 masked\n"));
}

TEST_F(TableFindings, SayValuesTextsAndWhatIsKnown) {
  auto& findings = document_.summary.findings;
  findings.resize(2);
  findings[0].isKnown = true;
  findings[0].bits = "5:4";
  findings[0].width = 2;
  findings[0].value = 3;
  findings[0].text = "lane 3\x1b";
  findings[1].name.reset();
  findings[1].bits = "63:32";
  findings[1].width = 32;
  findings[1].value = 0xABC;
  const std::string text = Ending();
  EXPECT_THAT(text, HasSubstr("  FATAL      Malformed TLP: lane 3\\x1b (occurred first, known)\n"));
  EXPECT_THAT(text, HasSubstr("             ErrorStatus bits 5:4 of 0x00150000\n"));
  EXPECT_THAT(text, HasSubstr("  ERROR      bits 63:32 = 0xABC (not described)\n"));
}

TEST_F(TableFindings, AFilteredTableLeavesOutWhatIsFine) {
  document_.header.onlyFindings = true;
  document_.instances[1].second.findings.clear();
  document_.instances[1].second.missing[0].how = {EHow::kCompletionCode, 0xCB};
  const std::string text = Table();
  EXPECT_THAT(text, HasSubstr("StatisticData  node0/instance0\n"));
  EXPECT_THAT(text, Not(HasSubstr("StatisticData  node0/instance1\n")));
  EXPECT_THAT(text, HasSubstr("    node0/instance1  FirstErrorPointer  0x2D0118  lost: no answer\n"));
  EXPECT_THAT(text, Not(HasSubstr("absent")));
  EXPECT_THAT(text, HasSubstr("    2  KROSG_VO_PCIIOBRIDGE_StatisticData\n"));
}

TEST_F(TableFindings, ACounterWithFieldsIsACounterForEach) {
  TRegisterMeaning counters;
  counters.role = ERole::kCounter;
  counters.unit = "errors";
  counters.fields = {{{7, 0}, false, "Rank 0", {}}, {{8, 8}, false, "Rank\x1b", {}}, {{16, 16}, true, "Rank 2", {}}};
  TRegisterFacts& facts = document_.instances[0].second.registers->at(6);
  facts.meaning = &counters;
  facts.value = 0x10111;
  facts.fields = DecodeFields(counters, facts.value);
  EXPECT_THAT(Table(132), HasSubstr("0x00010111  Rank 0: 17 errors; Rank\\x1b: 1 errors; Rank 2: 0x01 errors\n"));
}

}  // namespace
}  // namespace tests
