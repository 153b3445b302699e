// What JSON says about a result besides the properties of its instances.
#include <nlohmann/json.hpp>
#include <sstream>

#include "host/base/utf8.h"
#include "tests/output/smallserver.h"
#include "tests/support/namespaces.h"

namespace tests {
namespace {

using CollectorProfile::EPath;
using nlohmann::json;

using JsonResult = TSmallServer;

TEST_F(JsonResult, SmallServer) {
  EXPECT_EQ(
      Written(EOutputForm::kJson, document_),
      R"({"kind":"instancecollection","format_version":2,
"source":{"sp":["sim:small.toml"],"target":"sim:small.toml","simulated":true},
"machine_type":"6203",
"plugin":{"name":"Engineering Information Collector","version":"1.0","interface_version":"1.0"},
"schema":{"paths":["small.mof"],"sha256":"aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa","example":false},
"instances":[
{"kind":"instance","class":"KROSG_VO_PCIIOBRIDGE_StatisticData",)"
      R"("key":"KROSG_VO_PCIIOBRIDGE_StatisticData/node0/instance0",)"
      R"("origin":{"path":"r8","node":0,"chip":1,"instance":0,"time_raw":"12 34 56 78"},)"
      R"("incomplete":true,"missing":[{"property":"Log","address":"0xABCDF0","completion_code":203}],)"
      R"("properties":{"InstanceID":"KROSG:KROSG_VO_PCIIOBRIDGE_StatisticData:6203:0",)"
      R"("ElementName":"PCI I/O bridge,0","MachineType":"6203","StatisticTime":"19700101060856.000000+000",)"
      R"("Count":[171,205,239,0,0,1,1,0,0,0,239,254,254,239]},)"
      R"("registers":{"Count":{"address":"0xABCDEF","width":32,"value":"0x00000100","folded":"0x00000101","fields":[]}}},
{"kind":"instance","class":"KROSG_X_MEMCTL_StatisticData","key":"KROSG_X_MEMCTL_StatisticData/sp0/instance0",)"
      R"("origin":{"path":"jfr","service_processor":0,"instance":0},)"
      R"("properties":{"InstanceID":"KROSG:KROSG_MEMCTL_StatisticData:6203:0",)"
      R"("ElementName":"Memory and I/O controller,0","MachineType":"6203",)"
      R"("StatisticTime":"20260131113005.000000+000","First":[11,0,84,32,61,32,0,0,0,26,63,76,46,64]},)"
      R"("registers":{"First":{"index":0,"width":64,"value":"0x0000001A3F4C2E40","identification":"0B 00 54","fields":[]}}},
{"kind":"instance","class":"KROSG_X_MEMCTL_StatisticData","key":"KROSG_X_MEMCTL_StatisticData/sp1/instance0",)"
      R"("origin":{"path":"jfr","service_processor":1,"instance":0},)"
      R"("incomplete":true,"missing":[{"property":"First","index":0,"short":0},)"
      R"({"property":"StatisticTime","short":1}],)"
      R"("properties":{"InstanceID":"KROSG:KROSG_MEMCTL_StatisticData:6203:0",)"
      R"("ElementName":"Memory and I/O controller,0","MachineType":"6203",)"
      R"("StatisticTime":"20484848484848.000000+000","First":[48,48,48,32,61,32,48,48,48,48,48,48,48,48]},)"
      R"("registers":{}},
{"kind":"instance","class":"KROSG_DCAPFile","key":"KROSG_DCAPFile/node0/cpu_err",)"
      R"("origin":{"path":"ffdc","node":0},"file":{"area":"cpu_err","reported_size":12,"received":3},)"
      R"("incomplete":true,"missing":[{"property":"ErrRawData","offset":3,"short":3}],)"
      R"("properties":{"FileName":"cpu_err","ErrRawData":"0a ff 00 00 00 00 00 00 00 00 00 00 ",)"
      R"("MessageTimestamp":"20260131123456.000000+060","SourceNode":"1","CreationClassName":"KROSG_DCAPFile",)"
      R"("LogCreationClassName":"KROSG_DCAPFile","LogName":"KROSG_DCAPFile","RecordID":"0"}}
],
"status":"partial","exit_status":3,)"
      R"("message":"KROSG_X_MEMCTL_StatisticData: 1 of 2 register blocks was too short; )"
      R"(KROSG_DCAPFile: 1 of 3 capture files is missing or incomplete",
"reasons":[
{"code":"block-short","class":"KROSG_X_MEMCTL_StatisticData","count":1,"message":"1 of 2 register blocks was too short"},
{"code":"file-unread","class":"KROSG_DCAPFile","count":1,"message":"1 of 3 capture files is missing or incomplete"}],
"findings":[],
"exchanges":{"total":15,"failed":[
{"class":"KROSG_VO_PCIIOBRIDGE_StatisticData","key":"KROSG_VO_PCIIOBRIDGE_StatisticData/node0/instance0",)"
      R"("property":"Log","address":"0xABCDF0","node":0,"kind":"register","completion_code":203},
{"class":"KROSG_VO_PCIIOBRIDGE_StatisticData","key":"KROSG_VO_PCIIOBRIDGE_StatisticData/node0/instance1",)"
      R"("property":"Count","address":"0xABCDEF","node":0,"kind":"register","completion_code":203},
{"class":"KROSG_VO_PCIIOBRIDGE_StatisticData","key":"KROSG_VO_PCIIOBRIDGE_StatisticData/node0/instance1",)"
      R"("property":"Log","address":"0xABCDF0","node":0,"kind":"register","completion_code":203},
{"class":"KROSG_X_MEMCTL_StatisticData","service_processor":1,"kind":"dot","short":1},
{"class":"KROSG_DCAPFile","key":"KROSG_DCAPFile/node0/cpu_err","property":"ErrRawData","node":0,"kind":"read","short":3},
{"class":"KROSG_DCAPFile","key":"KROSG_DCAPFile/node0/cpu_err","property":"ErrRawData","node":0,"kind":"read","short":0},
{"class":"KROSG_DCAPFile","key":"KROSG_DCAPFile/node0/ioh_err","node":0,"kind":"open","completion_code":203},
{"class":"KROSG_DCAPFile","key":"KROSG_DCAPFile/node0/zyn_err","node":0,"kind":"open","completion_code":203}]},
"unread":[
{"class":"KROSG_VO_PCIIOBRIDGE_StatisticData","key":"KROSG_VO_PCIIOBRIDGE_StatisticData/node0/instance1",)"
      R"("origin":{"path":"r8","node":0,"chip":2,"instance":1},"code":"absent"},
{"class":"KROSG_DCAPFile","key":"KROSG_DCAPFile/node0/ioh_err","origin":{"path":"ffdc","node":0},"code":"absent"},
{"class":"KROSG_DCAPFile","key":"KROSG_DCAPFile/node0/zyn_err","origin":{"path":"ffdc","node":0},"code":"absent"}],
"run":{"id":"0f8fad5b-d9cb-4d9f-a165-70867728950e","started":"2026-01-31T12:34:56.789+01:00","elapsed_ms":4,)"
      R"("host":"collector","velhost":"2.0","labels":{"rack":"7"}}}
)");
}

