#include "host/change/resultdiff.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "host/change/diffwriters.h"
#include "tests/change/comparison.h"
#include "tests/support/expectfailure.h"

namespace tests {

namespace {

// The differences of two documents of one instance each.
TDifferences OfInstances(const std::string& before, const std::string& after) {
  return Compared(Document({before}), Document({after}));
}

std::string Field(const std::string& bits, const std::string& name, int value, const std::string& text = "") {
  return R"({"bits":")" + bits + R"(","name":)" + name + R"(,"value":)" + std::to_string(value) +
         (text.empty() ? "" : R"(,"text":")" + text + "\"") + "}";
}

// "key property before/after"
std::vector<std::string> Uncompared(const TDifferences& found) {
  std::vector<std::string> texts;
  for (const TUncompared& one : found.uncompared) {
    texts.push_back((one.key.empty() ? one.className : one.key) + " " + one.what + one.bits + " " + NameOf(one.before) +
                    "/" + NameOf(one.after));
  }
  return texts;
}

using TTexts = std::vector<std::string>;

TEST(ResultDiff, FindsNothingInEqualResults) {
  const std::string text = Document({Instance(0, "0x00000001"), CaptureFile("0a ff ")});
  const TDifferences found = Compared(text, text);
  EXPECT_EQ(found.Count(), 0U);
  EXPECT_EQ(StatusOf(found), 0);
}

TEST(ResultDiff, ComparesOnlyValues) {
  // Neither the collector's bytes nor the width nor what was in the upper half.
  const TDifferences found =
      OfInstances(InstanceWith(Register("R", "0x00000001", "", R"(,"upper":"0x00000007")")),
                  InstanceWith(R"("r":{"address":"0x0000A1","width":64,"value":"0x0000000000000001","fields":[]})"));
  EXPECT_EQ(found.Count(), 0U);
  EXPECT_EQ(StatusOf(found), 0);
}

TEST(ResultDiff, NamesFieldsThatWereSetClearedAndChanged) {
  const TDifferences found = OfInstances(
      InstanceWith(Register("R", "0x00000013", Field("0", "\"A\"", 1) + "," + Field("5:4", "\"Speed\"", 1, "slow"))),
      InstanceWith(Register(
          "R", "0x00010023",
          Field("0", "\"A\"", 1) + "," + Field("5:4", "\"Speed\"", 2, "fast") + "," + Field("16", "null", 1))));
  ASSERT_EQ(found.registers.size(), 1U);
  const TRegisterChange& change = found.registers[0];
  EXPECT_EQ(change.key, "KROSG_A/node0/instance0");
  EXPECT_EQ(change.before, 0x13U);
  EXPECT_EQ(change.after, 0x10023U);
  ASSERT_EQ(change.fields.size(), 2U);
  EXPECT_EQ(change.fields[0].name, "Speed");
  EXPECT_EQ(change.fields[0].before, 1U);
  EXPECT_EQ(change.fields[0].after, 2U);
  EXPECT_EQ(change.fields[0].beforeText, "slow");
  EXPECT_EQ(change.fields[0].afterText, "fast");
  EXPECT_EQ(change.fields[1].bits, "16");
  EXPECT_TRUE(change.fields[1].IsSet());
  EXPECT_FALSE(change.fields[1].name);
  EXPECT_EQ(StatusOf(found), 1);
}

TEST(ResultDiff, DecodesEachSideWithItsOwnFields) {
  // AFTER does not describe bit 4 anymore, and numbers from the other end.
  const TDifferences found =
      OfInstances(InstanceWith(Register("R", "0x00000011", Field("0", "\"A\"", 1) + "," + Field("4", "\"Old\"", 1))),
                  InstanceWith(Register("R", "0x00000001", Field("31", "\"New\"", 1), R"(,"numbering":"msb0")")));
  ASSERT_EQ(found.registers.size(), 1U);
  ASSERT_EQ(found.registers[0].fields.size(), 1U);  // bit 0 is set on both sides, whatever it is called
  EXPECT_EQ(found.registers[0].fields[0].name, "Old");
  EXPECT_EQ(found.registers[0].fields[0].bits, "4");
  EXPECT_TRUE(found.registers[0].fields[0].IsCleared());
}

TEST(ResultDiff, ReportsACounterOnce) {
  const std::string counter = R"(,"role":"counter","unit":"errors")";
  const TDifferences found = OfInstances(
      InstanceWith(Register("Up", "0x00000005", "", counter) + "," + Register("Down", "0x00000005", "", counter)),
      InstanceWith(Register("Up", "0x00000009", "", counter) + "," + Register("Down", "0x00000004", "", counter)));
  EXPECT_TRUE(found.registers.empty());
  ASSERT_EQ(found.counters.size(), 2U);
  EXPECT_EQ(found.counters[0].unit, "errors");
  EXPECT_TRUE(found.counters[0].HasDifference());
  EXPECT_EQ(found.counters[0].after - found.counters[0].before, 4U);
  EXPECT_TRUE(found.counters[0].bits.empty());
  EXPECT_FALSE(found.counters[1].HasDifference());
}

TEST(ResultDiff, CountsByField) {
  const std::string counter = R"(,"role":"counter")";
  const TDifferences found = OfInstances(
      InstanceWith(Register("C", "0x00000000", "", counter)),
      InstanceWith(Register(
          "C", "0x80020003",
          Field("15:0", "\"Low\"", 3) + "," + Field("30:16", "\"High\"", 2) + "," + Field("31", "null", 1), counter)));
  ASSERT_EQ(found.counters.size(), 2U);
  EXPECT_EQ(found.counters[0].name, "Low");
  EXPECT_EQ(found.counters[0].after, 3U);
  EXPECT_EQ(found.counters[1].bits, "30:16");
  ASSERT_EQ(found.registers.size(), 1U);  // a bit that no field describes does not count anything
  ASSERT_EQ(found.registers[0].fields.size(), 1U);
  EXPECT_EQ(found.registers[0].fields[0].bits, "31");
}

TEST(ResultDiff, TellsWhatHasGoneFromWhatWasNotRead) {
  const std::string absent = R"({"property":"R","address":"0x0000A0","completion_code":203})";
  const std::string failed = R"({"property":"R","address":"0x0000A0","completion_code":195})";
  const std::string value = InstanceWith(Register("R", "0x00000001"));

  const TDifferences gone = OfInstances(value, InstanceWith("", absent));
  ASSERT_EQ(gone.missing.size(), 1U);
  EXPECT_EQ(gone.missing[0].property, "R");
  EXPECT_FALSE(gone.missing[0].hasAppeared);
  const TDifferences back = OfInstances(InstanceWith("", absent), value);
  ASSERT_EQ(back.missing.size(), 1U);
  EXPECT_TRUE(back.missing[0].hasAppeared);

  const TDifferences same = OfInstances(InstanceWith("", absent), InstanceWith("", absent));
  EXPECT_EQ(StatusOf(same), 0);
  const TDifferences unread = OfInstances(value, InstanceWith("", failed));
  EXPECT_EQ(Uncompared(unread), TTexts{"KROSG_A/node0/instance0 R /unread"});
  EXPECT_EQ(StatusOf(unread), 3);
  EXPECT_EQ(Uncompared(OfInstances(InstanceWith("", failed), InstanceWith("", failed))),
            TTexts{"KROSG_A/node0/instance0 R unread/unread"});
  EXPECT_EQ(Uncompared(OfInstances(InstanceWith("", absent), InstanceWith("", failed))),
            TTexts{"KROSG_A/node0/instance0 R /unread"});
}

TEST(ResultDiff, ComparesWhetherThereIsATime) {
  const TDifferences found =
      OfInstances(InstanceWith(""), InstanceWith("", R"({"property":"StatisticTime","completion_code":203})"));
  ASSERT_EQ(found.missing.size(), 1U);
  EXPECT_EQ(found.missing[0].property, "StatisticTime");
}

TEST(ResultDiff, CannotCompareARegisterThatOneSchemaLacks) {
  EXPECT_EQ(
      Uncompared(OfInstances(InstanceWith(Register("R", "0x00000001")), InstanceWith(Register("S", "0x00000001")))),
      (TTexts{"KROSG_A/node0/instance0 S not-planned/", "KROSG_A/node0/instance0 R /not-planned"}));
}

TEST(ResultDiff, ComparesKeys) {
  const std::string both = Instance(0, "0x00000001");
  const TDifferences found = Compared(
      Document({both, Instance(1, "0x00000001")}),
      Document({both, Instance(2, "0x00000001")}, kHeader, SummaryWith(Unread("KROSG_A/node0/instance1", "absent"))));
  ASSERT_EQ(found.keys.size(), 2U);
  EXPECT_EQ(found.keys[0].key, "KROSG_A/node0/instance2");
  EXPECT_TRUE(found.keys[0].hasAppeared);
  EXPECT_FALSE(found.keys[0].isAbsent);
  EXPECT_EQ(found.keys[1].key, "KROSG_A/node0/instance1");
  EXPECT_FALSE(found.keys[1].hasAppeared);
  EXPECT_TRUE(found.keys[1].isAbsent);
}

TEST(ResultDiff, FindsKeysWithoutRegardToTheCaseOfTheirClass) {
  std::string other = Instance(0, "0x00000001");
  for (std::size_t at = other.find("KROSG_A"); at != std::string::npos; at = other.find("KROSG_A"))
    other.replace(at, 7, "Krosg_a");
  EXPECT_EQ(StatusOf(OfInstances(Instance(0, "0x00000001"), other)), 0);
}

TEST(ResultDiff, CannotCompareInstancesThatWereNotRead) {
  const std::string key = "KROSG_A/node0/instance0";
  const std::string delivered = Document({Instance(0, "0x00000001")});
  const auto unread = [&key](const std::string& code) { return Document({}, kHeader, SummaryWith(Unread(key, code))); };
  EXPECT_EQ(Uncompared(Compared(delivered, unread("register-unread"))), TTexts{key + "  /unread"});
  EXPECT_EQ(Uncompared(Compared(unread("register-unread"), unread("block-unread"))), TTexts{key + "  unread/unread"});
  EXPECT_EQ(Uncompared(Compared(unread("absent"), unread("discarded"))), TTexts{key + "  /unread"});
  EXPECT_EQ(Uncompared(Compared(unread("file-unread"), unread("absent"))), TTexts{key + "  unread/"});
  EXPECT_EQ(StatusOf(Compared(unread("absent"), unread("absent"))), 0);
}

TEST(ResultDiff, CannotCompareInstancesAtUnknownPlaces) {
  const TDifferences found = OfInstances(Instance(0, "0x00000001"), InstanceWith("", "", "KROSG_A/?1"));
  EXPECT_EQ(Uncompared(found), TTexts{"KROSG_A  /unknown-place"});
  EXPECT_TRUE(found.keys.empty());
  EXPECT_EQ(StatusOf(found), 3);
}

TEST(ResultDiff, NamesClassesThatOneSideDidNotAskFor) {
  const TDifferences found = Compared(Document({Instance(0, "0x00000001")}), Document({CaptureFile("0a")}));
  ASSERT_EQ(found.unasked.size(), 2U);
  EXPECT_EQ(found.unasked[0].className, "KROSG_A");
  EXPECT_EQ(found.unasked[0].askedFor, ESide::kBefore);
  EXPECT_EQ(found.unasked[1].className, "D");
  EXPECT_EQ(found.unasked[1].askedFor, ESide::kAfter);
  EXPECT_EQ(StatusOf(found), 0);  // what both were asked for is the same
}

TEST(ResultDiff, TakesASecondCollectionForAnotherClass) {
  const std::string second = InstanceWith(Register("R", "0x00000001"), "", "KROSG_A/node0/instance0#2");
  const TDifferences found =
      Compared(Document({Instance(0, "0x00000001")}), Document({Instance(0, "0x00000001"), second}));
  ASSERT_EQ(found.unasked.size(), 1U);
  EXPECT_EQ(found.unasked[0].className, "KROSG_A#2");
  EXPECT_TRUE(found.keys.empty());
}

TEST(ResultDiff, CannotCompareClassesThatWereNotCollected) {
  for (const std::string code : {"not-collected", "not-served"}) {
    const std::string reason = R"({"code":")" + code + R"(","class":"KROSG_A","count":1,"message":"m"})";
    EXPECT_EQ(
        Uncompared(Compared(Document({Instance(0, "0x00000001")}), Document({}, kHeader, SummaryWith("", reason)))),
        TTexts{"KROSG_A  /not-collected"})
        << code;
  }
}

TEST(ResultDiff, CannotCompareWithARunThatReachedNothing) {
  std::string summary = kSummary;
  summary.replace(summary.find("\"complete\""), 10, "\"unreachable\",\"message\":\"m\"");
  const TDifferences found = Compared(Document({Instance(0, "0x00000001")}), Document({}, kHeader, summary));
  EXPECT_EQ(Uncompared(found), TTexts{"KROSG_A  /not-collected"});
  EXPECT_TRUE(found.unasked.empty());
}

TEST(ResultDiff, ComparesFiles) {
  const TDifferences text = OfInstances(CaptureFile("61 0a 62 0a "), CaptureFile("61 0a 63 0a "));
  ASSERT_EQ(text.files.size(), 1U);
  EXPECT_TRUE(text.files[0].isText);
  ASSERT_EQ(text.files[0].lines.size(), 2U);
  EXPECT_EQ(text.files[0].lines[0].text, "b");
  EXPECT_EQ(text.files[0].lines[1].text, "c");
  const TDifferences bytes = OfInstances(CaptureFile("00 01 "), CaptureFile("00 02 03 "));
  ASSERT_EQ(bytes.files.size(), 1U);
  EXPECT_FALSE(bytes.files[0].isText);
  EXPECT_EQ(bytes.files[0].firstDifference, 1U);
  EXPECT_EQ(bytes.files[0].afterSize, 3U);
  const std::string cut = R"({"property":"ErrRawData","offset":1,"completion_code":195})";
  EXPECT_EQ(Uncompared(OfInstances(CaptureFile("00 01 "), CaptureFile("00 ", cut))),
            TTexts{"D/node0/cpu_err ErrRawData /unread"});
}

TEST(ResultDiff, ComparesMachineTypeAndSchema) {
  std::string other = kHeader;
  other.replace(other.find("6203"), 4, "4411");
  other.replace(other.find("\"ab\""), 4, "\"cd\"");
  const TDifferences found = Compared(Document({}), Document({}, other));
  EXPECT_TRUE(found.HasOtherMachineType());
  EXPECT_TRUE(found.HasOtherSchema());
  EXPECT_EQ(found.Count(), 2U);
}

TEST(ResultDiff, CannotCompareWhatFollowsACut) {
  const std::string whole = Document({Instance(0, "0x00000001"), Instance(1, "0x00000001")});
  const std::string cut =
      whole.substr(0, whole.find(",{\"kind\":\"instance\",\"class\":\"KROSG_A\",\"key\":\"KROSG_A/node0/instance1"));
  const TDifferences found = Compared(whole, cut);
  EXPECT_EQ(Uncompared(found), TTexts{"  /cut"});
  EXPECT_EQ(StatusOf(found), 3);
  EXPECT_FALSE(found.HasOtherSchema());
  const TDifferences lines = Compared(whole, Instance(0, "0x00000001").insert(36, R"(,"run_id":"x","labels":{})"));
  EXPECT_EQ(Uncompared(lines), TTexts{"  /cut"});
  EXPECT_FALSE(lines.HasOtherSchema());
}

TEST(ResultDiff, RefusesAFilteredResult) {
  const std::string filtered = Document({}, kHeader + R"("filtered":true,)");
  EXPECT_EQ(
      MessageOf([&filtered] { Compared(filtered, filtered); }),
      "before.json has only findings and what belongs to them, so it cannot be compared; compare a result that was "
      "collected without --only-findings, or its recording");
}

TEST(ResultDiff, RefusesAKeyThatOccursTwice) {
  const std::string twice = Document({Instance(0, "0x00000001"), Instance(0, "0x00000001")});
  EXPECT_EQ(MessageOf([&twice] { Compared(twice, twice); }),
            "before.json: found a second instance with the key \"KROSG_A/node0/instance0\", expected each key once");
}

// A finding of the register R of the instance 0.
std::string Finding(const std::string& bits, const std::string& severity, bool isMasked,
                    const std::string& unknown = "") {
  return R"({"key":"KROSG_A/node0/instance0","class":"KROSG_A","origin":{"path":"r8","node":0,"chip":0,"instance":0},)"
         R"("register":"R","bits":")" +
         bits + R"(","name":"N","value":1,"register_value":"0x00000001","severity":")" + severity + R"(","masked":)" +
         (isMasked ? "true" : "false") + R"(,"first":false,"known":false,"evidence":{},"unknown":[)" + unknown + "]}";
}

