// What the table says about a result besides the properties of its instances.
#include "tests/output/smallserver.h"
#include "tests/support/namespaces.h"

namespace tests {
namespace {

using CollectorProfile::EPath;

using TableOfSmallServer = TSmallServer;

TEST_F(TableOfSmallServer, HasInstancesThenWhatIsWrongThenWhatIsMissingThenTheSummary) {
  EXPECT_EQ(Written(EOutputForm::kTable, document_),
            "SIMULATED: sim:small.toml, not a real service processor\n"
            "\n"
            "KROSG_VO_PCIIOBRIDGE_StatisticData  node0/instance0\n"
            "  InstanceID     KROSG:KROSG_VO_PCIIOBRIDGE_StatisticData:6203:0\n"
            "  ElementName    PCI I/O bridge,0\n"
            "  MachineType    6203\n"
            "  StatisticTime  06:08:56, date unknown\n"
            "  Count          0xABCDEF  0x00000100  (collector 0x00000101)\n"
            "  Log            0xABCDF0  absent\n"
            "\n"
            "KROSG_X_MEMCTL_StatisticData  sp0/instance0\n"
            "  InstanceID     KROSG:KROSG_MEMCTL_StatisticData:6203:0\n"
            "  ElementName    Memory and I/O controller,0\n"
            "  MachineType    6203\n"
            "  StatisticTime  2026-01-31T11:30:05+00:00\n"
            "  First          index 0  0x0000001A3F4C2E40\n"
            "\n"
            "KROSG_X_MEMCTL_StatisticData  sp1/instance0\n"
            "  InstanceID     KROSG:KROSG_MEMCTL_StatisticData:6203:0\n"
            "  ElementName    Memory and I/O controller,0\n"
            "  MachineType    6203\n"
            "  StatisticTime  missing: 1 byte received\n"
            "  First          index 0  missing: 0 bytes received\n"
            "\n"
            "KROSG_DCAPFile  node0/cpu_err\n"
            "  FileName              cpu_err\n"
            "  ErrRawData            12 bytes; incomplete from offset 3 on: 3 bytes received\n"
            "  00000000  0a ff 00 00 00 00 00 00  00 00 00 00              |............|\n"
            "  0000000c\n"
            "  MessageTimestamp      2026-01-31T12:34:56+01:00\n"
            "  SourceNode            1\n"
            "  CreationClassName     KROSG_DCAPFile\n"
            "  LogCreationClassName  KROSG_DCAPFile\n"
            "  LogName               KROSG_DCAPFile\n"
            "  RecordID              0\n"
            "\n"
            "Findings\n"
            "  Unknown: no register was read that the schema describes as one of errors.\n"
            "  3 values could not be read: there may be errors.\n"
            "\n"
            "Missing\n"
            "  KROSG_X_MEMCTL_StatisticData\n"
            "    sp1/instance0    First          index 0  0 bytes received\n"
            "    sp1/instance0    StatisticTime           1 byte received\n"
            "  KROSG_DCAPFile\n"
            "    node0/cpu_err    ErrRawData  offset 3  3 bytes received\n"
            "  KROSG_VO_PCIIOBRIDGE_StatisticData\n"
            "    node0/instance0  Log  0xABCDF0  absent\n"
            "\n"
            "Unread\n"
            "  KROSG_VO_PCIIOBRIDGE_StatisticData\n"
            "    node0/instance1  absent\n"
            "  KROSG_DCAPFile\n"
            "    node0/ioh_err    absent\n"
            "    node0/zyn_err    absent\n"
            "\n"
            "Summary\n"
            "  Source        sim:small.toml (simulated)\n"
            "  Machine type  6203\n"
            "  Labels        rack=7\n"
            "  Instances     4\n"
            "    1  KROSG_VO_PCIIOBRIDGE_StatisticData\n"
            "    2  KROSG_X_MEMCTL_StatisticData\n"
            "    1  KROSG_DCAPFile\n"
            "  Exchanges     15, 8 failed\n"
            "  Elapsed       0.004 s\n"
            "  Result        partial\n"
            "    KROSG_X_MEMCTL_StatisticData\n"
            "      1 of 2 register blocks was too short\n"
            "    KROSG_DCAPFile\n"
            "      1 of 3 capture files is missing or incomplete\n"
            "  Findings      unknown\n");
}

TEST_F(TableOfSmallServer, IsLegibleInFortyColumns) {
  TTableOptions narrow;
  narrow.width = 40;
  const std::string text = Written(EOutputForm::kTable, document_, narrow);
  EXPECT_EQ(text.substr(0, text.find("  ElementName")),
            "SIMULATED: sim:small.toml, not a real\n"
            "service processor\n"
            "\n"
            "KROSG_VO_PCIIOBRIDGE_StatisticData\n"
            "  node0/instance0\n"
            "  InstanceID     KROSG:KROSG_VO_PCIIOBRI\n"
            "                 DGE_StatisticData:6203:\n"
            "                 0\n");
  EXPECT_NE(text.find("  Count          0xABCDEF  0x00000100\n"
                      "                 (collector 0x00000101)\n"),
            std::string::npos)
      << text;
  EXPECT_NE(text.find("    node0/instance0\n"
                      "                    Log  0xABCDF0\n"
                      "                    absent\n"),
            std::string::npos)
      << text;
}

class TableFacts : public TOutputTest {
 protected:
  /// The text of an R8 instance with a property "P" and a time, whose value is `value`.
  std::string Block(const TInstanceFacts& facts, const TCIMDateTime& time = TCIMDateTime(1970, 1, 1, 23, 5, 9, 0, 0)) {
    const auto cimClass =
        Define("KROSG_R", "", {Property("P", TType::kUint8, true), Property("StatisticTime", TType::kDateTime)});
    const auto instance = Make(cimClass, {{"P", Bytes({1, 2})}, {"StatisticTime", TCIMValue(time)}});
    const std::string text = Written(EOutputForm::kTable, TDocument{Header(), {{instance, facts}}, Complete()});
    return text.substr(0, text.find("\n\n") + 1);
  }
  static TInstanceFacts R8Facts() {
    TInstanceFacts facts;
    facts.key = "KROSG_R/node0/instance0";
    facts.origin.emplace().path = EPath::kR8;
    return facts;
  }
  /// The sections of a table without instances between the findings and the summary.
  std::string Sections(const TResultSummary& summary) {
    const std::string text = Written(EOutputForm::kTable, {}, summary);
    const std::size_t start = text.find("\n\n") + 2;
    return text.substr(start, text.find("Summary\n") - start);
  }
  /// A summary without reasons; its plan has KROSG_A on the R8 path and KROSG_B on the JFR path.
  TResultSummary Summary(std::vector<TUnread> unread, std::vector<TExchangeFailure> failed) {
    TResultSummary summary = Partial();
    summary.unread = std::move(unread);
    summary.failed = std::move(failed);
    return summary;
  }
  static TExchangeFailure Failed(std::uint32_t turn, EExchangeKind kind, THow how) {
    TExchangeFailure failure;
    failure.turn = turn;
    failure.kind = kind;
    failure.how = how;
    failure.isPlaced = true;
    return failure;
  }
};

TEST_F(TableFacts, ARegisterHasAllOfItsValues) {
  TInstanceFacts facts = R8Facts();
  TRegisterFacts& narrow = facts.registers.emplace().emplace_back();
  narrow.place = 0x0C0120;
  narrow.isNarrow = true;
  narrow.value = 0x132E1020;
  narrow.upper = 0x76465945;
  narrow.folded = 0x132E1030;
  EXPECT_EQ(Block(facts),
            "KROSG_R  node0/instance0\n"
            "  P              0x0C0120  0x132E1020  (upper 0x76465945, collector 0x132E1030)\n"
            "  StatisticTime  23:05:09, date unknown\n");
}

TEST_F(TableFacts, AValueWithoutFactsIsThatOfTheCollector) {
  EXPECT_NE(Block(R8Facts()).find("  P              1, 2\n"), std::string::npos);
}

TEST_F(TableFacts, OnlyR8TimesHaveNoDate) {
  TInstanceFacts facts = R8Facts();
  facts.origin->path = EPath::kJfr;
  EXPECT_NE(Block(facts).find("  StatisticTime  1970-01-01T23:05:09+00:00\n"), std::string::npos);
  EXPECT_NE(Block(R8Facts(), TCIMDateTime(1970, 1, 1, 300, 0, 0, 0, 0)).find("  StatisticTime  1970-01-01T300:"),
            std::string::npos);
}

TEST_F(TableFacts, EachEndingInWords) {
  TInstanceFacts facts = R8Facts();
  const auto shown = [this, &facts](THow how) {
    facts.missing = {{"P", {}, how}};
    const std::string text = Block(facts);
    const std::size_t start = text.find("  P              ") + 17;
    return text.substr(start, text.find('\n', start) - start);
  };
  EXPECT_EQ(shown({EHow::kCompletionCode, 0xCB}), "absent");
  EXPECT_EQ(shown({EHow::kCompletionCode, 0xC3}), "missing: 0xC3 timeout while processing command");
  EXPECT_EQ(shown({EHow::kLost, 0}), "missing: lost: no answer");
  EXPECT_EQ(shown({EHow::kShort, 13}), "missing: 13 bytes received");
  EXPECT_EQ(shown({EHow::kNotSent, 0}), "missing: not sent: the run was stopped");
  EXPECT_EQ(shown({EHow::kNotRecorded, 0}), "missing: not in the recording");
  EXPECT_EQ(shown({EHow::kAnswered, 0}), "missing: no address answered");
  EXPECT_EQ(shown({EHow::kAnswered, 1}), "missing: 1 address answered");
  EXPECT_EQ(shown({EHow::kAnswered, 2}), "missing: 2 addresses answered");
}

TEST_F(TableFacts, PlacesLineUp) {
  TInstanceFacts facts = R8Facts();
  facts.missing = {{"P", {}, {EHow::kLost, 0}}, {"StatisticTime", {}, {EHow::kLost, 0}}};
  facts.missing[0].where.index = 5;
  facts.missing[1].where.index = 12345;
  EXPECT_EQ(Block(facts),
            "KROSG_R  node0/instance0\n"
            "  P              index 5      missing: lost: no answer\n"
            "  StatisticTime  index 12345  missing: lost: no answer\n");
}

TEST_F(TableFacts, SeveralAddressesAreListed) {
  TInstanceFacts facts = R8Facts();
  facts.missing = {{"P", {}, {EHow::kAnswered, 2}}};
  facts.missing[0].where.addresses = {0x0D0100, 0x0D0108};
  EXPECT_NE(Block(facts).find("  P              0x0D0100, 0x0D0108  missing: 2 addresses answered\n"),
            std::string::npos);
  facts.missing[0].where.addresses->clear();
  EXPECT_NE(Block(facts).find("  P              no address  missing: 2 addresses answered\n"), std::string::npos);
}

TEST_F(TableFacts, AnAreaThatIsOpenIsNeverAbsent) {
  TDocument document = {Header(), {{Capture("0a "), {}}}, Complete()};
  TInstanceFacts& facts = document.instances[0].second;
  facts.missing = {{"ErrRawData", {}, {EHow::kCompletionCode, 0xCB}}};
  facts.missing[0].where.offset = 1;
  EXPECT_NE(Written(EOutputForm::kTable, document).find("1 byte; incomplete from offset 1 on: 0xCB requested"),
            std::string::npos);
}

TEST_F(TableFacts, AnUnplacedInstanceIsNumbered) {
  TInstanceFacts facts;
  facts.key = "KROSG_R/?12";
  EXPECT_EQ(Block(facts).substr(0, 13), "KROSG_R  ?12\n");
}

TEST_F(TableFacts, UnreadInstancesSayWhichExchangesFailed) {
  const TExchangeFailure lost = Failed(0, EExchangeKind::kRegister, {EHow::kLost, 0});
  const TExchangeFailure refused = Failed(0, EExchangeKind::kRegister, {EHow::kCompletionCode, 0xC3});
  const TExchangeFailure cut = Failed(0, EExchangeKind::kRegister, {EHow::kShort, 9});
  TExchangeFailure elsewhere = lost;
  elsewhere.place.number = 1;
  EXPECT_EQ(Sections(Summary({{0, {0, 0}, EUnread::kRegisterUnread}}, {lost, refused, lost, cut, elsewhere})),
            "Unread\n"
            "  KROSG_A\n"
            "    node0/instance0  no register was delivered; 2 x register: lost: no answer;\n"
            "                     register: 0xC3 timeout while processing command; register:\n"
            "                     9 bytes received\n"
            "\n");
}

TEST_F(TableFacts, UnreadBlocksSayHowTheirDotCommandsEnded) {
  TExchangeFailure block = Failed(1, EExchangeKind::kDot, {EHow::kShort, 0});
  block.isPlaced = false;
  block.owner = 2;
  EXPECT_EQ(Sections(Summary({{1, {0, 0}, EUnread::kDiscarded},
                              {1, {1, 0}, EUnread::kBlockUndecodable},
                              {1, {2, 0}, EUnread::kBlockUnread}},
                             {block})),
            "Unread\n"
            "  KROSG_B\n"
            "    sp0/instance0  discarded because another register block has no valid time\n"
            "    sp1/instance0  the register block has no valid time\n"
            "    sp2/instance0  the register block was not received; dot: 0 bytes received\n"
            "\n");
}

TEST_F(TableFacts, UnreadFilesSayWhatFailed) {
  plan_.classes[0].path = EPath::kCapture;
  TExchangeFailure open = Failed(0, EExchangeKind::kOpen, {EHow::kLost, 0});
  EXPECT_EQ(Sections(Summary({{0, {0, 0}, EUnread::kFileUnread}, {0, {1, 2}, EUnread::kFileUnread}}, {open})),
            "Unread\n"
            "  KROSG_A\n"
            "    node0/cpu_err  the file was not read; open: lost: no answer\n"
            "    node1/zyn_err  the file was not read\n"
            "\n");
}

TEST_F(TableFacts, AbsentOnesComeLast) {
  EXPECT_EQ(
      Sections(Summary(
          {{0, {0, 0}, EUnread::kAbsent}, {0, {0, 1}, EUnread::kRegisterUnread}, {0, {0, 2}, EUnread::kAbsent}}, {})),
      "Unread\n"
      "  KROSG_A\n"
      "    node0/instance1  no register was delivered\n"
      "  KROSG_A\n"
      "    node0/instance0  absent\n"
      "    node0/instance2  absent\n"
      "\n");
}

TEST_F(TableFacts, FailuresOnWhichNoInstanceDependsAreListedToo) {
  TExchangeFailure close = Failed(0, EExchangeKind::kClose, {EHow::kCompletionCode, 0xC3});
  close.owner = 1;
  close.repeat = 2;
  TExchangeFailure unplaced = Failed(0, EExchangeKind::kRegister, {EHow::kShort, 9});
  unplaced.isPlaced = false;
  unplaced.address = 0x2D0100;
  EXPECT_EQ(Sections(Summary({}, {close, unplaced})),
            "Other failed exchanges\n"
            "  KROSG_A\n"
            "    node 0  0x2D0100  register: 9 bytes received\n"
            "    node 1            2 x close: 0xC3 timeout while processing command\n"
            "\n");
}

TEST_F(TableFacts, TheSimulatedSourceIsSaidAtOnce) {
  TFlushedSink sink;
  TResultHeader header = Header();
  header.source.simulated = true;
  const auto writer = MakeWriter(EOutputForm::kTable, sink, {});
  writer->Begin(header);
  EXPECT_EQ(sink.Text(), "SIMULATED: lan:bmc0, not a real service processor\n\n");
  EXPECT_EQ(sink.flushedAt.size(), 1U);
}

}  // namespace
}  // namespace tests