TEST_F(JsonResult, LinesHaveTheSameMembersAsTheDocument) {
  json document = json::parse(Written(EOutputForm::kJson, document_));
  std::istringstream lines(Written(EOutputForm::kJsonl, document_));
  json joined;
  json instances = json::array();
  for (std::string line; std::getline(lines, line);) {
    joined = json::parse(line);
    EXPECT_EQ(joined["run_id"], "0f8fad5b-d9cb-4d9f-a165-70867728950e");
    EXPECT_EQ(joined["labels"], json({{"rack", "7"}}));
    joined.erase("run_id");
    joined.erase("labels");
    if (joined["kind"] == "instance") instances.push_back(joined);
  }
  EXPECT_EQ(instances.size(), 4U);
  EXPECT_EQ(joined["kind"], "summary");
  EXPECT_EQ(document["kind"], "instancecollection");
  joined["kind"] = document["kind"];
  joined["instances"] = instances;
  EXPECT_EQ(joined, document);
}

class JsonFacts : public TOutputTest {
 protected:
  /// The members of an instance with these facts.
  json Instance(const TInstanceFacts& facts) {
    const TDocument document = {Header(), {{One(TType::kString, TCIMValue("x")), facts}}, Complete()};
    return json::parse(Written(EOutputForm::kJson, document))["instances"][0];
  }
  json Header(const TResultHeader& header) {
    return json::parse(Written(EOutputForm::kJson, TDocument{header, {}, Complete()}));
  }
  json Summary(const TResultSummary& summary) {
    return json::parse(Written(EOutputForm::kJson, TDocument{TOutputTest::Header(), {}, summary}));
  }
  using TOutputTest::Header;
};