TDifferences OfFindings(const std::string& before, const std::string& after) {
  const std::string instance = InstanceWith(Register("R", "0x00000001"));
  return Compared(Document({instance}, kHeader, SummaryWith("", "", before)),
                  Document({instance}, kHeader, SummaryWith("", "", after)));
}

TEST(ResultDiff, ComparesFindingsByKeyRegisterAndBits) {
  const TDifferences found = OfFindings(Finding("0", "error", false) + "," + Finding("1", "error", false),
                                        Finding("1", "fatal", false) + "," + Finding("2", "error", true));
  ASSERT_EQ(found.findings.size(), 3U);
  EXPECT_EQ(found.findings[0].before->severity, ESeverity::kError);
  EXPECT_EQ(found.findings[0].after->severity, ESeverity::kFatal);
  EXPECT_FALSE(found.findings[1].before);
  EXPECT_EQ(found.findings[1].after->bits, "2");
  EXPECT_FALSE(found.findings[2].after);
  EXPECT_EQ(found.findings[2].before->bits, "0");
}

TEST(ResultDiff, DoesNotCompareAJudgementThatDependsOnWhatWasNotRead) {
  const TDifferences found = OfFindings(Finding("1", "error", true), Finding("1", "error", false, "\"Mask\""));
  EXPECT_TRUE(found.findings.empty());
  EXPECT_EQ(Uncompared(found), TTexts{"KROSG_A/node0/instance0 R1 /unknown-register"});
}

