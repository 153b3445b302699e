#include "host/readback/resultreader.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "tests/readback/resulttext.h"
#include "tests/support/expectfailure.h"

namespace tests {

namespace {

std::vector<std::string> KeysOf(TResultReader& reader) {
  std::vector<std::string> keys;
  reader.ForEach([&keys](const TReadInstance& instance, const TJsonPlace&) { keys.push_back(instance.facts.key); });
  return keys;
}

std::string Line(std::string instance) {
  instance.insert(instance.find(",\"key\""), R"(,"run_id":")" + kRunId + R"(","labels":{"rack":"r1"})");
  return instance + "\n";
}

std::string SummaryLine() {
  return R"({"kind":"summary","run_id":")" + kRunId + R"(","labels":{"rack":"r1"},)" + kHeader + kSummary + "}\n";
}

// The only instance of a document.
TReadInstance One(const std::string& text) {
  TResultReader reader = ReadText(Document({text}));
  TReadInstance found;
  reader.ForEach([&found](const TReadInstance& instance, const TJsonPlace&) { found = instance; });
  return found;
}

// The diagnostic without the line and its caret.
std::string Refusal(const std::string& text) {
  const std::string message = MessageOf([&text] { ReadText(text); });
  return message.substr(0, message.find('\n'));
}

TEST(ResultReader, ReadsWhatIsBesideTheInstances) {
  const TReadResult result = ReadText(Document({Instance(0, "0x00000001")})).Result();
  EXPECT_EQ(result.header.run.id, kRunId);
  EXPECT_EQ(result.header.run.started, "2026-01-31T12:34:56.789+01:00");
  EXPECT_EQ(result.header.run.labels.at("rack"), "r1");
  EXPECT_EQ(result.header.source.sp, std::vector<std::string>{"lan:root@10.0.0.1"});
  EXPECT_EQ(result.header.source.serial, "S1");
  EXPECT_EQ(result.header.machineType, "6203");
  EXPECT_EQ(result.header.plugin.version, "1.2");
  EXPECT_EQ(result.header.schema.sha256, "ab");
  EXPECT_EQ(result.status, EResultStatus::kComplete);
  EXPECT_EQ(result.exchanges, 3U);
  EXPECT_EQ(result.elapsedMs, 12);
  EXPECT_EQ(result.instances, 1U);
  EXPECT_FALSE(result.isCut);
}

TEST(ResultReader, ReadsMembersInAnyOrder) {
  TResultReader reader = ReadText("{" + kSummary + ",\"instances\":[" + Instance(0, "0x00000001") + "]," + kHeader +
                                  "\"kind\":\"instancecollection\"}");
  EXPECT_EQ(KeysOf(reader), std::vector<std::string>{"KROSG_A/node0/instance0"});
  EXPECT_EQ(reader.Result().header.machineType, "6203");
}

TEST(ResultReader, ReadsLines) {
  TResultReader reader = ReadText(Line(Instance(0, "0x00000001")) + Line(Instance(1, "0x00000002")) + SummaryLine());
  EXPECT_EQ(KeysOf(reader), (std::vector<std::string>{"KROSG_A/node0/instance0", "KROSG_A/node0/instance1"}));
  EXPECT_EQ(KeysOf(reader).size(), 2U);  // as often as needed
  EXPECT_EQ(reader.Result().header.machineType, "6203");
  EXPECT_EQ(ReadText(SummaryLine()).Result().instances, 0U);
}

TEST(ResultReader, ReadsAnInstance) {
  const TReadInstance one = One(
      R"({"kind":"instance","class":"KROSG_A","key":"KROSG_A/node1/instance2#2","origin":{"path":"r8","node":1,)"
      R"("chip":3,"instance":2,"time_raw":"69 7d e8 2d"},"incomplete":true,"missing":[)"
      R"({"property":"A","address":"0x0000A0","completion_code":203},{"property":"B","addresses":["0x000001","0x000002"],)"
      R"("answered":2},{"property":"StatisticTime","lost":true}],"properties":{"ElementName":"x","Status":[0,255,null]},)"
      R"("registers":{"Status":{"address":"0x00A0B0","width":32,"value":"0x80000001","role":"errors","numbering":"msb0",)"
      R"("upper":"0x00000002","folded":"0x00000003","fields":[{"bits":"31","name":"Parity","value":1,"text":"bad"},)"
      R"({"bits":"0:3","name":null,"value":8}]}}})");
  EXPECT_EQ(one.className, "KROSG_A");
  EXPECT_EQ(one.facts.origin->owner, 1);
  EXPECT_EQ(one.facts.origin->chip, 3);
  EXPECT_EQ(one.facts.origin->timeRaw, "69 7d e8 2d");
  ASSERT_EQ(one.facts.missing.size(), 3U);
  EXPECT_EQ(one.facts.missing[0].where.address, 0xA0U);
  EXPECT_EQ(one.facts.missing[0].how, (THow{EHow::kCompletionCode, 203}));
  EXPECT_EQ(one.facts.missing[1].where.addresses, (std::vector<std::uint32_t>{1, 2}));
  EXPECT_EQ(one.facts.missing[1].how, (THow{EHow::kAnswered, 2}));
  EXPECT_EQ(one.facts.missing[2].how, (THow{EHow::kLost, 0}));
  ASSERT_EQ(one.properties.size(), 2U);
  EXPECT_EQ(one.properties[1].value.ToString(10), "{0, 255, }");
  ASSERT_EQ(one.registers->size(), 1U);
  const TReadRegister& status = one.registers->front();
  EXPECT_EQ(status.place, 0xA0B0U);
  EXPECT_EQ(status.value, 0x80000001U);
  EXPECT_EQ(status.role, ERole::kErrors);
  EXPECT_EQ(status.upper, 2U);
  EXPECT_EQ(status.folded, 3U);
  ASSERT_EQ(status.fields.size(), 2U);
  EXPECT_EQ(status.fields[0].bits, (TBits{0, 0}));  // msb0: bit 31 is the least significant
  EXPECT_EQ(status.fields[0].name, "Parity");
  EXPECT_EQ(status.fields[0].text, "bad");
  EXPECT_EQ(status.fields[1].bits, (TBits{31, 28}));
  EXPECT_FALSE(status.fields[1].name);
}

TEST(ResultReader, ReadsARegisterOfABlock) {
  const TReadInstance one = One(
      R"({"kind":"instance","class":"KROSG_B","key":"KROSG_B/sp1/instance0","origin":{"path":"jfr",)"
      R"("service_processor":1,"instance":0},"properties":{"Count":[1]},"registers":{"Count":{"index":84,"width":64,)"
      R"("value":"0x0000001100000000","role":"counter","unit":"errors","identification":"0B 00 54","fields":[)"
      R"({"bits":"47:0","name":"n","value":"0x0000001100000000"}]}}})");
  const TReadRegister& count = one.registers->front();
  EXPECT_TRUE(count.isIndex);
  EXPECT_EQ(count.place, 84U);
  EXPECT_EQ(count.unit, "errors");
  EXPECT_EQ(count.identification, (std::array<std::uint8_t, 3>{0x0B, 0, 0x54}));
  EXPECT_EQ(count.fields[0].bits, (TBits{47, 0}));
  EXPECT_EQ(count.fields[0].value, 0x1100000000U);
}

TEST(ResultReader, ReadsACaptureFile) {
  const TReadInstance one =
      One(R"({"kind":"instance","class":"KROSG_DCAPFile","key":"KROSG_DCAPFile/node0/cpu_err","origin":{"path":"ffdc",)"
          R"("node":0},"file":{"area":"cpu_err","reported_size":-1,"received":2},"incomplete":true,"missing":[)"
          R"({"property":"ErrRawData","offset":2,"short":1}],"properties":{"ErrRawData":"0a ff "}})");
  EXPECT_EQ(one.facts.file->area, "cpu_err");
  EXPECT_EQ(one.facts.file->reportedSize, -1);
  EXPECT_EQ(one.facts.file->received, 2U);
  EXPECT_EQ(one.facts.missing[0].where.offset, 2U);
  EXPECT_FALSE(one.registers);
}

TEST(ResultReader, GivesValuesTheTypesThatTheirTextSuggests) {
  const TReadInstance one =
      One(R"({"kind":"instance","class":"A","key":"A/?1","properties":{"a":"20260131123456.000000+060",)"
          R"("b":"20261399123456.000000+000","c":-5,"d":300,"e":[1,300],"f":[1,-1],"g":[1,1.5],"h":["x",null],"i":[],)"
          R"("j":true,"k":null,"l":"20260131123456.000000-000"}})");
  using TType = TCIMValue::TCIMType;
  std::vector<TType::ECIMType> types;
  for (const TReadProperty& property : one.properties) types.push_back(property.value.GetType().GetCode());
  EXPECT_EQ(types, (std::vector<TType::ECIMType>{TType::kDateTime, TType::kDateTime, TType::kSint64, TType::kUint64,
                                                 TType::kUint64, TType::kSint64, TType::kReal64, TType::kString,
                                                 TType::kUint8, TType::kBoolean, TType::kNone, TType::kString}));
}

TEST(ResultReader, KeepsOnlyCaptureBytesForAComparison) {
  TResultReader reader =
      ReadText(Document({Instance(0, "0x00000001"),
                         R"({"kind":"instance","class":"D","key":"D/node0/cpu_err","origin":)"
                         R"({"path":"ffdc","node":0},"properties":{"RecordID":"0","ErrRawData":"0a"}})"}),
               EReadDetail::kCompared);
  std::vector<std::string> names;
  reader.ForEach([&names](const TReadInstance& instance, const TJsonPlace&) {
    for (const TReadProperty& property : instance.properties) names.push_back(property.name);
  });
  EXPECT_EQ(names, std::vector<std::string>{"ErrRawData"});
}

TEST(ResultReader, ReadsReasonsFailuresAndWhatIsUnread) {
  const std::string summary =
      R"("status":"partial","exit_status":3,"message":"m","reasons":[{"code":"register-unread","class":"KROSG_A",)"
      R"("count":2,"message":"n"},{"code":"stopped","count":1,"message":"o"}],"exchanges":{"total":9,"failed":[)"
      R"({"class":"KROSG_A","key":"KROSG_A/node0/instance1","property":"Status","address":"0x00A0B0","node":0,)"
      R"("kind":"register","completion_code":195},{"class":"KROSG_B","service_processor":2,"kind":"dot","lost":true}]},)"
      R"("unread":[{"class":"KROSG_A","key":"KROSG_A/node0/instance1","origin":{"path":"r8","node":0,"chip":0,)"
      R"("instance":1},"code":"register-unread"}],"filtered":true,)" +
      kSummary.substr(kSummary.find("\"run\""));
  const TReadResult result = ReadText(Document({}, kHeader, summary)).Result();
  EXPECT_EQ(result.status, EResultStatus::kPartial);
  EXPECT_EQ(result.message, "m");
  ASSERT_EQ(result.reasons.size(), 2U);
  EXPECT_EQ(result.reasons[0].code, EReason::kRegisterUnread);
  EXPECT_EQ(result.reasons[0].count, 2U);
  EXPECT_TRUE(result.reasons[1].className.empty());
  ASSERT_EQ(result.failed.size(), 2U);
  EXPECT_EQ(result.failed[0].how, (THow{EHow::kCompletionCode, 195}));
  EXPECT_EQ(result.failed[1].kind, EExchangeKind::kDot);
  EXPECT_EQ(result.failed[1].owner, 2);
  ASSERT_EQ(result.unread.size(), 1U);
  EXPECT_EQ(result.unread[0].code, EUnread::kRegisterUnread);
  EXPECT_TRUE(result.isFiltered);
}

TEST(ResultReader, ReadsFindings) {
  const std::string finding =
      R"({"key":"KROSG_A/node0/instance0","class":"KROSG_A","origin":{"path":"r8","node":0,"chip":0,"instance":0},)"
      R"("register":"Status","bits":"16","name":"Timeout","value":1,"text":"t","register_value":"0x00010000",)"
      R"("severity":"fatal","masked":false,"first":true,"known":false,"evidence":{"Log":"0x00000002","Address":null},)"
      R"("unknown":["Mask"]})";
  std::string summary = kSummary;
  summary.insert(summary.find("\"findings\":[") + 12, finding);
  const TReadResult result = ReadText(Document({}, kHeader, summary)).Result();
  ASSERT_EQ(result.findings.size(), 1U);
  const TReadFinding& read = result.findings[0];
  EXPECT_EQ(read.registerName, "Status");
  EXPECT_EQ(read.bits, "16");
  EXPECT_EQ(read.name, "Timeout");
  EXPECT_EQ(read.severity, ESeverity::kFatal);
  EXPECT_TRUE(read.isFirst);
  EXPECT_TRUE(read.isNarrow);
  ASSERT_EQ(read.evidence.size(), 2U);
  EXPECT_EQ(read.evidence[0].value, 2U);
  EXPECT_FALSE(read.evidence[1].value);
  EXPECT_EQ(read.unknown, std::vector<std::string>{"Mask"});
}

TEST(ResultReader, NamesWhatIsWrongAtItsPlace) {
  std::string text = Document({Instance(0, "0x00000001")});
  const auto with = [&text](const std::string& part, const std::string& other) {
    std::string changed = text;
    return changed.replace(changed.find(part), part.size(), other);
  };
  EXPECT_EQ(Refusal(with("\"width\":32", "\"width\":33")), "r.json:3:208: error: found 33, expected 32 or 64");
  EXPECT_EQ(Refusal(with("\"0x00000001\"", "\"0x0000001\"")),
            "r.json:3:219: error: found \"0x0000001\", expected 0x and 8 or 16 digits from 0 to 9 and A to F");
  EXPECT_EQ(Refusal(with("\"0x00000001\"", "\"0x0000000000000001\"")),
            "r.json:3:178: error: found a value of 16 digits, expected 8 by \"width\"");
  EXPECT_EQ(Refusal(with("\"node\":0,", "")), "r.json:3:79: error: found no \"node\", expected it in an origin");
  EXPECT_EQ(Refusal(with("node0/instance0", "nod0/instance0")),
            "r.json:3:44: error: found \"KROSG_A/nod0/instance0\", expected a key such as CLASS/node0/instance0");
  EXPECT_EQ(
      Refusal(with("\"class\":\"KROSG_A\"", "\"class\":\"KROSG_B\"")),
      "r.json:3:1: error: found the key \"KROSG_A/node0/instance0\" of an instance of \"KROSG_B\", expected a key "
      "that begins with the class");
  EXPECT_EQ(Refusal(with("\"complete\"", "\"completed\"")),
            "r.json:4:12: error: found \"completed\", expected one of complete, partial, unreachable, failed; did you "
            "mean \"complete\"?");
  EXPECT_EQ(Refusal(with("\"elapsed_ms\":12,", "")),
            "r.json:4:120: error: found no \"elapsed_ms\", expected it in a run");
  EXPECT_EQ(Refusal(with("[1,2,3]", "[1,\"a\"]")),
            "r.json:3:150: error: found values of different types in an array, expected one type");
  EXPECT_EQ(Refusal(with("[1,2,3]", "{}")),
            "r.json:3:147: error: found an object, expected a string, number, boolean, null or an array of them");
  EXPECT_EQ(Refusal(text + "{}"), "r.json:5:1: error: found more text, expected the end of the result");
}

TEST(ResultReader, RefusesBitsOutsideTheRegister) {
  std::string text = Document({Instance(0, "0x00000001")});
  for (const std::string bits : {"32", "3:4", "", "1:", "100", "a"}) {
    std::string changed = text;
    changed.replace(changed.find("\"fields\":[]"), 11, R"("fields":[{"bits":")" + bits + R"(","name":"x","value":1}])");
    EXPECT_NE(Refusal(changed).find("expected N or HIGH:LOW inside 32 bits"), std::string::npos) << bits;
  }
}

TEST(ResultReader, RefusesVersion1WithAHint) {
  const std::string hint =
      "found a result of version 1, expected version 2; if the run was recorded, its recording can be read instead";
  EXPECT_EQ(Refusal(R"({"kind":"instancecollection","machine_type":"6203","instances":[]})"),
            "r.json:1:1: error: " + hint);
  EXPECT_EQ(Refusal(R"({"kind":"instance","class":"A","properties":{}})"), "r.json:1:1: error: " + hint);
  EXPECT_EQ(Refusal(R"({"kind":"instancecollection","format_version":1})"), "r.json:1:47: error: " + hint);
  EXPECT_EQ(Refusal(R"({"kind":"instancecollection","format_version":3})"),
            "r.json:1:47: error: found version 3, expected version 2, which this velhost reads");
}

TEST(ResultReader, RefusesOtherKinds) {
  EXPECT_EQ(Refusal(R"({"kind":"plan","format_version":2})"),
            "r.json:1:1: error: found the kind \"plan\", expected a result");
  EXPECT_EQ(Refusal("{}"), "r.json:1:1: error: found an object without \"kind\", expected a result");
  EXPECT_EQ(Refusal("[]"), "r.json:1:1: error: found an array, expected a result, which begins with {");
  EXPECT_EQ(Refusal(R"({"format":"velhost-recording","version":2})"),
            "r.json:1:1: error: found a recording, expected a result");
  EXPECT_EQ(Refusal(""), "r.json:1:1: error: found the end of the text, expected a result, which begins with {");
}

TEST(ResultReader, RefusesLinesOfTwoRuns) {
  std::string other = Line(Instance(1, "0x00000002"));
  other.replace(other.find(kRunId), 2, "3c");
  EXPECT_NE(Refusal(Line(Instance(0, "0x00000001")) + other).find("r.json:2:1: error: found a line of the run \"3c"),
            std::string::npos);
  EXPECT_EQ(Refusal(SummaryLine() + SummaryLine()),
            "r.json:2:1: error: found more text, expected the end of the result");
}

TEST(ResultReader, ReadsADocumentThatWasCutUpToItsLastWholeInstance) {
  const std::vector<std::string> instances = {Instance(0, "0x00000001"), Instance(1, "0x00000002")};
  const std::string text = Document(instances);
  const std::size_t first = text.find(instances[0]) + instances[0].size();
  const std::size_t second = text.find(instances[1]) + instances[1].size();
  for (std::size_t size = 50; size < text.size() - 2; ++size) {
    TResultReader reader = ReadText(text.substr(0, size));
    const std::size_t whole = (size >= first ? 1U : 0U) + (size >= second ? 1U : 0U);
    EXPECT_TRUE(reader.Result().isCut) << size;
    EXPECT_EQ(KeysOf(reader).size(), whole) << size;
    EXPECT_EQ(reader.Result().status, EResultStatus::kFailed);
    EXPECT_EQ(reader.Result().exitStatus, 65);
  }
  const TResultReader cut = ReadText(text.substr(0, second));
  EXPECT_EQ(cut.Result().message, "the result was cut after 2 instances");
  EXPECT_EQ(
      FormatDiagnostic(*cut.CutWarning()).substr(0, 104),
      "r.json:3:492: warning: the result was cut here; it is read up to its last whole instance, 2 instances\n  ");
}

TEST(ResultReader, ReadsLinesThatWereCut) {
  const std::string lines = Line(Instance(0, "0x00000001")) + Line(Instance(1, "0x00000002"));
  TResultReader reader = ReadText(lines);  // the summary is not there
  EXPECT_TRUE(reader.Result().isCut);
  EXPECT_EQ(KeysOf(reader).size(), 2U);
  EXPECT_EQ(reader.Result().header.run.id, kRunId);
  EXPECT_EQ(reader.Result().header.run.labels.at("rack"), "r1");
  for (const std::size_t size : {lines.size() - 2, lines.size() / 2 + 20}) {
    TResultReader shorter = ReadText(lines.substr(0, size));
    EXPECT_EQ(KeysOf(shorter).size(), 1U) << size;
  }
}

TEST(ResultReader, ReadsAnInstanceAgainAtItsPlace) {
  std::vector<TJsonPlace> places;
  TResultReader reader("r.json", Stored(Document({Instance(0, "0x00000001"), Instance(1, "0x00000002")})),
                       EReadDetail::kAll, nullptr,
                       [&places](const TReadInstance&, const TJsonPlace& place) { places.push_back(place); });
  ASSERT_EQ(places.size(), 2U);
  EXPECT_EQ(reader.ReadAt(places[1]).registers->front().value, 2U);
  EXPECT_EQ(reader.ReadAt(places[0]).registers->front().value, 1U);
}

}  // namespace

}  // namespace tests