TEST_F(JsonFacts, EachHow) {
  TInstanceFacts facts;
  for (const THow how : {THow{EHow::kCompletionCode, 195}, THow{EHow::kLost, 0}, THow{EHow::kShort, 13},
                         THow{EHow::kNotSent, 0}, THow{EHow::kNotRecorded, 0}, THow{EHow::kAnswered, 2}}) {
    facts.missing.push_back({"P", {}, how});
  }
  EXPECT_EQ(Instance(facts)["missing"].dump(),
            R"([{"completion_code":195,"property":"P"},{"lost":true,"property":"P"},{"property":"P","short":13},)"
            R"({"not_sent":true,"property":"P"},{"not_recorded":true,"property":"P"},{"answered":2,"property":"P"}])");
}

TEST_F(JsonFacts, EachWhere) {
  TInstanceFacts facts;
  facts.missing.resize(6, {"P", {}, {EHow::kLost, 0}});
  facts.missing[0].where.address = 0;
  facts.missing[1].where.addresses = {0x0D0100, 0xFFFFFF};
  facts.missing[2].where.addresses.emplace();
  facts.missing[3].where.index = 65535;
  facts.missing[4].where.offset = 4294967296;
  EXPECT_EQ(Instance(facts)["missing"].dump(),
            R"([{"address":"0x000000","lost":true,"property":"P"},)"
            R"({"addresses":["0x0D0100","0xFFFFFF"],"lost":true,"property":"P"},)"
            R"({"addresses":[],"lost":true,"property":"P"},{"index":65535,"lost":true,"property":"P"},)"
            R"({"lost":true,"offset":4294967296,"property":"P"},{"lost":true,"property":"P"}])");
}

TEST_F(JsonFacts, UpperAndFolded) {
  TInstanceFacts facts;
  TRegisterFacts& narrow = facts.registers.emplace().emplace_back();
  narrow.place = 0x0C0120;
  narrow.isNarrow = true;
  narrow.value = 0x132E1020;
  narrow.upper = 0x76465945;
  narrow.folded = 0x132E1030;
  EXPECT_EQ(
      Instance(facts)["registers"].dump(),
      R"({"P":{"address":"0x0C0120","fields":[],"folded":"0x132E1030","upper":"0x76465945","value":"0x132E1020","width":32}})");
}

TEST_F(JsonFacts, WritesAllSixteenDigits) {
  TInstanceFacts facts;
  TRegisterFacts& wide = facts.registers.emplace().emplace_back();
  wide.isIndex = true;
  wide.place = 140;
  wide.value = 0xFEDCBA9876543210;
  wide.identification = {0x0B, 0x00, 0xAF};
  EXPECT_EQ(Instance(facts)["registers"].dump(),
            R"({"P":{"fields":[],"identification":"0B 00 AF","index":140,"value":"0xFEDCBA9876543210","width":64}})");
}

TEST_F(JsonFacts, NoRegistersForFiles) {
  TInstanceFacts facts;
  facts.origin.emplace().path = EPath::kCapture;
  facts.file = {"zyn_err", -2147483647 - 1, 5000000000};
  const json instance = Instance(facts);
  EXPECT_FALSE(instance.contains("registers"));
  EXPECT_EQ(instance["file"].dump(), R"({"area":"zyn_err","received":5000000000,"reported_size":-2147483648})");
  EXPECT_EQ(instance["origin"].dump(), R"({"node":0,"path":"ffdc"})");
}

TEST_F(JsonFacts, AnUnplacedInstanceHasOnlyItsKey) {
  TInstanceFacts facts;
  facts.key = "KROSG_One/?12";
  EXPECT_EQ(Instance(facts).dump(),
            R"({"class":"KROSG_One","key":"KROSG_One/?12","kind":"instance","properties":{"P":"x"}})");
}