TEST(ResultDiff, DoesNotTakeAFindingForGoneIfItsRegisterWasNotRead) {
  const std::string failed = R"({"property":"R","address":"0x0000A0","completion_code":195})";
  const std::string before =
      Document({InstanceWith(Register("R", "0x00000001"))}, kHeader, SummaryWith("", "", Finding("1", "error", false)));
  EXPECT_TRUE(Compared(before, Document({InstanceWith("", failed)})).findings.empty());
  EXPECT_TRUE(Compared(before, Document({CaptureFile("00")})).findings.empty());
  EXPECT_EQ(Compared(before, Document({InstanceWith(Register("R", "0x00000000"))})).findings.size(), 1U);
  const std::string absent = SummaryWith(Unread("KROSG_A/node0/instance0", "absent"));
  EXPECT_EQ(Compared(before, Document({}, kHeader, absent)).findings.size(), 1U);
}

TEST(ResultDiff, ComparesInstancesInAnyOrder) {
  const std::vector<std::string> instances = {Instance(0, "0x00000001"), Instance(1, "0x00000002"),
                                              Instance(2, "0x00000003")};
  const std::vector<std::string> other = {Instance(2, "0x00000003"), Instance(0, "0x00000001"),
                                          Instance(1, "0x00000004")};
  const TDifferences found = Compared(Document(instances), Document(other));
  ASSERT_EQ(found.registers.size(), 1U);
  EXPECT_EQ(found.registers[0].key, "KROSG_A/node0/instance1");
  EXPECT_EQ(found.Count(), 1U);
}

}  // namespace

}  // namespace tests