TEST_F(JsonFacts, SaysWhereARecordingComesFromAndWhichServerItWas) {
  TResultHeader header = Header();
  EXPECT_EQ(Header(header)["source"].dump(), R"({"simulated":false,"sp":["lan:admin@bmc0"],"target":"lan:bmc0"})");
  header.source.uuid = "00112233-4455-6677-8899-aabbccddeeff";
  EXPECT_EQ(Header(header)["source"]["server"].dump(), R"({"uuid":"00112233-4455-6677-8899-aabbccddeeff"})");
  header.source.serial = "K12";
  EXPECT_EQ(Header(header)["source"]["server"].dump(),
            R"({"serial":"K12","uuid":"00112233-4455-6677-8899-aabbccddeeff"})");
  header.source.uuid.clear();
  header.source.recorded = "2026-01-31T12:34:56+01:00";
  EXPECT_EQ(Header(header)["source"]["server"].dump(), R"({"serial":"K12"})");
  EXPECT_EQ(Header(header)["source"]["recorded"], "2026-01-31T12:34:56+01:00");
}

TEST_F(JsonFacts, NamesTheShippedSchemaAndSeveralPaths) {
  TResultHeader header = Header();
  header.schema.paths = {"a.mof", "b"};
  header.schema.example = true;
  EXPECT_EQ(Header(header)["schema"]["paths"].dump(), R"(["a.mof","b"])");
  EXPECT_EQ(Header(header)["schema"]["example"], true);
}

TEST_F(JsonFacts, EachStatus) {
  TResultSummary summary = Complete();
  EXPECT_FALSE(Summary(summary).contains("message"));
  summary.message = "m";
  for (const auto& [status, name] :
       {std::pair(EResultStatus::kPartial, "partial"), std::pair(EResultStatus::kUnreachable, "unreachable"),
        std::pair(EResultStatus::kFailed, "failed")}) {
    summary.status = status;
    EXPECT_EQ(Summary(summary)["status"], name);
    EXPECT_EQ(Summary(summary)["message"], "m");
  }
}

TEST_F(JsonFacts, EachReasonCode) {
  const std::vector<std::string> names = {"stopped",           "session-lost", "request-failed", "register-unread",
                                          "time-unread",       "file-unread",  "block-unread",   "block-short",
                                          "block-undecodable", "not-served",   "not-collected",  "nothing-read"};
  TResultSummary summary = Complete();
  for (std::size_t i = 0; i < names.size(); ++i) summary.reasons.push_back({static_cast<EReason>(i), "", 2, "m"});
  const json reasons = Summary(summary)["reasons"];
  ASSERT_EQ(reasons.size(), names.size());
  for (std::size_t i = 0; i < names.size(); ++i) {
    EXPECT_EQ(reasons[i], json({{"code", names[i]}, {"count", 2}, {"message", "m"}}));
  }
}

TEST_F(JsonFacts, EachUnreadCode) {
  const std::vector<std::string> names = {"absent",       "register-unread",   "file-unread",
                                          "block-unread", "block-undecodable", "discarded"};
  TResultSummary summary = Partial();
  for (std::size_t i = 0; i < names.size(); ++i) summary.unread.push_back({1, {3, 4}, static_cast<EUnread>(i)});
  const json unread = Summary(summary)["unread"];
  ASSERT_EQ(unread.size(), names.size());
  for (std::size_t i = 0; i < names.size(); ++i) {
    EXPECT_EQ(unread[i].dump(), R"({"class":"KROSG_B","code":")" + names[i] +
                                    R"(","key":"KROSG_B/sp3/instance4",)"
                                    R"("origin":{"instance":4,"path":"jfr","service_processor":3}})");
  }
}

TEST_F(JsonFacts, TheSecondTurnOfAClassHasKeysOfItsOwn) {
  TResultSummary summary = Partial();
  plan_.requests[1].turns[0] = {0, 2, true, false};
  summary.unread = {{1, {0, 0}, EUnread::kAbsent}};
  EXPECT_EQ(Summary(summary)["unread"][0]["key"], "KROSG_A/node0/instance0#2");
}

TEST_F(JsonFacts, ChipsOfBridgesCountFromOneAndKeepEightBits) {
  TResultSummary summary = Partial();
  summary.unread = {{0, {0, 255}, EUnread::kAbsent}};
  EXPECT_EQ(Summary(summary)["unread"][0]["origin"]["chip"], 0);
  plan_.classes[0].isBridge = true;
  EXPECT_EQ(Summary(summary)["unread"][0]["origin"]["chip"], 0);
  summary.unread[0].place.number = 254;
  EXPECT_EQ(Summary(summary)["unread"][0]["origin"]["chip"], 255);
}

TEST_F(JsonFacts, AFailedTimestampIsOfStatisticTime) {
  TResultSummary summary = Partial();
  summary.failed.resize(1);
  summary.failed[0] = {};
  summary.failed[0].kind = EExchangeKind::kTimestamp;
  summary.failed[0].isPlaced = true;
  EXPECT_EQ(Summary(summary)["exchanges"]["failed"][0].dump(),
            R"({"class":"KROSG_A","key":"KROSG_A/node0/instance0","kind":"timestamp","lost":true,"node":0,)"
            R"("property":"StatisticTime"})");
}

TEST_F(JsonFacts, RepeatedFailuresAreWrittenOneByOne) {
  TResultSummary summary = Partial();
  summary.failed[0].repeat = 3;
  const json failed = Summary(summary)["exchanges"]["failed"];
  ASSERT_EQ(failed.size(), 4U);
  EXPECT_EQ(failed[2], failed[0]);
  EXPECT_EQ(failed[3]["kind"], "dot");
}

// Every text that comes from outside may hold any bytes.
TEST_F(JsonFacts, HostileTextStaysText) {
  const std::string hostile = "\"}\\\xff\x01\n\x1b[31m\xc2\x9b\xe2\x80\xae";
  const std::string shown = "\"}\\\xef\xbf\xbd\x01\n\x1b[31m\xc2\x9b\xe2\x80\xae";
  const TDocument document = Hostile(hostile);
  for (const EOutputForm form : {EOutputForm::kJson, EOutputForm::kJsonl}) {
    const std::string text = Written(form, document);
    for (const char c : text) EXPECT_TRUE(c == '\n' || static_cast<unsigned char>(c) >= 0x20);
    for (const char* bytes : {"\xff", "\xc2\x9b", "\xe2\x80\xae"}) EXPECT_EQ(text.find(bytes), std::string::npos);
  }
  const json result = json::parse(Written(EOutputForm::kJson, document));
  EXPECT_EQ(result["run"], json({{"id", shown},
                                 {"started", shown},
                                 {"elapsed_ms", 0},
                                 {"host", shown},
                                 {"velhost", shown},
                                 {"labels", {{shown, shown}}}}));
  EXPECT_EQ(result["source"], json({{"sp", json::array({shown, shown})},
                                    {"target", shown},
                                    {"simulated", true},
                                    {"recorded", shown},
                                    {"server", {{"serial", shown}, {"uuid", shown}}}}));
  EXPECT_EQ(result["machine_type"], shown);
  EXPECT_EQ(result["plugin"], json({{"name", shown}, {"version", shown}, {"interface_version", shown}}));
  EXPECT_EQ(result["schema"], json({{"paths", {shown}}, {"sha256", shown}, {"example", true}}));
  EXPECT_EQ(result["message"], shown);
  EXPECT_EQ(result["reasons"][0]["class"], shown);
  EXPECT_EQ(result["reasons"][0]["message"], shown);
  const json& instance = result["instances"][0];
  EXPECT_EQ(instance["key"], shown);
  EXPECT_EQ(instance["origin"]["time_raw"], shown);
  EXPECT_EQ(instance["file"]["area"], shown);
  EXPECT_EQ(instance["missing"][0]["property"], shown);
  const json& finding = result["findings"][0];
  for (const char* name : {"key", "class", "register", "bits", "name", "text"}) EXPECT_EQ(finding[name], shown);
  EXPECT_EQ(finding["origin"]["time_raw"], shown);
  EXPECT_TRUE(finding["evidence"].contains(shown));
  EXPECT_EQ(finding["unknown"][0], shown);
}

}  // namespace
}  // namespace tests
